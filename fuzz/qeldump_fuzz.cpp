// The layer stream dump on arbitrary bytes, into a string. The offset where the dump
// stops lies inside the buffer, and is its size exactly when the dump succeeds.
#include "qeldump.h"
#include "qelfuzzsupport.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace qelsdk;

namespace {

void Check(bool pCondition)
{
    if (!pCondition) __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::QelInstallFuzzHandlers(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    std::string lText;
    const QelDumpResult lResult = QelDumpLayerStream(pData, pSize, lText);
    Check(lResult.mOffset <= pSize);
    Check(!lResult.mOk || lResult.mOffset == pSize);
    Check(lResult.mOk || !lResult.mMessage.empty());
    return 0;
}
