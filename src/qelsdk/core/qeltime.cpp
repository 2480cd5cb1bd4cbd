#include <qelsdk/core/qeltime.h>

#include <qelsdk/core/base/qelalloc.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

// Text forms of GetTimeString, chosen by pProtocol:
//   0  the time in seconds, in the shortest text that reads back to the same double
//      (the form of QelString(double)): "1.5", "-0.25", "0".
//   1  the number of whole frames: "45" for 1.5 s at 30 frames per second.
//   2  (the default, also used for any unknown protocol) timecode
//      "hours:minutes:seconds:frames:fields", e.g. "1:02:03:15:1". Hours are not
//      padded, minutes, seconds and frames take two digits, the field one (two fields
//      per frame). pElementCount, clamped to 1..5, is how many elements are shown,
//      counted from the hours: 3 gives "1:02:03".
// The frame rate comes from pTimeMode (see sFramesPerSecond). Frames and fields count
// whole elapsed units: the magnitude is truncated, never rounded. A negative time is
// the text of its magnitude after a '-'. The text is cut to pBufferSize - 1
// characters and always zero-terminated; a size of 0 writes nothing.

namespace qelsdk {
namespace {

// Frames per second by time mode; mode 0 is the default rate, any mode outside the
// table falls back to it.
constexpr int sFramesPerSecond[] = {30, 24, 25, 30, 60};
constexpr int sFieldsPerFrame = 2;
constexpr int sTimecodeElements = 5;
// Enough for a '-' and five timecode elements of a 64-bit time, or a double.
constexpr int sTextSize = 64;

int FramesPerSecond(int pTimeMode)
{
    const int lCount = static_cast<int>(sizeof(sFramesPerSecond) / sizeof(sFramesPerSecond[0]));
    return pTimeMode >= 0 && pTimeMode < lCount ? sFramesPerSecond[pTimeMode] : sFramesPerSecond[0];
}

// The magnitude split into whole seconds and the ticks left over; unsigned so that
// the most negative time has a magnitude too.
struct Magnitude
{
    unsigned long long mSeconds;
    unsigned long long mTicks;
};

Magnitude SplitMagnitude(long long pTime)
{
    const unsigned long long lTicks = pTime < 0 ? 0ull - static_cast<unsigned long long>(pTime)
                                                : static_cast<unsigned long long>(pTime);
    const unsigned long long lPerSecond = static_cast<unsigned long long>(QelTime::sTicksPerSecond);
    return {lTicks / lPerSecond, lTicks % lPerSecond};
}

// Whole units of pPerSecond per second elapsed in the ticks left over (< 1 s, so
// the product stays far within 64 bits).
unsigned long long UnitsInTicks(unsigned long long pTicks, int pPerSecond)
{
    return pTicks * static_cast<unsigned long long>(pPerSecond) /
           static_cast<unsigned long long>(QelTime::sTicksPerSecond);
}

int FormatSeconds(char* pText, size_t pSize, double pSeconds)
{
    const std::to_chars_result lResult = std::to_chars(pText, pText + pSize, pSeconds);
    return static_cast<int>(lResult.ptr - pText);
}

int FormatFrameCount(char* pText, size_t pSize, const Magnitude& pMagnitude, int pFramesPerSecond)
{
    const unsigned long long lFrames =
        pMagnitude.mSeconds * static_cast<unsigned long long>(pFramesPerSecond) +
        UnitsInTicks(pMagnitude.mTicks, pFramesPerSecond);
    return std::snprintf(pText, pSize, "%llu", lFrames);
}

int FormatTimecode(char* pText, size_t pSize, const Magnitude& pMagnitude, int pFramesPerSecond,
                   int pElementCount)
{
    const unsigned long long lFields =
        UnitsInTicks(pMagnitude.mTicks, pFramesPerSecond * sFieldsPerFrame);
    const unsigned long long lElements[sTimecodeElements] = {
        pMagnitude.mSeconds / 3600, pMagnitude.mSeconds / 60 % 60, pMagnitude.mSeconds % 60,
        lFields / sFieldsPerFrame, lFields % sFieldsPerFrame};
    static const char* const sElementFormats[sTimecodeElements] = {"%llu", ":%02llu", ":%02llu",
                                                                   ":%02llu", ":%llu"};
    const int lCount = QelMax(1, QelMin(pElementCount, sTimecodeElements));
    int lLength = 0;
    for (int lIndex = 0; lIndex < lCount; ++lIndex)
        lLength += std::snprintf(pText + lLength, pSize - static_cast<size_t>(lLength),
                                 sElementFormats[lIndex], lElements[lIndex]);
    return lLength;
}

} // namespace

double QelTime::GetSecondDouble() const
{
    return static_cast<double>(mTime) / static_cast<double>(sTicksPerSecond);
}

// Rounds to the nearest tick. NaN gives 0 and times beyond the 64-bit range saturate,
// so that no input leaves the value undefined.
void QelTime::SetSecondDouble(double pSeconds)
{
    const double lTicks = std::round(pSeconds * static_cast<double>(sTicksPerSecond));
    // 2^63: the first double above the largest tick count.
    const double lLimit = 9223372036854775808.0;
    if (std::isnan(lTicks))
        mTime = 0;
    else if (lTicks >= lLimit)
        mTime = std::numeric_limits<long long>::max();
    else if (lTicks < -lLimit)
        mTime = std::numeric_limits<long long>::min();
    else
        mTime = static_cast<long long>(lTicks);
}

char* QelTime::GetTimeString(char* pBuffer, unsigned short pBufferSize, int pElementCount,
                             int pTimeMode, int pProtocol) const
{
    if (!pBuffer || pBufferSize == 0) return pBuffer;
    char lText[sTextSize];
    int lLength = 0;
    if (pProtocol == 0) {
        lLength = FormatSeconds(lText, sizeof(lText), GetSecondDouble());
    } else {
        if (mTime < 0) lText[lLength++] = '-';
        const Magnitude lMagnitude = SplitMagnitude(mTime);
        const int lFramesPerSecond = FramesPerSecond(pTimeMode);
        char* lDigits = lText + lLength;
        const size_t lRoom = sizeof(lText) - static_cast<size_t>(lLength);
        lLength += pProtocol == 1 ? FormatFrameCount(lDigits, lRoom, lMagnitude, lFramesPerSecond)
                                  : FormatTimecode(lDigits, lRoom, lMagnitude, lFramesPerSecond,
                                                   pElementCount);
    }
    const size_t lCopied =
        QelMin(static_cast<size_t>(lLength), static_cast<size_t>(pBufferSize) - 1);
    std::memcpy(pBuffer, lText, lCopied);
    pBuffer[lCopied] = '\0';
    return pBuffer;
}

} // namespace qelsdk
