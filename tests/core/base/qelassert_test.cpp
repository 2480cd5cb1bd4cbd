#include <qelsdk/core/base/qelassert.h>

#include "qelsdk/core/base/qelreport.h"
#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <string>

namespace qelsdk {
namespace {

struct Seen
{
    std::string mFile, mFunction, mMessage;
    unsigned int mLine = 0;
    bool mIsMessage = false;
    int mCalls = 0;
};
Seen sSeen;

void Record(const char* pFile, const char* pFunction, unsigned int pLine, bool pIsMessage,
            const char* pMessage)
{
    sSeen = Seen{pFile, pFunction, pMessage, pLine, pIsMessage, sSeen.mCalls + 1};
}

TEST(QelAssert, FormatsAndHandsToInstalledProcThenReturns)
{
    test::HandlerGuard lGuard;
    sSeen = Seen();
    QelAssertProc lPrevious = QelSetAssertProc(Record);
    _QelAssert("src/x", "Fn", 42, true, "value %d of %s", 7, "seven");
    EXPECT_EQ(sSeen.mCalls, 1);
    EXPECT_EQ(sSeen.mFile, "src/x");
    EXPECT_EQ(sSeen.mFunction, "Fn");
    EXPECT_EQ(sSeen.mLine, 42u);
    EXPECT_TRUE(sSeen.mIsMessage);
    EXPECT_EQ(sSeen.mMessage, "value 7 of seven");
    EXPECT_NE(lPrevious, Record);
    EXPECT_EQ(QelSetAssertProc(lPrevious), Record);
}

TEST(QelAssert, NullRestoresDefaultWhichWritesOneLineToStderr)
{
    test::HandlerGuard lGuard;
    QelSetAssertProc(Record);
    EXPECT_EQ(QelSetAssertProc(nullptr), Record);
    sSeen = Seen();
    testing::internal::CaptureStderr();
    _QelAssert("include/a", "Op", 3, false, "pIndex >= 0");
    const std::string lOutput = testing::internal::GetCapturedStderr();
    EXPECT_EQ(sSeen.mCalls, 0);
    EXPECT_EQ(lOutput, "include/a(3): Op: assertion failed: pIndex >= 0\n");
}

TEST(QelAssert, ReportMacrosPassBareFunctionName)
{
    test::ReportCapture lCapture;
    struct Local
    {
        static void InsertAt() { QEL_REPORT_CONDITION("f", "pIndex >= 0"); }
        void Release() { QEL_REPORT_MESSAGE("g", "Attempting to release an alien pointer"); }
    };
    Local::InsertAt();
    Local().Release();
    ASSERT_EQ(lCapture.Reports().size(), 2u);
    EXPECT_EQ(lCapture.Reports()[0], (test::Report{"f", "InsertAt", false, "pIndex >= 0"}));
    EXPECT_EQ(lCapture.Reports()[1],
              (test::Report{"g", "Release", true, "Attempting to release an alien pointer"}));
}

TEST(QelAssert, LongMessageIsCutNotAllocated)
{
    test::ReportCapture lCapture;
    const std::string lLong(5000, 'x');
    _QelAssert("f", "g", 1, true, "%s", lLong.c_str());
    ASSERT_EQ(lCapture.Reports().size(), 1u);
    EXPECT_EQ(lCapture.Reports()[0].mMessage, std::string(1023, 'x'));
}

} // namespace
} // namespace qelsdk
