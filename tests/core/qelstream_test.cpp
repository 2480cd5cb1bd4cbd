#include <qelsdk/core/qelstream.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::MemoryRecorder;

std::string Content(const QelMemoryStream& pStream)
{
    return std::string(pStream.GetData(), static_cast<size_t>(pStream.GetSize()));
}

TEST(QelMemoryStream, StartsEmpty)
{
    const QelMemoryStream lStream;
    char lByte = 'x';
    EXPECT_EQ(lStream.GetSize(), 0);
    EXPECT_EQ(lStream.GetData(), nullptr);
    EXPECT_EQ(lStream.Read(&lByte, 1), 0);
    EXPECT_EQ(lByte, 'x');
}

TEST(QelMemoryStream, RoundTripOfBytesAndInts)
{
    QelMemoryStream lStream;
    const int lInts[] = {7, -1, 0x12345678};
    EXPECT_EQ(lStream.Write("abc", 3), 3);
    // The int forms count bytes too: 12 bytes are the three ints.
    EXPECT_EQ(lStream.Write(lInts, 12), 12);
    const double lValue = 2.5;
    EXPECT_EQ(lStream.Write(&lValue, 8), 8);
    EXPECT_EQ(lStream.GetSize(), 23);

    char lText[3] = {};
    int lRead[3] = {};
    double lDouble = 0;
    EXPECT_EQ(lStream.Read(lText, 3), 3);
    EXPECT_EQ(lStream.Read(lRead, 12), 12);
    EXPECT_EQ(lStream.Read(&lDouble, 8), 8);
    EXPECT_EQ(std::string(lText, 3), "abc");
    EXPECT_EQ(lRead[0], 7);
    EXPECT_EQ(lRead[1], -1);
    EXPECT_EQ(lRead[2], 0x12345678);
    EXPECT_EQ(lDouble, 2.5);
}

TEST(QelMemoryStream, PartialReadsAndRewind)
{
    QelMemoryStream lStream;
    lStream.Write("hello", 5);
    char lBuffer[4] = {};
    EXPECT_EQ(lStream.Read(lBuffer, 3), 3);
    EXPECT_EQ(std::string(lBuffer, 3), "hel");
    EXPECT_EQ(lStream.Read(lBuffer, 3), 2);
    EXPECT_EQ(std::string(lBuffer, 2), "lo");
    EXPECT_EQ(lStream.Read(lBuffer, 3), 0);
    lStream.Rewind();
    EXPECT_EQ(lStream.Read(lBuffer, 4), 4);
    EXPECT_EQ(std::string(lBuffer, 4), "hell");
}

TEST(QelMemoryStream, WritesAppendWhileReading)
{
    QelMemoryStream lStream;
    lStream.Write("ab", 2);
    char lBuffer[2] = {};
    EXPECT_EQ(lStream.Read(lBuffer, 1), 1);
    lStream.Write("cd", 2);
    EXPECT_EQ(lStream.Read(lBuffer, 2), 2);
    EXPECT_EQ(std::string(lBuffer, 2), "bc");
    EXPECT_EQ(Content(lStream), "abcd");
}

TEST(QelMemoryStream, RefusesNullAndEmptyTransfers)
{
    QelMemoryStream lStream;
    char lByte = 0;
    EXPECT_EQ(lStream.Write(static_cast<const void*>(nullptr), 4), 0);
    EXPECT_EQ(lStream.Write("abc", 0), 0);
    EXPECT_EQ(lStream.Write("abc", -1), 0);
    EXPECT_EQ(lStream.GetSize(), 0);
    lStream.Write("abc", 3);
    EXPECT_EQ(lStream.Read(static_cast<void*>(nullptr), 2), 0);
    EXPECT_EQ(lStream.Read(&lByte, 0), 0);
    EXPECT_EQ(lStream.Read(&lByte, -1), 0);
    EXPECT_EQ(lStream.Read(&lByte, 1), 1);
    EXPECT_EQ(lByte, 'a');
}

TEST(QelMemoryStream, GrowsByDoubling)
{
    QelMemoryStream lStream;
    AllocationFailure lFailure;
    for (int i = 0; i < 1024; ++i) {
        const char lByte = static_cast<char>(i);
        ASSERT_EQ(lStream.Write(&lByte, 1), 1);
    }
    // Blocks of 1, 2, 4, ... 1024 bytes.
    EXPECT_EQ(lFailure.Count(), 11);
    ASSERT_EQ(lStream.GetSize(), 1024);
    for (int i = 0; i < 1024; ++i)
        ASSERT_EQ(lStream.GetData()[i], static_cast<char>(i));
}

