#include <qelsdk/core/qeldatetime.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

namespace qelsdk {
namespace {

TEST(QelDateTime, DefaultIsAllZero)
{
    const QelDateTime lValue;
    EXPECT_EQ(lValue, QelDateTime(0, 0, 0, 0, 0, 0));
    EXPECT_EQ(lValue.toString(), "0000-00-00 00:00:00");
}

TEST(QelDateTime, ConstructorOrder)
{
    const QelDateTime lValue(31, 12, 1999, 23, 58, 7);
    EXPECT_EQ(lValue.mDay, 31);
    EXPECT_EQ(lValue.mMonth, 12);
    EXPECT_EQ(lValue.mYear, 1999);
    EXPECT_EQ(lValue.mHour, 23);
    EXPECT_EQ(lValue.mMinute, 58);
    EXPECT_EQ(lValue.mSecond, 7);
}

TEST(QelDateTime, ToStringIsZeroPadded)
{
    EXPECT_EQ(QelDateTime(31, 12, 1999, 23, 58, 7).toString(), "1999-12-31 23:58:07");
    EXPECT_EQ(QelDateTime(1, 2, 3, 4, 5, 6).toString(), "0003-02-01 04:05:06");
    EXPECT_EQ(QelDateTime(1, 1, 12345, 0, 0, 0).toString(), "12345-01-01 00:00:00");
}

TEST(QelDateTime, EqualityUsesEveryField)
{
    const QelDateTime lValue(1, 2, 2003, 4, 5, 6);
    EXPECT_TRUE(lValue == QelDateTime(1, 2, 2003, 4, 5, 6));
    EXPECT_FALSE(lValue != QelDateTime(1, 2, 2003, 4, 5, 6));
    EXPECT_TRUE(lValue != QelDateTime(2, 2, 2003, 4, 5, 6));
    EXPECT_TRUE(lValue != QelDateTime(1, 3, 2003, 4, 5, 6));
    EXPECT_TRUE(lValue != QelDateTime(1, 2, 2004, 4, 5, 6));
    EXPECT_TRUE(lValue != QelDateTime(1, 2, 2003, 5, 5, 6));
    EXPECT_TRUE(lValue != QelDateTime(1, 2, 2003, 4, 6, 6));
    EXPECT_TRUE(lValue != QelDateTime(1, 2, 2003, 4, 5, 7));
}

TEST(QelDateTime, FromStringReadsTheForm)
{
    QelDateTime lValue;
    EXPECT_TRUE(lValue.fromString("2024-02-29 13:07:59"));
    EXPECT_EQ(lValue, QelDateTime(29, 2, 2024, 13, 7, 59));
    EXPECT_TRUE(lValue.fromString("12345-01-01 00:00:00"));
    EXPECT_EQ(lValue, QelDateTime(1, 1, 12345, 0, 0, 0));
    EXPECT_TRUE(lValue.fromString("0000-00-00 00:00:00"));
    EXPECT_EQ(lValue, QelDateTime());
}

TEST(QelDateTime, RoundTrip)
{
    const QelDateTime lValues[] = {QelDateTime(1, 1, 1, 0, 0, 0),
                                   QelDateTime(29, 2, 2000, 23, 59, 59),
                                   QelDateTime(31, 12, 9999, 12, 30, 45),
                                   QelDateTime(28, 2, 1900, 1, 2, 3),
                                   QelDateTime(29, 2, 0, 0, 0, 0),
                                   QelDateTime(30, 4, 2023, 6, 7, 8),
                                   QelDateTime(),
                                   QelDateTime(1, 1, 2147483647, 0, 0, 0)};
    for (const QelDateTime& lValue : lValues) {
        QelDateTime lRead(5, 5, 5, 5, 5, 5);
        EXPECT_TRUE(lRead.fromString(lValue.toString().Buffer())) << lValue.toString().Buffer();
        EXPECT_EQ(lRead, lValue) << lValue.toString().Buffer();
    }
}

TEST(QelDateTime, CalendarIsChecked)
{
    const char* const lTexts[] = {
        "2023-02-29 00:00:00", // not a leap year
        "1900-02-29 00:00:00", // century, not a leap year
        "2024-02-30 00:00:00", "2024-04-31 00:00:00", "2024-13-01 00:00:00",
        "2024-00-01 00:00:00", "2024-01-00 00:00:00", "2024-01-32 00:00:00",
        "0000-00-01 00:00:00", // only the whole unset date may be zero
        "0000-01-00 00:00:00", "2024-00-00 00:00:00", "0000-00-00 00:00:01",
    };
    for (const char* lText : lTexts) {
        QelDateTime lValue(1, 2, 2003, 4, 5, 6);
        EXPECT_FALSE(lValue.fromString(lText)) << lText;
        EXPECT_EQ(lValue, QelDateTime(1, 2, 2003, 4, 5, 6)) << lText;
    }
    QelDateTime lValue;
    EXPECT_TRUE(lValue.fromString("2000-02-29 00:00:00"));
    EXPECT_TRUE(lValue.fromString("0000-00-00 00:00:00"));
}

TEST(QelDateTime, TimeIsChecked)
{
    const char* const lTexts[] = {"2024-01-01 24:00:00", "2024-01-01 00:60:00",
                                  "2024-01-01 00:00:60", "2024-01-01 99:99:99"};
    for (const char* lText : lTexts) {
        QelDateTime lValue(1, 2, 2003, 4, 5, 6);
        EXPECT_FALSE(lValue.fromString(lText)) << lText;
        EXPECT_EQ(lValue, QelDateTime(1, 2, 2003, 4, 5, 6)) << lText;
    }
}

TEST(QelDateTime, FormIsExact)
{
    const char* const lTexts[] = {
        "",
        "2024-01-01",
        "2024-01-01 00:00",
        "2024-01-01 00:00:00 ", // trailing text
        "2024-01-01 00:00:00x",
        " 2024-01-01 00:00:00", // leading space
        "024-01-01 00:00:00",   // year of three digits
        "2024-1-01 00:00:00",   // one-digit month
        "2024-01-1 00:00:00",
        "2024-01-01 0:00:00",
        "2024-01-01 00:0:00",
        "2024-01-01 00:00:0",
        "2024-001-01 00:00:00", // three-digit month
        "2024-01-01 00:00:000",
        "2024/01/01 00:00:00",
        "2024-01-01T00:00:00",
        "2024-01-01  00:00:00",
        "+2024-01-01 00:00:00",
        "-2024-01-01 00:00:00",
        "2024--1-01 00:00:00",
        "2024-01-+1 00:00:00",
        "99999999999-01-01 00:00:00", // year beyond int
    };
    for (const char* lText : lTexts) {
        QelDateTime lValue(1, 2, 2003, 4, 5, 6);
        EXPECT_FALSE(lValue.fromString(lText)) << '"' << lText << '"';
        EXPECT_EQ(lValue, QelDateTime(1, 2, 2003, 4, 5, 6)) << lText;
    }
}

TEST(QelDateTime, NullTextFails)
{
    QelDateTime lValue(1, 2, 2003, 4, 5, 6);
    EXPECT_FALSE(lValue.fromString(nullptr));
    EXPECT_EQ(lValue, QelDateTime(1, 2, 2003, 4, 5, 6));
}

TEST(QelDateTime, ToStringOutOfMemoryGivesEmptyText)
{
    test::AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_EQ(QelDateTime(1, 2, 2003, 4, 5, 6).toString(), "");
    EXPECT_EQ(lFailure.Failed(), 1);
}

} // namespace
} // namespace qelsdk
