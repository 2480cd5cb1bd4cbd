// QelString: the library's character string.
//
// The text lives in a block from QelMalloc. An all-zero QelString (null buffer,
// length 0) is a valid empty string, so buffers of strings that were zero-filled
// rather than constructed can be assigned to safely.
#ifndef QELSDK_CORE_QELSTRING_H
#define QELSDK_CORE_QELSTRING_H

namespace qelsdk {

class QelString
{
public:
    QelString() : mBuffer(nullptr), mLength(0) {}
    QelString(const char* pText);
    QelString(const char* pText, int pLength);
    // Plain decimal.
    explicit QelString(int pValue);
    // The shortest text that reads back to the same value ("1", "2.5", "0.1").
    explicit QelString(float pValue);
    explicit QelString(double pValue);
    QelString(const QelString& pOther);
    ~QelString();

    QelString& operator=(const QelString& pOther);
    QelString& operator=(const char* pText);
    QelString& operator+=(const QelString& pOther);
    QelString& operator+=(const char* pText);

    // Never null: an empty string gives "".
    const char* Buffer() const { return mBuffer ? mBuffer : ""; }
    int GetLen() const { return mLength; }
    bool IsEmpty() const { return mLength == 0; }

    // Three-way comparison of the characters: negative, zero or positive.
    int Compare(const char* pText) const;

    bool operator==(const QelString& pOther) const;
    bool operator!=(const QelString& pOther) const { return !(*this == pOther); }
    bool operator==(const char* pText) const { return Compare(pText) == 0; }
    bool operator!=(const char* pText) const { return Compare(pText) != 0; }

private:
    // Replaces the text with pLength bytes of pText. On allocation failure the
    // string keeps its old text and false is returned.
    bool Assign(const char* pText, int pLength);
    bool Append(const char* pText, int pLength);

    char* mBuffer;
    int mLength;
};

QelString operator+(const QelString& pLeft, const QelString& pRight);

// Parses the whole text of pSrc as a value of the destination's type. True on
// success; false, with pDst untouched, when the text is not such a number or it is
// out of the type's range. Integers are decimal with an optional sign ('-' only for
// signed types); bool takes "true", "false", "1" and "0"; double takes the decimal
// and exponent forms and "inf"/"nan".
bool QelTypeCopyStr(signed char& pDst, const QelString& pSrc);
bool QelTypeCopyStr(unsigned char& pDst, const QelString& pSrc);
bool QelTypeCopyStr(short& pDst, const QelString& pSrc);
bool QelTypeCopyStr(unsigned short& pDst, const QelString& pSrc);
bool QelTypeCopyStr(int& pDst, const QelString& pSrc);
bool QelTypeCopyStr(unsigned int& pDst, const QelString& pSrc);
bool QelTypeCopyStr(long long& pDst, const QelString& pSrc);
bool QelTypeCopyStr(unsigned long long& pDst, const QelString& pSrc);
bool QelTypeCopyStr(bool& pDst, const QelString& pSrc);
bool QelTypeCopyStr(double& pDst, const QelString& pSrc);

} // namespace qelsdk

#endif
