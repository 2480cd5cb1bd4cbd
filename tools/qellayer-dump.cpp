// qellayer-dump PATH: prints the records of a layer content stream file. A file that
// does not decode is reported as "PATH: offset N: message" on stderr, exit status 1.
#include "qeldump.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

int main(int pArgc, char** pArgv)
{
    if (pArgc != 2) {
        std::fprintf(stderr, "usage: qellayer-dump PATH\n");
        return 2;
    }
    const char* lPath = pArgv[1];
    std::ifstream lFile(lPath, std::ios::binary);
    if (!lFile) {
        std::fprintf(stderr, "%s: cannot open: %s\n", lPath, std::strerror(errno));
        return 1;
    }
    const std::vector<char> lBytes((std::istreambuf_iterator<char>(lFile)),
                                   std::istreambuf_iterator<char>());
    if (lFile.bad()) {
        std::fprintf(stderr, "%s: cannot read\n", lPath);
        return 1;
    }
    const qelsdk::QelDumpResult lResult =
        qelsdk::QelDumpLayerStream(lBytes.data(), lBytes.size(), stdout);
    if (lResult.mOk) return 0;
    std::fflush(stdout);
    std::fprintf(stderr, "%s: offset %zu: %s\n", lPath, lResult.mOffset, lResult.mMessage.c_str());
    return 1;
}
