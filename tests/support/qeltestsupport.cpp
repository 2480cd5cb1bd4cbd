#include "support/qeltestsupport.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

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
// Where the granted requests go: the handlers installed before the AllocationFailure.
QelMallocProc sFailureMalloc = nullptr;
QelReallocProc sFailureRealloc = nullptr;

bool ShouldFail()
{
    ++sFailure.mCount;
    const bool lFail =
        sFailure.mFailAt > 0 && (sFailure.mFailFrom ? sFailure.mCount >= sFailure.mFailAt
                                                    : sFailure.mCount == sFailure.mFailAt);
    if (lFail) ++sFailure.mFailed;
    return lFail;
}

void* FailingMalloc(size_t pSize) { return ShouldFail() ? nullptr : sFailureMalloc(pSize); }
void* FailingRealloc(void* pBlock, size_t pSize)
{
    return ShouldFail() ? nullptr : sFailureRealloc(pBlock, pSize);
}

// The recorder installed last, and the recorder the next call of a recording handler
// belongs to while a recorder hands a request on (null outside of that): a request
// goes through every recorder from the innermost out, each with its own records.
MemoryRecorder* sInnermost = nullptr;
MemoryRecorder* sHandingOn = nullptr;

} // namespace

struct MemoryRecorderAccess
{
    static void Forget(std::vector<void*>& pBlocks, void* pBlock)
    {
        const auto lFound = std::find(pBlocks.begin(), pBlocks.end(), pBlock);
        if (lFound != pBlocks.end()) pBlocks.erase(lFound);
    }

    static MemoryRecorder& Current() { return sHandingOn ? *sHandingOn : *sInnermost; }

    // Runs pCall with the handlers of the recorder after pRecorder as the next ones.
    template <class Call> static auto HandOn(MemoryRecorder& pRecorder, Call pCall)
    {
        MemoryRecorder* const lSaved = sHandingOn;
        sHandingOn = pRecorder.mOuter;
        auto lResult = pCall();
        sHandingOn = lSaved;
        return lResult;
    }

    static void* Malloc(size_t pSize)
    {
        MemoryRecorder& lRecorder = Current();
        void* lBlock = lRecorder.ShouldRefuse(pSize)
                           ? nullptr
                           : HandOn(lRecorder, [&] { return lRecorder.mPreviousMalloc(pSize); });
        lRecorder.mAllocations.push_back({pSize, lBlock, false, nullptr});
        if (lBlock) lRecorder.mLive.push_back(lBlock);
        return lBlock;
    }

    static void* Realloc(void* pBlock, size_t pSize)
    {
        MemoryRecorder& lRecorder = Current();
        void* lBlock = lRecorder.ShouldRefuse(pSize) ? nullptr : HandOn(lRecorder, [&] {
            return lRecorder.mPreviousRealloc(pBlock, pSize);
        });
        lRecorder.mAllocations.push_back({pSize, lBlock, true, pBlock});
        if (lBlock) {
            Forget(lRecorder.mLive, pBlock);
            lRecorder.mLive.push_back(lBlock);
        }
        return lBlock;
    }

    static void Free(void* pBlock)
    {
        MemoryRecorder& lRecorder = Current();
        lRecorder.mFrees.push_back(pBlock);
        Forget(lRecorder.mLive, pBlock);
        HandOn(lRecorder, [&] {
            lRecorder.mPreviousFree(pBlock);
            return 0;
        });
    }
};

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
    sFailureMalloc = mPreviousMalloc;
    sFailureRealloc = mPreviousRealloc;
}

