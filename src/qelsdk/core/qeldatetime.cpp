#include <qelsdk/core/qeldatetime.h>

#include <charconv>
#include <cstddef>
#include <cstdio>

namespace qelsdk {
namespace {

// One numeric field of "YYYY-MM-DD hh:mm:ss": where it goes, how many digits it
// takes and the character that must follow it ('\0': the end of the text).
struct Field
{
    int QelDateTime::*mMember;
    int mMinDigits;
    int mMaxDigits;
    char mNext;
};

// The year takes four digits at least, and as many as an int holds.
constexpr Field sFields[] = {
    {&QelDateTime::mYear, 4, 10, '-'},  {&QelDateTime::mMonth, 2, 2, '-'},
    {&QelDateTime::mDay, 2, 2, ' '},    {&QelDateTime::mHour, 2, 2, ':'},
    {&QelDateTime::mMinute, 2, 2, ':'}, {&QelDateTime::mSecond, 2, 2, '\0'}};

bool IsDigit(char pChar) { return pChar >= '0' && pChar <= '9'; }

// Reads one field and the character after it; no sign, no spaces.
bool ReadField(const char*& pText, const Field& pField, QelDateTime& pValue)
{
    if (!IsDigit(*pText)) return false;
    const char* lEnd = pText;
    while (IsDigit(*lEnd))
        ++lEnd;
    const std::ptrdiff_t lDigits = lEnd - pText;
    if (lDigits < pField.mMinDigits || lDigits > pField.mMaxDigits) return false;
    const std::from_chars_result lResult = std::from_chars(pText, lEnd, pValue.*pField.mMember);
    if (lResult.ec != std::errc() || *lEnd != pField.mNext) return false;
    pText = lEnd + 1;
    return true;
}

bool IsLeapYear(int pYear) { return (pYear % 4 == 0 && pYear % 100 != 0) || pYear % 400 == 0; }

int DaysInMonth(int pMonth, int pYear)
{
    static const int sDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return pMonth == 2 && IsLeapYear(pYear) ? 29 : sDays[pMonth - 1];
}

bool IsValidDate(const QelDateTime& pValue)
{
    return pValue.mMonth >= 1 && pValue.mMonth <= 12 && pValue.mDay >= 1 &&
           pValue.mDay <= DaysInMonth(pValue.mMonth, pValue.mYear);
}

bool IsValidTime(const QelDateTime& pValue)
{
    return pValue.mHour <= 23 && pValue.mMinute <= 59 && pValue.mSecond <= 59;
}

} // namespace

QelString QelDateTime::toString() const
{
    // Six ints with separators; 80 bytes hold any of them, even out of range.
    char lText[80];
    std::snprintf(lText, sizeof(lText), "%04d-%02d-%02d %02d:%02d:%02d", mYear, mMonth, mDay, mHour,
                  mMinute, mSecond);
    return QelString(lText);
}

// Years are read without a sign (year 0 counts as a leap year). The all-zero unset
// date is read back too, so that every value toString writes for a default date-time
// comes back; any other date must exist in the calendar.
bool QelDateTime::fromString(const char* pText)
{
    if (!pText) return false;
    QelDateTime lValue;
    for (const Field& lField : sFields)
        if (!ReadField(pText, lField, lValue)) return false;
    if (!(lValue == QelDateTime()) && !IsValidDate(lValue)) return false;
    if (!IsValidTime(lValue)) return false;
    *this = lValue;
    return true;
}

bool QelDateTime::operator==(const QelDateTime& pOther) const
{
    return mDay == pOther.mDay && mMonth == pOther.mMonth && mYear == pOther.mYear &&
           mHour == pOther.mHour && mMinute == pOther.mMinute && mSecond == pOther.mSecond;
}

} // namespace qelsdk
