#include <qelsdk/core/qelstring.h>

#include <charconv>
#include <cstring>

namespace qelsdk {
namespace {

// std::from_chars takes no leading '+' and no white space, refuses '-' for unsigned
// types and reports values out of the type's range; the whole text must be used.
template <class T, class... TFormat>
bool ParseWhole(T& pDst, const QelString& pSrc, TFormat... pFormat)
{
    const char* lBegin = pSrc.Buffer();
    const char* lEnd = lBegin + pSrc.GetLen();
    T lValue;
    const std::from_chars_result lResult = std::from_chars(lBegin, lEnd, lValue, pFormat...);
    if (lResult.ec != std::errc() || lResult.ptr != lEnd) return false;
    pDst = lValue;
    return true;
}

struct BoolText
{
    const char* mText;
    bool mValue;
};

constexpr BoolText sBoolTexts[] = {{"true", true}, {"false", false}, {"1", true}, {"0", false}};

} // namespace

bool QelTypeCopyStr(signed char& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(unsigned char& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(short& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(unsigned short& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(int& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(unsigned int& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(long long& pDst, const QelString& pSrc) { return ParseWhole(pDst, pSrc); }
bool QelTypeCopyStr(unsigned long long& pDst, const QelString& pSrc)
{
    return ParseWhole(pDst, pSrc);
}

bool QelTypeCopyStr(double& pDst, const QelString& pSrc)
{
    return ParseWhole(pDst, pSrc, std::chars_format::general);
}

// Compared over the whole length, so a text with an embedded zero matches nothing;
// no temporary string, so the parse cannot fail for want of memory.
bool QelTypeCopyStr(bool& pDst, const QelString& pSrc)
{
    const size_t lLength = static_cast<size_t>(pSrc.GetLen());
    for (const BoolText& lText : sBoolTexts) {
        if (std::strlen(lText.mText) == lLength &&
            std::memcmp(lText.mText, pSrc.Buffer(), lLength) == 0) {
            pDst = lText.mValue;
            return true;
        }
    }
    return false;
}

} // namespace qelsdk
