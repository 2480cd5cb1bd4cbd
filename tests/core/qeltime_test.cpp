#include <qelsdk/core/qeltime.h>

#include <qelsdk/core/qelstring.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

namespace qelsdk {
namespace {

const long long sSecond = QelTime::sTicksPerSecond;

std::string Text(const QelTime& pTime, int pElementCount = 5, int pTimeMode = 0, int pProtocol = 2)
{
    char lBuffer[128];
    std::memset(lBuffer, 'x', sizeof(lBuffer));
    const char* lResult =
        pTime.GetTimeString(lBuffer, sizeof(lBuffer), pElementCount, pTimeMode, pProtocol);
    EXPECT_EQ(lResult, lBuffer);
    return lBuffer;
}

TEST(QelTime, TicksAreNanoseconds) { EXPECT_EQ(QelTime::sTicksPerSecond, 1000000000LL); }

TEST(QelTime, DefaultIsZero)
{
    EXPECT_EQ(QelTime().Get(), 0);
    EXPECT_EQ(QelTime(), QelTime(0));
    EXPECT_NE(QelTime(1), QelTime(0));
}

TEST(QelTime, GetAndSet)
{
    QelTime lTime(42);
    EXPECT_EQ(lTime.Get(), 42);
    lTime.Set(-7);
    EXPECT_EQ(lTime.Get(), -7);
}

TEST(QelTime, SecondsAsDouble)
{
    EXPECT_EQ(QelTime(3 * sSecond / 2).GetSecondDouble(), 1.5);
    EXPECT_EQ(QelTime(-sSecond / 4).GetSecondDouble(), -0.25);
    EXPECT_EQ(QelTime(0).GetSecondDouble(), 0.0);
    // Whole ticks: a 24th of a second is 41666666 of them.
    EXPECT_EQ(QelTime(sSecond / 24).GetSecondDouble(), 0.041666666);
    EXPECT_EQ(QelTime(sSecond / 3).GetSecondDouble(), 0.333333333);
}

TEST(QelTime, SetSecondsRoundsToNearestTick)
{
    QelTime lTime;
    lTime.SetSecondDouble(1.5);
    EXPECT_EQ(lTime.Get(), 1500000000);
    lTime.SetSecondDouble(1.1);
    EXPECT_EQ(lTime.Get(), 1100000000);
    lTime.SetSecondDouble(0.4e-9);
    EXPECT_EQ(lTime.Get(), 0);
    lTime.SetSecondDouble(0.6e-9);
    EXPECT_EQ(lTime.Get(), 1);
    lTime.SetSecondDouble(-1.6e-9);
    EXPECT_EQ(lTime.Get(), -2);
}

TEST(QelTime, SetSecondsSaturatesAndTakesNaNAsZero)
{
    QelTime lTime(5);
    lTime.SetSecondDouble(1.0e300);
    EXPECT_EQ(lTime.Get(), std::numeric_limits<long long>::max());
    lTime.SetSecondDouble(-1.0e300);
    EXPECT_EQ(lTime.Get(), std::numeric_limits<long long>::min());
    lTime.SetSecondDouble(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(lTime.Get(), 0);
}

TEST(QelTime, TimecodeIsTheDefault)
{
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2)), "0:00:01:15:0");
    char lBuffer[64];
    EXPECT_STREQ(QelTime(3 * sSecond / 2).GetTimeString(lBuffer, sizeof(lBuffer)), "0:00:01:15:0");
    EXPECT_EQ(Text(QelTime(0)), "0:00:00:00:0");
}

TEST(QelTime, TimecodeFields)
{
    // 1 h 2 min 3.54 s at 25 frames per second: 27 fields, frame 13 and field 1.
    EXPECT_EQ(Text(QelTime(3723540000000LL), 5, 2), "1:02:03:13:1");
    // Whole units only: 19 ms is less than one field of 20 ms.
    EXPECT_EQ(Text(QelTime(19000000LL), 5, 2), "0:00:00:00:0");
    EXPECT_EQ(Text(QelTime(20000000LL), 5, 2), "0:00:00:00:1");
    EXPECT_EQ(Text(QelTime(100 * 3600 * sSecond), 5, 2), "100:00:00:00:0");
}

