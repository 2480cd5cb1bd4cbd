// Test support: capture of reports and injection of allocation failures.
#ifndef QELSDK_TESTS_SUPPORT_QELTESTSUPPORT_H
#define QELSDK_TESTS_SUPPORT_QELTESTSUPPORT_H

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelassert.h>

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
// and every later one.
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

} // namespace test
} // namespace qelsdk

#endif
