// QelDateTime: a calendar date and time of day, to the second. An all-zero value is
// valid (the unset date).
#ifndef QELSDK_CORE_QELDATETIME_H
#define QELSDK_CORE_QELDATETIME_H

#include <qelsdk/core/qelstring.h>

namespace qelsdk {

class QelDateTime
{
public:
    QelDateTime() : mDay(0), mMonth(0), mYear(0), mHour(0), mMinute(0), mSecond(0) {}
    QelDateTime(int pDay, int pMonth, int pYear, int pHour, int pMinute, int pSecond)
        : mDay(pDay), mMonth(pMonth), mYear(pYear), mHour(pHour), mMinute(pMinute), mSecond(pSecond)
    {
    }

    // "YYYY-MM-DD hh:mm:ss"; fromString reads exactly that form back.
    QelString toString() const;
    // True on success; on failure the value is left as it was.
    bool fromString(const char* pText);

    bool operator==(const QelDateTime& pOther) const;
    bool operator!=(const QelDateTime& pOther) const { return !(*this == pOther); }

    int mDay;
    int mMonth;
    int mYear;
    int mHour;
    int mMinute;
    int mSecond;
};

} // namespace qelsdk

#endif
