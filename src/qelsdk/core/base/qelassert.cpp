#include <qelsdk/core/base/qelassert.h>

#include <cstdarg>
#include <cstdio>

namespace qelsdk {
namespace {

void DefaultAssertProc(const char* pFile, const char* pFunction, unsigned int pLine,
                       bool pIsMessage, const char* pMessage)
{
    std::fprintf(stderr, "%s(%u): %s: %s%s\n", pFile, pLine, pFunction,
                 pIsMessage ? "" : "assertion failed: ", pMessage);
}

QelAssertProc sAssertProc = DefaultAssertProc;

} // namespace

QelAssertProc QelSetAssertProc(QelAssertProc pProc)
{
    QelAssertProc lPrevious = sAssertProc;
    sAssertProc = pProc ? pProc : DefaultAssertProc;
    return lPrevious;
}

void _QelAssert(const char* pFile, const char* pFunction, unsigned int pLine, bool pIsMessage,
                const char* pFormat, ...)
{
    // Messages are short texts; a longer one is cut rather than allocated for, so
    // that reporting works even when the allocator is what failed.
    char lMessage[1024];
    va_list lArguments;
    va_start(lArguments, pFormat);
    std::vsnprintf(lMessage, sizeof(lMessage), pFormat, lArguments);
    va_end(lArguments);
    sAssertProc(pFile, pFunction, pLine, pIsMessage, lMessage);
}

} // namespace qelsdk