TEST(QelMemoryStream, LargeWriteGrowsToFit)
{
    QelMemoryStream lStream;
    const std::string lLong(100, 'z');
    lStream.Write("ab", 2);
    AllocationFailure lFailure;
    EXPECT_EQ(lStream.Write(lLong.data(), 100), 100);
    EXPECT_EQ(lFailure.Count(), 1);
    EXPECT_EQ(Content(lStream), "ab" + lLong);
}

TEST(QelMemoryStream, FailedGrowthWritesNothing)
{
    QelMemoryStream lStream;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(lStream.Write("abc", 3), 0);
    EXPECT_EQ(lStream.GetSize(), 0);
    EXPECT_EQ(lStream.GetData(), nullptr);
    lFailure.FailNone();
    EXPECT_EQ(lStream.Write("abc", 3), 3);
    lFailure.FailAt(1);
    EXPECT_EQ(lStream.Write("defg", 4), 0);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(Content(lStream), "abc");
    char lBuffer[8] = {};
    EXPECT_EQ(lStream.Read(lBuffer, 8), 3);
}

TEST(QelMemoryStream, WritePastTheSizeLimitAllocatesNothing)
{
    QelMemoryStream lStream;
    ASSERT_EQ(lStream.Write("abc", 3), 3);
    MemoryRecorder lRecorder;
    // 3 + (INT_MAX - 2) bytes cannot be counted: refused before any request.
    EXPECT_EQ(lStream.Write("x", INT_MAX - 2), 0);
    EXPECT_TRUE(lRecorder.Allocations().empty());
    EXPECT_EQ(Content(lStream), "abc");
}

TEST(QelMemoryStream, RefusedGrowthToTheSizeLimitKeepsTheContent)
{
    QelMemoryStream lStream;
    ASSERT_EQ(lStream.Write("abc", 3), 3);
    const char* const lBlock = lStream.GetData();
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(1 << 20);
    // Exactly INT_MAX bytes in all: one request for all of them, refused.
    EXPECT_EQ(lStream.Write("x", INT_MAX - 3), 0);
    ASSERT_EQ(lRecorder.Allocations().size(), 1u);
    EXPECT_EQ(lRecorder.Allocations()[0].mSize, static_cast<size_t>(INT_MAX));
    EXPECT_TRUE(lRecorder.Allocations()[0].mRealloc);
    EXPECT_EQ(lRecorder.Allocations()[0].mOldBlock, lBlock);
    EXPECT_EQ(lRecorder.Allocations()[0].mAddress, nullptr);
    EXPECT_EQ(lStream.GetData(), lBlock);
    EXPECT_EQ(Content(lStream), "abc");
    // The capacity did not change: the next byte doubles it from 3.
    EXPECT_EQ(lStream.Write("d", 1), 1);
    ASSERT_EQ(lRecorder.Allocations().size(), 2u);
    EXPECT_EQ(lRecorder.Allocations()[1].mSize, 6u);
    EXPECT_EQ(Content(lStream), "abcd");
    EXPECT_TRUE(lRecorder.Frees().empty());
}

TEST(QelMemoryStream, ConstructedFromDataIsAReadableCopy)
{
    char lSource[] = "payload";
    const QelMemoryStream lStream(lSource, 7);
    lSource[0] = 'X';
    EXPECT_EQ(lStream.GetSize(), 7);
    EXPECT_EQ(Content(lStream), "payload");
    char lBuffer[7] = {};
    EXPECT_EQ(lStream.Read(lBuffer, 7), 7);
    EXPECT_EQ(std::string(lBuffer, 7), "payload");
}

TEST(QelMemoryStream, ConstructedFromDataIsEmptyWhenTheCopyFails)
{
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    const QelMemoryStream lStream("payload", 7);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lStream.GetSize(), 0);
    EXPECT_EQ(lStream.GetData(), nullptr);
    EXPECT_EQ(QelMemoryStream(nullptr, 4).GetSize(), 0);
    EXPECT_EQ(QelMemoryStream("abc", -1).GetSize(), 0);
}

// A file of the test's own in the temporary directory: named after the test and the
// process, so that tests running side by side never share one. Only that file is
// removed at the end.
class QelFileStreamTest : public ::testing::Test
{
protected:
    static std::string OwnPath(const char* pSuffix)
    {
        const ::testing::TestInfo* lTest = ::testing::UnitTest::GetInstance()->current_test_info();
        const std::string lName = std::string("qelstream_") + lTest->test_suite_name() + "_" +
                                  lTest->name() + "_" + std::to_string(::getpid()) + pSuffix;
        return (std::filesystem::temp_directory_path() / lName).string();
    }

