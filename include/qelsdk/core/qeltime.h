// QelTime: a point or span of time as a signed 64-bit count of ticks.
#ifndef QELSDK_CORE_QELTIME_H
#define QELSDK_CORE_QELTIME_H

#include <type_traits>

namespace qelsdk {

class QelTime
{
public:
    // Ticks per second: one tick is a nanosecond.
    static const long long sTicksPerSecond = 1000000000LL;

    QelTime(long long pTime = 0) : mTime(pTime) {}

    long long Get() const { return mTime; }
    void Set(long long pTime) { mTime = pTime; }
    double GetSecondDouble() const;
    void SetSecondDouble(double pSeconds);

    // Writes the time as text into pBuffer (at most pBufferSize bytes with the
    // terminating zero) and returns pBuffer. See the source for the formats.
    char* GetTimeString(char* pBuffer, unsigned short pBufferSize, int pElementCount = 5,
                        int pTimeMode = 0, int pProtocol = 2) const;

    bool operator==(const QelTime& pOther) const { return mTime == pOther.mTime; }
    bool operator!=(const QelTime& pOther) const { return mTime != pOther.mTime; }

private:
    long long mTime;
};

static_assert(sizeof(QelTime) == 8 && std::is_trivially_copyable<QelTime>::value,
              "element arrays move times as the raw 64-bit count");

} // namespace qelsdk

#endif
