// Prints every value-type tag with its name and storage size, one per line.
#include "qelsdk/core/qelvaluetypes.h"

#include <cstdio>

int main()
{
    using namespace qelsdk::internal;
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset) {
        const QelTypeFacts& lFacts = sQelTypeFacts[lOffset];
        if (lFacts.mName)
            std::printf("%3d %-14s %4d\n", static_cast<int>(QelTagAt(lOffset)), lFacts.mName,
                        lFacts.mSize);
    }
    return 0;
}
