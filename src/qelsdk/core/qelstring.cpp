#include <qelsdk/core/qelstring.h>

#include <qelsdk/core/base/qelalloc.h>

#include <charconv>
#include <cstring>

namespace qelsdk {
namespace {

int TextLength(const char* pText) { return pText ? static_cast<int>(std::strlen(pText)) : 0; }

// std::to_chars gives the shortest round-trip form; 32 bytes hold any int, float
// or double in it.
template <class T> QelString Format(T pValue)
{
    char lText[32];
    const std::to_chars_result lResult = std::to_chars(lText, lText + sizeof(lText), pValue);
    return QelString(lText, static_cast<int>(lResult.ptr - lText));
}

} // namespace

QelString::QelString(const char* pText) : QelString() { Assign(pText, TextLength(pText)); }
QelString::QelString(const char* pText, int pLength) : QelString() { Assign(pText, pLength); }
QelString::QelString(int pValue) : QelString() { *this = Format(pValue); }
QelString::QelString(float pValue) : QelString() { *this = Format(pValue); }
QelString::QelString(double pValue) : QelString() { *this = Format(pValue); }
QelString::QelString(const QelString& pOther) : QelString()
{
    Assign(pOther.mBuffer, pOther.mLength);
}
QelString::~QelString() { QelFree(mBuffer); }

QelString& QelString::operator=(const QelString& pOther)
{
    if (&pOther != this) Assign(pOther.mBuffer, pOther.mLength);
    return *this;
}

QelString& QelString::operator=(const char* pText)
{
    Assign(pText, TextLength(pText));
    return *this;
}

QelString& QelString::operator+=(const QelString& pOther)
{
    Append(pOther.mBuffer, pOther.mLength);
    return *this;
}

QelString& QelString::operator+=(const char* pText)
{
    Append(pText, TextLength(pText));
    return *this;
}

int QelString::Compare(const char* pText) const
{
    return std::strcmp(Buffer(), pText ? pText : "");
}

bool QelString::operator==(const QelString& pOther) const
{
    return mLength == pOther.mLength && std::memcmp(Buffer(), pOther.Buffer(), mLength) == 0;
}

bool QelString::Assign(const char* pText, int pLength)
{
    if (!pText || pLength <= 0) {
        QelFree(mBuffer);
        mBuffer = nullptr;
        mLength = 0;
        return true;
    }
    // A fresh block first: pText may point into the current one.
    char* lBuffer = static_cast<char*>(QelMalloc(static_cast<size_t>(pLength) + 1));
    if (!lBuffer) return false;
    std::memcpy(lBuffer, pText, static_cast<size_t>(pLength));
    lBuffer[pLength] = '\0';
    QelFree(mBuffer);
    mBuffer = lBuffer;
    mLength = pLength;
    return true;
}

bool QelString::Append(const char* pText, int pLength)
{
    if (!pText || pLength <= 0) return true;
    const size_t lLength = static_cast<size_t>(mLength) + static_cast<size_t>(pLength);
    char* lBuffer = static_cast<char*>(QelMalloc(lLength + 1));
    if (!lBuffer) return false;
    if (mLength) std::memcpy(lBuffer, mBuffer, static_cast<size_t>(mLength));
    std::memcpy(lBuffer + mLength, pText, static_cast<size_t>(pLength));
    lBuffer[lLength] = '\0';
    QelFree(mBuffer);
    mBuffer = lBuffer;
    mLength = static_cast<int>(lLength);
    return true;
}

QelString operator+(const QelString& pLeft, const QelString& pRight)
{
    QelString lResult(pLeft);
    lResult += pRight;
    return lResult;
}

} // namespace qelsdk