TEST(QelTime, ElementCountClampedAndCountedFromHours)
{
    const QelTime lTime(3723540000000LL);
    EXPECT_EQ(Text(lTime, 1, 2), "1");
    EXPECT_EQ(Text(lTime, 2, 2), "1:02");
    EXPECT_EQ(Text(lTime, 3, 2), "1:02:03");
    EXPECT_EQ(Text(lTime, 4, 2), "1:02:03:13");
    EXPECT_EQ(Text(lTime, 0, 2), "1");
    EXPECT_EQ(Text(lTime, -3, 2), "1");
    EXPECT_EQ(Text(lTime, 6, 2), "1:02:03:13:1");
    EXPECT_EQ(Text(lTime, 1000, 2), "1:02:03:13:1");
}

TEST(QelTime, NegativeTimesGetLeadingMinus)
{
    EXPECT_EQ(Text(QelTime(-3 * sSecond / 2)), "-0:00:01:15:0");
    EXPECT_EQ(Text(QelTime(-3 * sSecond / 2), 2), "-0:00");
    EXPECT_EQ(Text(QelTime(-3 * sSecond / 2), 5, 0, 1), "-45");
    EXPECT_EQ(Text(QelTime(-sSecond / 4), 5, 0, 0), "-0.25");
}

TEST(QelTime, ExtremeTimes)
{
    EXPECT_EQ(Text(QelTime(std::numeric_limits<long long>::max())), "2562047:47:16:25:1");
    EXPECT_EQ(Text(QelTime(std::numeric_limits<long long>::min())), "-2562047:47:16:25:1");
    EXPECT_EQ(Text(QelTime(std::numeric_limits<long long>::min()), 5, 0, 1), "-276701161105");
}

TEST(QelTime, FramesPerSecondByTimeMode)
{
    const QelTime lOneSecond(sSecond);
    EXPECT_EQ(Text(lOneSecond, 5, 0, 1), "30");
    EXPECT_EQ(Text(lOneSecond, 5, 1, 1), "24");
    EXPECT_EQ(Text(lOneSecond, 5, 2, 1), "25");
    EXPECT_EQ(Text(lOneSecond, 5, 3, 1), "30");
    EXPECT_EQ(Text(lOneSecond, 5, 4, 1), "60");
    EXPECT_EQ(Text(lOneSecond, 5, 5, 1), "30");
    EXPECT_EQ(Text(lOneSecond, 5, -1, 1), "30");
    EXPECT_EQ(Text(QelTime(sSecond / 2), 5, 4), "0:00:00:30:0");
}

TEST(QelTime, FrameCountProtocol)
{
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2), 5, 0, 1), "45");
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2), 5, 1, 1), "36");
    // Element count plays no part.
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2), 1, 0, 1), "45");
    // Truncated: 1/30 s less one tick is still frame 0.
    EXPECT_EQ(Text(QelTime(sSecond / 30), 5, 0, 1), "0");
    EXPECT_EQ(Text(QelTime(0), 5, 0, 1), "0");
}

TEST(QelTime, SecondsProtocolIsShortestDoubleText)
{
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2), 5, 0, 0), "1.5");
    EXPECT_EQ(Text(QelTime(0), 5, 0, 0), "0");
    EXPECT_EQ(Text(QelTime(100 * sSecond), 3, 4, 0), "100");
    const QelTime lOdd(123456789);
    EXPECT_EQ(Text(lOdd, 5, 0, 0), "0.123456789");
}

TEST(QelTime, UnknownProtocolIsTimecode)
{
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2), 5, 0, 3), "0:00:01:15:0");
    EXPECT_EQ(Text(QelTime(3 * sSecond / 2), 5, 0, -1), "0:00:01:15:0");
}

TEST(QelTime, TruncatesToBufferSize)
{
    char lBuffer[8];
    std::memset(lBuffer, 'x', sizeof(lBuffer));
    QelTime(3 * sSecond / 2).GetTimeString(lBuffer, 5);
    EXPECT_STREQ(lBuffer, "0:00");
    EXPECT_EQ(lBuffer[5], 'x');
    QelTime(3 * sSecond / 2).GetTimeString(lBuffer, 1);
    EXPECT_STREQ(lBuffer, "");
    EXPECT_EQ(lBuffer[1], ':');
    // Exactly fits with its zero.
    char lExact[13];
    EXPECT_STREQ(QelTime(3 * sSecond / 2).GetTimeString(lExact, sizeof(lExact)), "0:00:01:15:0");
    QelTime(3 * sSecond / 2).GetTimeString(lExact, 12);
    EXPECT_STREQ(lExact, "0:00:01:15:");
}

TEST(QelTime, SizeZeroWritesNothing)
{
    char lBuffer[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(QelTime(5).GetTimeString(lBuffer, 0), lBuffer);
    EXPECT_EQ(std::memcmp(lBuffer, "abcd", 4), 0);
}

} // namespace
} // namespace qelsdk
