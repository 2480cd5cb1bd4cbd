#include "support/qeltestsupport.h"

#include <cstdlib>

namespace qelsdk {
namespace test {
namespace {

std::vector<Report>* sReports = nullptr;

void CaptureProc(const char* pFile, const char* pFunction, unsigned int, bool pIsMessage,
                 const char* pMessage)
{
    if (sReports) sReports->push_back(Report{pFile, pFunction, pIsMessage, pMessage});
}

struct FailureState
{
    int mCount = 0;
    int mFailed = 0;
    int mFailAt = 0; // 0: none
    bool mFailFrom = false;
};
FailureState sFailure;

bool ShouldFail()
{
    ++sFailure.mCount;
    const bool lFail =
        sFailure.mFailAt > 0 && (sFailure.mFailFrom ? sFailure.mCount >= sFailure.mFailAt
                                                    : sFailure.mCount == sFailure.mFailAt);
    if (lFail) ++sFailure.mFailed;
    return lFail;
}

void* FailingMalloc(size_t pSize) { return ShouldFail() ? nullptr : std::malloc(pSize); }
void* FailingRealloc(void* pBlock, size_t pSize)
{
    return ShouldFail() ? nullptr : std::realloc(pBlock, pSize);
}

} // namespace

std::ostream& operator<<(std::ostream& pStream, const Report& pReport)
{
    return pStream << "{\"" << pReport.mFile << "\", \"" << pReport.mFunction << "\", "
                   << (pReport.mIsMessage ? "message" : "condition") << ", \"" << pReport.mMessage
                   << "\"}";
}

ReportCapture::ReportCapture()
    : mPrevious(QelSetAssertProc(CaptureProc)), mPreviousReports(sReports)
{
    sReports = &mReports;
}

ReportCapture::~ReportCapture()
{
    sReports = mPreviousReports;
    QelSetAssertProc(mPrevious);
}

const std::vector<Report>& ReportCapture::Reports() const { return mReports; }
void ReportCapture::Clear() { mReports.clear(); }

AllocationFailure::AllocationFailure()
    : mPreviousMalloc(QelSetMallocHandler(FailingMalloc)),
      mPreviousRealloc(QelSetReallocHandler(FailingRealloc))
{
    sFailure = FailureState();
}

AllocationFailure::~AllocationFailure()
{
    QelSetMallocHandler(mPreviousMalloc);
    QelSetReallocHandler(mPreviousRealloc);
    sFailure = FailureState();
}

void AllocationFailure::FailAt(int pNumber)
{
    sFailure = FailureState();
    sFailure.mFailAt = pNumber;
}

void AllocationFailure::FailFrom(int pNumber)
{
    FailAt(pNumber);
    sFailure.mFailFrom = true;
}

void AllocationFailure::FailNone() { sFailure = FailureState(); }
int AllocationFailure::Count() const { return sFailure.mCount; }
int AllocationFailure::Failed() const { return sFailure.mFailed; }

} // namespace test
} // namespace qelsdk