AllocationFailure::~AllocationFailure()
{
    QelSetMallocHandler(mPreviousMalloc);
    QelSetReallocHandler(mPreviousRealloc);
    sFailure = FailureState();
    sFailureMalloc = nullptr;
    sFailureRealloc = nullptr;
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

namespace {

// Reads a handler by installing the default for a moment.
template <class Proc> Proc Installed(Proc (*pSet)(Proc))
{
    const Proc lInstalled = pSet(nullptr);
    pSet(lInstalled);
    return lInstalled;
}

} // namespace

HandlerGuard::HandlerGuard()
    : mMalloc(Installed(QelSetMallocHandler)), mRealloc(Installed(QelSetReallocHandler)),
      mFree(Installed(QelSetFreeHandler)), mAssert(Installed(QelSetAssertProc))
{
}

HandlerGuard::~HandlerGuard()
{
    QelSetMallocHandler(mMalloc);
    QelSetReallocHandler(mRealloc);
    QelSetFreeHandler(mFree);
    QelSetAssertProc(mAssert);
}

MemoryRecorder::MemoryRecorder()
    : mPreviousMalloc(QelSetMallocHandler(MemoryRecorderAccess::Malloc)),
      mPreviousRealloc(QelSetReallocHandler(MemoryRecorderAccess::Realloc)),
      mPreviousFree(QelSetFreeHandler(MemoryRecorderAccess::Free)), mOuter(sInnermost), mLimit(0),
      mHasLimit(false), mRefused(0)
{
    sInnermost = this;
}

MemoryRecorder::~MemoryRecorder()
{
    QelSetMallocHandler(mPreviousMalloc);
    QelSetReallocHandler(mPreviousRealloc);
    QelSetFreeHandler(mPreviousFree);
    sInnermost = mOuter;
}

bool MemoryRecorder::ShouldRefuse(size_t pSize)
{
    const int lNumber = static_cast<int>(mAllocations.size()) + 1;
    const bool lRefuse = (mHasLimit && pSize > mLimit) ||
                         std::find(mRefuseAt.begin(), mRefuseAt.end(), lNumber) != mRefuseAt.end();
    if (lRefuse) ++mRefused;
    return lRefuse;
}

const std::vector<MemoryRecorder::Allocation>& MemoryRecorder::Allocations() const
{
    return mAllocations;
}

const std::vector<void*>& MemoryRecorder::Frees() const { return mFrees; }

std::vector<void*> MemoryRecorder::Addresses() const
{
    std::vector<void*> lAddresses;
    for (const Allocation& lAllocation : mAllocations)
        if (lAllocation.mAddress) lAddresses.push_back(lAllocation.mAddress);
    return lAddresses;
}

const std::vector<void*>& MemoryRecorder::Live() const { return mLive; }

int MemoryRecorder::TimesFreed(const void* pBlock) const
{
    return static_cast<int>(std::count(mFrees.begin(), mFrees.end(), pBlock));
}

int MemoryRecorder::Refused() const { return mRefused; }

void MemoryRecorder::RefuseAbove(size_t pBytes)
{
    mLimit = pBytes;
    mHasLimit = true;
}

void MemoryRecorder::RefuseAt(int pNumber) { mRefuseAt.push_back(pNumber); }

void MemoryRecorder::RefuseNone()
{
    mRefuseAt.clear();
    mHasLimit = false;
}

void MemoryRecorder::Clear()
{
    mAllocations.clear();
    mFrees.clear();
    mLive.clear();
    mRefused = 0;
    RefuseNone();
}

ScratchDirectory::ScratchDirectory(const char* pPrefix)
{
    static int sCount = 0;
    mPath =
        std::filesystem::temp_directory_path() /
        (std::string(pPrefix) + "_" + std::to_string(::getpid()) + "_" + std::to_string(++sCount));
    std::filesystem::create_directories(mPath);
}

ScratchDirectory::~ScratchDirectory()
{
    std::error_code lError;
    std::filesystem::remove_all(mPath, lError);
}

std::vector<std::string> ScratchDirectory::Files() const
{
    std::vector<std::string> lNames;
    for (const auto& lEntry : std::filesystem::directory_iterator(mPath))
        lNames.push_back(lEntry.path().filename().string());
    std::sort(lNames.begin(), lNames.end());
    return lNames;
}

} // namespace test
} // namespace qelsdk
