// Test support: capture of reports, injection of allocation failures, a record of
// every memory request and a guard that puts the installed handlers back.
#ifndef QELSDK_TESTS_SUPPORT_QELTESTSUPPORT_H
#define QELSDK_TESTS_SUPPORT_QELTESTSUPPORT_H

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelassert.h>

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace qelsdk {
namespace test {

// One call of _QelAssert.
struct Report
{
    std::string mFile;
    std::string mFunction;
    bool mIsMessage;
    std::string mMessage;

    bool operator==(const Report& pOther) const
    {
        return mFile == pOther.mFile && mFunction == pOther.mFunction &&
               mIsMessage == pOther.mIsMessage && mMessage == pOther.mMessage;
    }
};

std::ostream& operator<<(std::ostream& pStream, const Report& pReport);

// The expected reports of one library file: a failed condition (flag false) or a
// message (flag true) from the named function.
struct FileReports
{
    const char* mFile;

    Report Condition(const char* pFunction, const char* pText) const
    {
        return Report{mFile, pFunction, false, pText};
    }
    Report Message(const char* pFunction, const char* pText) const
    {
        return Report{mFile, pFunction, true, pText};
    }
};

// While alive, records every report instead of printing it (line numbers are not
// kept: they are the implementation's own). Nests: the previous procedure comes back
// at destruction.
class ReportCapture
{
public:
    ReportCapture();
    ~ReportCapture();
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;

    const std::vector<Report>& Reports() const;
    void Clear();

private:
    QelAssertProc mPrevious;
    std::vector<Report>* mPreviousReports;
    std::vector<Report> mReports;
};

// While alive, counts the allocations (QelMalloc and QelRealloc alike) and makes the
// ones whose number is listed fail (numbers start at 1). FailFrom(n) fails the n-th
// and every later one. The requests it grants go to the handlers installed before it,
// so that a MemoryRecorder around it still sees them.
class AllocationFailure
{
public:
    AllocationFailure();
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    void FailAt(int pNumber);   // fail only the pNumber-th allocation from now
    void FailFrom(int pNumber); // fail the pNumber-th and every later one
    void FailNone();
    int Count() const;  // allocations asked for since construction or the last Fail*
    int Failed() const; // allocations refused

private:
    QelMallocProc mPreviousMalloc;
    QelReallocProc mPreviousRealloc;
};

// Puts back, at destruction, the memory handlers and the assertion procedure that
// were installed at construction, so that a test which replaces them by hand cannot
// leave its own installed when an assertion ends it early.
class HandlerGuard
{
public:
    HandlerGuard();
    ~HandlerGuard();
    HandlerGuard(const HandlerGuard&) = delete;
    HandlerGuard& operator=(const HandlerGuard&) = delete;

private:
    QelMallocProc mMalloc;
    QelReallocProc mRealloc;
    QelFreeProc mFree;
    QelAssertProc mAssert;
};

// While alive, records every QelMalloc and QelRealloc request with its size and the
// address it gave, and every block handed to QelFree; requests it does not refuse go
// on to the handlers installed before it (an AllocationFailure, another recorder or
// the defaults), frees always do. A refused request allocates nothing: it is recorded
// with a null address. Recorders nest with each other, with AllocationFailure and with
// ReportCapture; the previous handlers come back at destruction.
//
// Requests are numbered from 1 since construction or the last Clear. QelRealloc of a
// null block reaches the recorder as a QelMalloc request.
class MemoryRecorder
{
public:
    struct Allocation
    {
        size_t mSize;    // bytes asked for (QelMalloc asks for 1 when given 0)
        void* mAddress;  // the block handed out; null when refused or failed
        bool mRealloc;   // a QelRealloc of an existing block
        void* mOldBlock; // that block; null for QelMalloc
    };

    MemoryRecorder();
    ~MemoryRecorder();
    MemoryRecorder(const MemoryRecorder&) = delete;
    MemoryRecorder& operator=(const MemoryRecorder&) = delete;

    const std::vector<Allocation>& Allocations() const;
    const std::vector<void*>& Frees() const; // in the order they came, nulls excluded
    // The non-null addresses of Allocations(), in order.
    std::vector<void*> Addresses() const;
    // The blocks handed out and not yet freed nor moved by a QelRealloc, in order.
    const std::vector<void*>& Live() const;
    // How often pBlock was handed to QelFree.
    int TimesFreed(const void* pBlock) const;
    int Refused() const; // requests refused by this recorder

    void RefuseAbove(size_t pBytes); // refuse every request for more than pBytes
    void RefuseAt(int pNumber);      // refuse the pNumber-th request (adds to the list)
    void RefuseNone();               // refuse nothing from now on
    // Forgets the records (Live() included) and the refusals; numbering starts again.
    void Clear();

private:
    friend struct MemoryRecorderAccess;
    bool ShouldRefuse(size_t pSize);

    QelMallocProc mPreviousMalloc;
    QelReallocProc mPreviousRealloc;
    QelFreeProc mPreviousFree;
    MemoryRecorder* mOuter;
    std::vector<Allocation> mAllocations;
    std::vector<void*> mFrees;
    std::vector<void*> mLive;
    std::vector<int> mRefuseAt;
    size_t mLimit;
    bool mHasLimit;
    int mRefused;
};

// A directory of its own under the system's temporary directory, named after the
// process and a running count so that tests run side by side never share one; removed
// with everything in it at destruction.
class ScratchDirectory
{
public:
    explicit ScratchDirectory(const char* pPrefix);
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    std::string File(const char* pName) const { return (mPath / pName).string(); }
    std::string Path() const { return mPath.string(); }
    // The names of the files in the directory, sorted.
    std::vector<std::string> Files() const;

private:
    std::filesystem::path mPath;
};

} // namespace test
} // namespace qelsdk

#endif
