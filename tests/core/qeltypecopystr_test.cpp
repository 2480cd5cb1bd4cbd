#include <qelsdk/core/qelstring.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <utility>

#include <cmath>
#include <limits>

namespace qelsdk {
namespace {

// Parses pText into a destination preset to pSentinel; on failure the destination
// must still hold it.
template <class T> bool Parse(const char* pText, T& pValue, T pSentinel)
{
    pValue = pSentinel;
    const bool lResult = QelTypeCopyStr(pValue, QelString(pText));
    if (!lResult) {
        EXPECT_EQ(pValue, pSentinel) << pText;
    }
    return lResult;
}

template <class T> void ExpectParsed(const char* pText, T pExpected)
{
    T lValue;
    EXPECT_TRUE(Parse(pText, lValue, static_cast<T>(pExpected == T(7) ? 9 : 7))) << pText;
    EXPECT_EQ(lValue, pExpected) << pText;
}

template <class T> void ExpectRefused(const char* pText)
{
    T lValue;
    EXPECT_FALSE(Parse(pText, lValue, static_cast<T>(7))) << pText;
}

// Texts that no numeric type takes.
const char* const sNeverNumbers[] = {"",     " 1",  "1 ",  "+1",  "1x", "x",
                                     "0x10", "1.0", "1e2", "--1", "-"};

template <class T> void ExpectIntegerRules()
{
    ExpectParsed<T>("0", T(0));
    ExpectParsed<T>("42", T(42));
    ExpectParsed<T>("007", T(7));
    for (const char* lText : sNeverNumbers)
        ExpectRefused<T>(lText);
}

template <class T>
void ExpectRange(const char* pMin, const char* pMax, const char* pBelow, const char* pAbove)
{
    using Limits = std::numeric_limits<T>;
    ExpectParsed<T>(pMin, Limits::min());
    ExpectParsed<T>(pMax, Limits::max());
    ExpectRefused<T>(pBelow);
    ExpectRefused<T>(pAbove);
}

TEST(QelTypeCopyStr, SignedChar)
{
    ExpectIntegerRules<signed char>();
    ExpectParsed<signed char>("-5", -5);
    ExpectRange<signed char>("-128", "127", "-129", "128");
}

TEST(QelTypeCopyStr, UnsignedChar)
{
    ExpectIntegerRules<unsigned char>();
    ExpectRange<unsigned char>("0", "255", "-1", "256");
    ExpectRefused<unsigned char>("-0");
}

TEST(QelTypeCopyStr, Short)
{
    ExpectIntegerRules<short>();
    ExpectRange<short>("-32768", "32767", "-32769", "32768");
}

TEST(QelTypeCopyStr, UnsignedShort)
{
    ExpectIntegerRules<unsigned short>();
    ExpectRange<unsigned short>("0", "65535", "-1", "65536");
}

TEST(QelTypeCopyStr, Int)
{
    ExpectIntegerRules<int>();
    ExpectParsed<int>("-0", 0);
    ExpectRange<int>("-2147483648", "2147483647", "-2147483649", "2147483648");
}

TEST(QelTypeCopyStr, UnsignedInt)
{
    ExpectIntegerRules<unsigned int>();
    ExpectRange<unsigned int>("0", "4294967295", "-1", "4294967296");
}

TEST(QelTypeCopyStr, LongLong)
{
    ExpectIntegerRules<long long>();
    ExpectRange<long long>("-9223372036854775808", "9223372036854775807", "-9223372036854775809",
                           "9223372036854775808");
}

TEST(QelTypeCopyStr, UnsignedLongLong)
{
    ExpectIntegerRules<unsigned long long>();
    ExpectRange<unsigned long long>("0", "18446744073709551615", "-1", "18446744073709551616");
    ExpectRefused<unsigned long long>("99999999999999999999999");
}

TEST(QelTypeCopyStr, Bool)
{
    bool lValue = false;
    EXPECT_TRUE(Parse("true", lValue, false));
    EXPECT_TRUE(lValue);
    EXPECT_TRUE(Parse("1", lValue, false));
    EXPECT_TRUE(lValue);
    EXPECT_TRUE(Parse("false", lValue, true));
    EXPECT_FALSE(lValue);
    EXPECT_TRUE(Parse("0", lValue, true));
    EXPECT_FALSE(lValue);
    const char* const lRefused[] = {"",   "TRUE",  "True",  "yes", "2",    "-1",
                                    "01", " true", "true ", "t",   "fals", "truex"};
    for (const char* lText : lRefused) {
        EXPECT_FALSE(Parse(lText, lValue, true)) << lText;
        EXPECT_FALSE(Parse(lText, lValue, false)) << lText;
    }
}

TEST(QelTypeCopyStr, BoolWithEmbeddedZeroIsRefused)
{
    bool lValue = false;
    EXPECT_FALSE(QelTypeCopyStr(lValue, QelString("1\0", 2)));
    EXPECT_FALSE(lValue);
}

TEST(QelTypeCopyStr, BoolNeedsNoMemory)
{
    const QelString lText("true");
    bool lValue = false;
    test::AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_TRUE(QelTypeCopyStr(lValue, lText));
    EXPECT_TRUE(lValue);
    EXPECT_EQ(lFailure.Count(), 0);
}

TEST(QelTypeCopyStr, Double)
{
    ExpectParsed<double>("0", 0.0);
    ExpectParsed<double>("2.5", 2.5);
    ExpectParsed<double>("-0.1", -0.1);
    ExpectParsed<double>("1e+20", 1e20);
    ExpectParsed<double>("1E-3", 1e-3);
    ExpectParsed<double>(".5", 0.5);
    ExpectParsed<double>("5.", 5.0);
    ExpectParsed<double>("42", 42.0);
    ExpectParsed<double>("1.7976931348623157e308", std::numeric_limits<double>::max());
    ExpectParsed<double>("inf", std::numeric_limits<double>::infinity());
    ExpectParsed<double>("-inf", -std::numeric_limits<double>::infinity());
    double lValue = 0.0;
    EXPECT_TRUE(QelTypeCopyStr(lValue, QelString("nan")));
    EXPECT_TRUE(std::isnan(lValue));
    const char* const lRefused[] = {"",   " 1",  "1 ",  "+1", "1x", "x",     "0x10",
                                    "1e", "1e+", "--1", "-",  ".",  "1e400", "1,5"};
    for (const char* lText : lRefused)
        ExpectRefused<double>(lText);
}

TEST(QelTypeCopyStr, IntegerWithEmbeddedZeroIsRefused)
{
    int lValue = 3;
    EXPECT_FALSE(QelTypeCopyStr(lValue, QelString("12\0", 3)));
    EXPECT_EQ(lValue, 3);
}

TEST(QelTypeCopyStr, ReadsBackIntegerText)
{
    const std::pair<const char*, int> lCases[] = {{"0", 0},
                                                  {"1", 1},
                                                  {"-1", -1},
                                                  {"123456", 123456},
                                                  {"-2147483648", -2147483647 - 1},
                                                  {"2147483647", 2147483647}};
    for (const auto& lCase : lCases) {
        // The text is the one QelString writes for the value.
        EXPECT_STREQ(QelString(lCase.second).Buffer(), lCase.first);
        int lRead = 5;
        EXPECT_TRUE(QelTypeCopyStr(lRead, QelString(lCase.first))) << lCase.first;
        EXPECT_EQ(lRead, lCase.second) << lCase.first;
    }
}

TEST(QelTypeCopyStr, ReadsBackDoubleText)
{
    const std::pair<const char*, double> lCases[] = {{"0.1", 0.1},
                                                     {"-2.5", -2.5},
                                                     {"1e+20", 1e20},
                                                     {"0.3333333333333333", 1.0 / 3.0},
                                                     {"5e-324", 5e-324}};
    for (const auto& lCase : lCases) {
        EXPECT_STREQ(QelString(lCase.second).Buffer(), lCase.first);
        double lRead = 5.0;
        EXPECT_TRUE(QelTypeCopyStr(lRead, QelString(lCase.first))) << lCase.first;
        EXPECT_EQ(lRead, lCase.second) << lCase.first;
    }
}

} // namespace
} // namespace qelsdk
