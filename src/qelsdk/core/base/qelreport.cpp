#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/base/qelassert.h>
#include <qelsdk/core/base/qelredblacktree.h>

namespace qelsdk {
namespace internal {
namespace {

// The files the reports of the header templates name.
constexpr const char* sQelArrayFile = "include/qelsdk/core/base/qelarray";
constexpr const char* sQelRedBlackTreeFile = "include/qelsdk/core/base/qelredblacktree";

} // namespace

void QelArrayReport(const char* pFunction, unsigned int pLine, bool pIsMessage, const char* pText)
{
    _QelAssert(sQelArrayFile, pFunction, pLine, pIsMessage, "%s", pText);
}

void QelRedBlackTreeReport(const char* pFunction, unsigned int pLine, bool pIsMessage,
                           const char* pText)
{
    _QelAssert(sQelRedBlackTreeFile, pFunction, pLine, pIsMessage, "%s", pText);
}

} // namespace internal
} // namespace qelsdk
