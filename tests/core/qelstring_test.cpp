#include <qelsdk/core/qelstring.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <new>

namespace qelsdk {
namespace {

TEST(QelString, DefaultIsEmpty)
{
    const QelString lText;
    EXPECT_STREQ(lText.Buffer(), "");
    EXPECT_EQ(lText.GetLen(), 0);
    EXPECT_TRUE(lText.IsEmpty());
}

TEST(QelString, FromText)
{
    const QelString lText("hello");
    EXPECT_STREQ(lText.Buffer(), "hello");
    EXPECT_EQ(lText.GetLen(), 5);
    EXPECT_FALSE(lText.IsEmpty());
    EXPECT_EQ(QelString(static_cast<const char*>(nullptr)).GetLen(), 0);
    EXPECT_EQ(QelString("").GetLen(), 0);
}

TEST(QelString, FromTextAndLength)
{
    const QelString lText("hello", 3);
    EXPECT_STREQ(lText.Buffer(), "hel");
    EXPECT_EQ(lText.GetLen(), 3);
    EXPECT_EQ(QelString("hello", 0).GetLen(), 0);
    EXPECT_EQ(QelString("hello", -2).GetLen(), 0);
    EXPECT_EQ(QelString(nullptr, 4).GetLen(), 0);
}

TEST(QelString, FromIntIsPlainDecimal)
{
    EXPECT_STREQ(QelString(0).Buffer(), "0");
    EXPECT_STREQ(QelString(1).Buffer(), "1");
    EXPECT_STREQ(QelString(-3).Buffer(), "-3");
    EXPECT_STREQ(QelString(std::numeric_limits<int>::max()).Buffer(), "2147483647");
    EXPECT_STREQ(QelString(std::numeric_limits<int>::min()).Buffer(), "-2147483648");
}

TEST(QelString, FromFloatIsShortest)
{
    EXPECT_STREQ(QelString(1.0f).Buffer(), "1");
    EXPECT_STREQ(QelString(2.5f).Buffer(), "2.5");
    EXPECT_STREQ(QelString(0.1f).Buffer(), "0.1");
    EXPECT_STREQ(QelString(-3.0f).Buffer(), "-3");
    EXPECT_STREQ(QelString(1e20f).Buffer(), "1e+20");
    EXPECT_STREQ(QelString(0.0f).Buffer(), "0");
}

TEST(QelString, FromDoubleIsShortest)
{
    EXPECT_STREQ(QelString(1.0).Buffer(), "1");
    EXPECT_STREQ(QelString(2.5).Buffer(), "2.5");
    EXPECT_STREQ(QelString(0.1).Buffer(), "0.1");
    EXPECT_STREQ(QelString(-3.0).Buffer(), "-3");
    EXPECT_STREQ(QelString(1e20).Buffer(), "1e+20");
    EXPECT_STREQ(QelString(1.0 / 3.0).Buffer(), "0.3333333333333333");
    EXPECT_STREQ(QelString(-std::numeric_limits<double>::max()).Buffer(),
                 "-1.7976931348623157e+308");
    // A float widened to double shows the float's exact value.
    EXPECT_STREQ(QelString(static_cast<double>(0.1f)).Buffer(), "0.10000000149011612");
}

TEST(QelString, CopyIsDeep)
{
    const QelString lText("abc");
    const QelString lCopy(lText);
    EXPECT_EQ(lCopy, "abc");
    EXPECT_NE(lCopy.Buffer(), lText.Buffer());
    EXPECT_EQ(QelString(QelString()).GetLen(), 0);
}

TEST(QelString, Assignment)
{
    QelString lText("abc");
    const QelString lOther("defgh");
    lText = lOther;
    EXPECT_EQ(lText, "defgh");
    EXPECT_NE(lText.Buffer(), lOther.Buffer());
    lText = "xy";
    EXPECT_EQ(lText, "xy");
    EXPECT_EQ(lText.GetLen(), 2);
    lText = QelString();
    EXPECT_EQ(lText.GetLen(), 0);
    lText = "z";
    lText = static_cast<const char*>(nullptr);
    EXPECT_EQ(lText.GetLen(), 0);
    EXPECT_STREQ(lText.Buffer(), "");
}

TEST(QelString, SelfAssignment)
{
    QelString lText("abc");
    const char* lBuffer = lText.Buffer();
    const QelString& lSame = lText;
    lText = lSame;
    EXPECT_EQ(lText, "abc");
    EXPECT_EQ(lText.Buffer(), lBuffer);
}

TEST(QelString, AssignmentFromOwnBuffer)
{
    QelString lText("abcdef");
    lText = lText.Buffer();
    EXPECT_EQ(lText, "abcdef");
    lText = lText.Buffer() + 2;
    EXPECT_EQ(lText, "cdef");
    EXPECT_EQ(lText.GetLen(), 4);
}

TEST(QelString, Append)
{
    QelString lText("ab");
    lText += QelString("cd");
    EXPECT_EQ(lText, "abcd");
    lText += "ef";
    EXPECT_EQ(lText, "abcdef");
    EXPECT_EQ(lText.GetLen(), 6);
    lText += "";
    lText += static_cast<const char*>(nullptr);
    lText += QelString();
    EXPECT_EQ(lText, "abcdef");
    QelString lEmpty;
    lEmpty += "x";
    EXPECT_EQ(lEmpty, "x");
}

TEST(QelString, AppendToItself)
{
    QelString lText("ab");
    lText += lText;
    EXPECT_EQ(lText, "abab");
    lText += lText.Buffer() + 3;
    EXPECT_EQ(lText, "ababb");
}

TEST(QelString, Concatenation)
{
    EXPECT_EQ(QelString("ab") + QelString("cd"), "abcd");
    EXPECT_EQ(QelString() + QelString(), "");
}

TEST(QelString, CompareIsThreeWay)
{
    const QelString lText("abc");
    EXPECT_EQ(lText.Compare("abc"), 0);
    EXPECT_LT(lText.Compare("abd"), 0);
    EXPECT_GT(lText.Compare("abb"), 0);
    EXPECT_GT(lText.Compare("ab"), 0);
    EXPECT_LT(lText.Compare("abcd"), 0);
    EXPECT_GT(lText.Compare(""), 0);
    EXPECT_GT(lText.Compare(nullptr), 0);
    EXPECT_EQ(QelString().Compare(nullptr), 0);
    EXPECT_EQ(QelString().Compare(""), 0);
    EXPECT_LT(QelString().Compare("a"), 0);
}

TEST(QelString, EqualityWithString)
{
    EXPECT_TRUE(QelString("abc") == QelString("abc"));
    EXPECT_FALSE(QelString("abc") != QelString("abc"));
    EXPECT_TRUE(QelString("abc") != QelString("abd"));
    EXPECT_TRUE(QelString("abc") != QelString("ab"));
    EXPECT_TRUE(QelString() == QelString(""));
    // Length counts: an embedded zero makes a different string.
    EXPECT_TRUE(QelString("ab\0", 3) != QelString("ab"));
}

TEST(QelString, EqualityWithText)
{
    EXPECT_TRUE(QelString("abc") == "abc");
    EXPECT_FALSE(QelString("abc") != "abc");
    EXPECT_TRUE(QelString("abc") != "abcd");
    EXPECT_TRUE(QelString("abc") != "");
    EXPECT_TRUE(QelString() == "");
    EXPECT_TRUE(QelString() == static_cast<const char*>(nullptr));
}

TEST(QelString, ConstructionOutOfMemoryGivesEmpty)
{
    test::AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_EQ(QelString("abc").GetLen(), 0);
    EXPECT_EQ(QelString(12).GetLen(), 0);
    EXPECT_EQ(QelString(1.5).GetLen(), 0);
    EXPECT_EQ(QelString(1.5f).GetLen(), 0);
    EXPECT_GE(lFailure.Failed(), 4);
}

TEST(QelString, CopyOutOfMemoryGivesEmpty)
{
    const QelString lText("abc");
    test::AllocationFailure lFailure;
    lFailure.FailAt(1);
    const QelString lCopy(lText);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lCopy.GetLen(), 0);
    EXPECT_STREQ(lCopy.Buffer(), "");
}

TEST(QelString, AssignmentOutOfMemoryKeepsOldText)
{
    QelString lText("old");
    const QelString lOther("new text");
    test::AllocationFailure lFailure;
    lFailure.FailFrom(1);
    lText = lOther;
    EXPECT_EQ(lText, "old");
    lText = "other";
    EXPECT_EQ(lText, "old");
    EXPECT_EQ(lFailure.Failed(), 2);
    // Emptying needs no memory.
    lText = "";
    EXPECT_EQ(lText.GetLen(), 0);
}

TEST(QelString, AppendOutOfMemoryKeepsOldText)
{
    QelString lText("old");
    test::AllocationFailure lFailure;
    lFailure.FailAt(1);
    lText += "er";
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lText, "old");
    EXPECT_EQ(lText.GetLen(), 3);
    lText += QelString("er");
    EXPECT_EQ(lText, "older");
}

TEST(QelString, ZeroFilledBytesAreValidEmptyString)
{
    alignas(QelString) unsigned char lStorage[sizeof(QelString)];
    std::memset(lStorage, 0, sizeof(lStorage));
    QelString* lText = std::launder(reinterpret_cast<QelString*>(lStorage));
    EXPECT_STREQ(lText->Buffer(), "");
    EXPECT_EQ(lText->GetLen(), 0);
    EXPECT_TRUE(*lText == QelString());
    *lText = QelString("assigned");
    EXPECT_EQ(*lText, "assigned");
    *lText += "!";
    EXPECT_EQ(*lText, "assigned!");
    lText->~QelString();
}

} // namespace
} // namespace qelsdk