    void TearDown() override
    {
        std::error_code lError;
        std::filesystem::remove(mPath, lError);
    }

    const std::string mPath = OwnPath(".bin");
};

TEST_F(QelFileStreamTest, RoundTrip)
{
    const int lInts[] = {1, 2, 3};
    {
        QelFileStream lStream(mPath.c_str(), "wb");
        ASSERT_TRUE(lStream.IsOpen());
        EXPECT_EQ(lStream.Write("head", 4), 4);
        EXPECT_EQ(lStream.Write(lInts, 12), 12);
    }
    const QelFileStream lStream(mPath.c_str(), "rb");
    ASSERT_TRUE(lStream.IsOpen());
    char lHead[4] = {};
    int lRead[3] = {};
    EXPECT_EQ(lStream.Read(lHead, 4), 4);
    EXPECT_EQ(lStream.Read(lRead, 12), 12);
    EXPECT_EQ(std::string(lHead, 4), "head");
    EXPECT_EQ(lRead[0], 1);
    EXPECT_EQ(lRead[1], 2);
    EXPECT_EQ(lRead[2], 3);
    EXPECT_EQ(lStream.Read(lHead, 4), 0);
}

TEST_F(QelFileStreamTest, ShortReadAtTheEnd)
{
    {
        QelFileStream lStream(mPath.c_str(), "wb");
        ASSERT_EQ(lStream.Write("xyz", 3), 3);
    }
    QelFileStream lStream(mPath.c_str(), "rb");
    char lBuffer[8] = {};
    EXPECT_EQ(lStream.Read(lBuffer, 8), 3);
    EXPECT_EQ(std::string(lBuffer, 3), "xyz");
    // Opened for reading only: writing transfers nothing.
    EXPECT_EQ(lStream.Write("abc", 3), 0);
}

TEST_F(QelFileStreamTest, FailedOpen)
{
    const std::string lMissing = OwnPath("-missing") + "/file.bin";
    QelFileStream lStream(lMissing.c_str(), "rb");
    EXPECT_FALSE(lStream.IsOpen());
    char lByte = 0;
    EXPECT_EQ(lStream.Read(&lByte, 1), 0);
    EXPECT_EQ(lStream.Write("a", 1), 0);
    EXPECT_FALSE(QelFileStream(nullptr, "rb").IsOpen());
    EXPECT_FALSE(QelFileStream(mPath.c_str(), nullptr).IsOpen());
    EXPECT_FALSE(std::filesystem::exists(mPath));
}

TEST_F(QelFileStreamTest, OpeningForWritingInAMissingDirectoryFails)
{
    const std::string lMissing = OwnPath("-missing") + "/file.bin";
    ASSERT_FALSE(std::filesystem::exists(OwnPath("-missing")));
    QelFileStream lStream(lMissing.c_str(), "wb");
    EXPECT_FALSE(lStream.IsOpen());
    EXPECT_EQ(lStream.Write("abc", 3), 0);
    EXPECT_FALSE(std::filesystem::exists(lMissing));
}

TEST_F(QelFileStreamTest, OpeningAReadOnlyFileForWritingFails)
{
    if (::geteuid() == 0) GTEST_SKIP() << "root writes to read-only files";
    std::ofstream(mPath) << "kept";
    std::filesystem::permissions(mPath, std::filesystem::perms::owner_read);
    {
        QelFileStream lStream(mPath.c_str(), "wb");
        EXPECT_FALSE(lStream.IsOpen());
        EXPECT_EQ(lStream.Write("abc", 3), 0);
    }
    const QelFileStream lStream(mPath.c_str(), "rb");
    char lBuffer[8] = {};
    EXPECT_EQ(lStream.Read(lBuffer, 8), 4);
    EXPECT_EQ(std::string(lBuffer, 4), "kept");
}

TEST(QelFileStream, ShortWriteToAFullDevice)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no full device here";
    // More than any stdio buffer holds, so the refusal of the device shows in the
    // count.
    const int lSize = 1 << 20;
    const std::vector<char> lData(lSize, 'a');
    QelFileStream lStream("/dev/full", "wb");
    ASSERT_TRUE(lStream.IsOpen());
    const int lWritten = lStream.Write(lData.data(), lSize);
    EXPECT_GE(lWritten, 0);
    EXPECT_LT(lWritten, lSize);
    EXPECT_LT(lStream.Write(lData.data(), lSize), lSize);
    // Closing the stream, whose last bytes cannot be flushed either, is silent.
}

} // namespace
} // namespace qelsdk
