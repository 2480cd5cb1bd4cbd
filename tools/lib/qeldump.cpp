#include "qeldump.h"

#include <qelsdk/scene/geometry/qellayer.h>

#include <charconv>
#include <cinttypes>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <utility>

namespace qelsdk {
namespace {

typedef QelLayerElement Element;

// The stream copies arrays as they lie in memory, so the widths are the host's.
static_assert(sizeof(QelVector4) == 4 * sizeof(double), "QelVector4 is four doubles");
static_assert(sizeof(QelVector2) == 2 * sizeof(double), "QelVector2 is two doubles");
static_assert(sizeof(QelColor) == 4 * sizeof(double), "QelColor is four doubles");
static_assert(sizeof(std::int32_t) == sizeof(int), "stream integers are 32 bits");

constexpr int sFirstChannel = Element::eTextureDiffuse;
constexpr int sLastChannel = Element::eTextureVectorDisplacement;
constexpr int sRecordCount = (sFirstChannel - 1) + 2 * (sLastChannel - sFirstChannel + 1);
// Names longer than this are cut in the dump; their length is printed instead.
constexpr std::int32_t sShownNameBytes = 64;

// The dump goes to a file or a string; nothing else differs.
class QelDumpSink
{
public:
    explicit QelDumpSink(std::FILE* pFile) : mFile(pFile), mText(nullptr) {}
    explicit QelDumpSink(std::string& pText) : mFile(nullptr), mText(&pText) {}

    void Append(const char* pText, std::size_t pLength)
    {
        if (mText) mText->append(pText, pLength);
        if (mFile) std::fwrite(pText, 1, pLength, mFile);
    }

    // Every format of this file prints a bounded line, well inside the buffer.
    __attribute__((format(printf, 2, 3))) void Print(const char* pFormat, ...)
    {
        char lLine[256];
        va_list lArguments;
        va_start(lArguments, pFormat);
        const int lLength = std::vsnprintf(lLine, sizeof(lLine), pFormat, lArguments);
        va_end(lArguments);
        if (lLength > 0)
            Append(lLine, static_cast<std::size_t>(lLength) < sizeof(lLine)
                              ? static_cast<std::size_t>(lLength)
                              : sizeof(lLine) - 1);
    }

private:
    std::FILE* mFile;
    std::string* mText;
};

std::string ByteCount(std::uint64_t pCount)
{
    return std::to_string(pCount) + (pCount == 1 ? " byte" : " bytes");
}

std::int32_t Int32At(const unsigned char* pBytes)
{
    std::int32_t lValue;
    std::memcpy(&lValue, pBytes, sizeof(lValue));
    return lValue;
}

// The shortest text that reads back as the same double; the longest such text, for
// any bit pattern, has 24 characters.
void PrintDouble(QelDumpSink& pSink, const unsigned char* pBytes)
{
    double lValue;
    std::memcpy(&lValue, pBytes, sizeof(lValue));
    char lText[32];
    const std::to_chars_result lResult = std::to_chars(lText, lText + sizeof(lText), lValue);
    pSink.Append(lText, static_cast<std::size_t>(lResult.ptr - lText));
}

template <int tCount> void PrintDoubles(QelDumpSink& pSink, const unsigned char* pBytes)
{
    pSink.Append("(", 1);
    for (int lIndex = 0; lIndex < tCount; ++lIndex) {
        if (lIndex > 0) pSink.Append(", ", 2);
        PrintDouble(pSink, pBytes + lIndex * sizeof(double));
    }
    pSink.Append(")", 1);
}

void PrintInt(QelDumpSink& pSink, const unsigned char* pBytes)
{
    pSink.Print("%" PRId32, Int32At(pBytes));
}

// The reader takes any byte other than 0 as true; the byte is shown when it is not 1.
void PrintBool(QelDumpSink& pSink, const unsigned char* pBytes)
{
    if (*pBytes == 0 || *pBytes == 1)
        pSink.Print("%s", *pBytes ? "true" : "false");
    else
        pSink.Print("true (byte %u)", static_cast<unsigned>(*pBytes));
}

void PrintPointer(QelDumpSink& pSink, const unsigned char* pBytes)
{
    std::uintptr_t lAddress;
    std::memcpy(&lAddress, pBytes, sizeof(lAddress));
    pSink.Print("0x%0*" PRIxPTR, static_cast<int>(2 * sizeof(lAddress)), lAddress);
}

// How the items of one kind's arrays are laid out and printed.
struct QelItemFormat
{
    const char* mName;
    std::size_t mWidth;
    void (*mPrint)(QelDumpSink&, const unsigned char*);
    bool mIsAddress;
};

const QelItemFormat sVector4 = {"QelVector4", sizeof(QelVector4), PrintDoubles<4>, false};
const QelItemFormat sVector2 = {"QelVector2", sizeof(QelVector2), PrintDoubles<2>, false};
const QelItemFormat sColor = {"QelColor", sizeof(QelColor), PrintDoubles<4>, false};
const QelItemFormat sInt = {"int", sizeof(int), PrintInt, false};
const QelItemFormat sDouble = {"double", sizeof(double), PrintDouble, false};
const QelItemFormat sBool = {"bool", sizeof(bool), PrintBool, false};
const QelItemFormat sMaterial = {"QelSurfaceMaterial*", sizeof(void*), PrintPointer, true};
const QelItemFormat sTexture = {"QelTexture*", sizeof(void*), PrintPointer, true};
const QelItemFormat sUserData = {"void*", sizeof(void*), PrintPointer, true};

// The direct item of the non-texture kinds, by kind - 1.
const QelItemFormat* const sNonTextureFormats[13] = {
    &sVector4, &sVector4, &sVector4, &sMaterial, &sInt,      &sVector2, &sColor,
    &sInt,     &sDouble,  &sDouble,  &sBool,     &sUserData, &sBool};

const char* const sMappingModeNames[] = {"eNone",       "eByControlPoint", "ePerPolygonVertex",
                                         "ePerPolygon", "eByEdge",         "eAllSame"};
const char* const sReferenceModeNames[] = {"eDirect", "eIndex", "eIndexToDirect"};

template <std::size_t tCount> constexpr std::int32_t CountOf(const char* const (&)[tCount])
{
    return static_cast<std::int32_t>(tCount);
}

// The record expected at one position: its kind and, for a channel, which of its two
// elements it carries.
struct QelRecordSlot
{
    int mType;
    bool mIsUV;

    bool IsChannel() const { return mType >= sFirstChannel; }
    const char* KindName() const
    {
        if (!IsChannel()) return Element::sNonTextureNames[mType - 1];
        return (mIsUV ? Element::sTextureUVNames : Element::sTextureNames)[mType - sFirstChannel];
    }
    const QelItemFormat& Items() const
    {
        if (!IsChannel()) return *sNonTextureFormats[mType - 1];
        return mIsUV ? sVector2 : sTexture;
    }
};

// Walks the buffer field by field; the first field that does not hold ends the walk
// with its offset.
class QelStreamDecoder
{
public:
    QelStreamDecoder(const void* pData, std::size_t pSize, QelDumpSink& pSink)
        : mData(static_cast<const unsigned char*>(pData)), mSize(pData ? pSize : 0), mOffset(0),
          mSink(pSink)
    {
    }

    QelDumpResult Run()
    {
        int lRecord = 0;
        for (int lType = Element::eNormal; lType <= sLastChannel; ++lType)
            for (int lIsUV = 0; lIsUV < (lType >= sFirstChannel ? 2 : 1); ++lIsUV)
                if (!DecodeRecord(++lRecord, QelRecordSlot{lType, lIsUV == 1})) return mResult;
        if (mOffset < mSize)
            return Fail(mOffset,
                        std::to_string(mSize - mOffset) + " trailing bytes after the last record");
        mSink.Print("%d records, %zu bytes\n", sRecordCount, mSize);
        return QelDumpResult{true, mSize, std::string()};
    }

private:
    std::size_t Left() const { return mSize - mOffset; }

    QelDumpResult Fail(std::size_t pOffset, std::string pMessage)
    {
        mResult = QelDumpResult{false, pOffset, std::move(pMessage)};
        return mResult;
    }

    // Checks that pNeeded bytes are left for the field starting at the current offset.
    bool Need(std::uint64_t pNeeded, const char* pWhat)
    {
        if (pNeeded <= Left()) return true;
        Fail(mOffset, std::string(pWhat) + " needs " + ByteCount(pNeeded) + ", " +
                          std::to_string(Left()) + " left");
        return false;
    }

    bool ReadInt(const char* pWhat, std::int32_t& pValue)
    {
        if (!Need(sizeof(pValue), pWhat)) return false;
        pValue = Int32At(mData + mOffset);
        mOffset += sizeof(pValue);
        return true;
    }

    // A count field followed by that many items of pItemWidth bytes.
    bool ReadCount(const char* pWhat, std::size_t pItemWidth, std::int32_t& pCount)
    {
        const std::size_t lStart = mOffset;
        if (!ReadInt(pWhat, pCount)) return false;
        if (pCount < 0) {
            Fail(lStart, std::string(pWhat) + " " + std::to_string(pCount) + " is negative");
            return false;
        }
        const std::uint64_t lBytes = static_cast<std::uint64_t>(pCount) * pItemWidth;
        if (lBytes <= Left()) return true;
        Fail(lStart, std::string(pWhat) + " " + std::to_string(pCount) + " needs " +
                         ByteCount(lBytes) + ", " + std::to_string(Left()) + " left");
        return false;
    }

    bool DecodeRecord(int pRecord, const QelRecordSlot& pSlot)
    {
        const std::size_t lStart = mOffset;
        std::int32_t lType;
        if (!ReadInt("record type", lType)) return false;
        if (lType != pSlot.mType) {
            Fail(lStart, "record " + std::to_string(pRecord) + " has type " +
                             std::to_string(lType) + ", expected " + std::to_string(pSlot.mType));
            return false;
        }
        if (!Need(1, "presence flag")) return false;
        const unsigned lPresent = mData[mOffset];
        if (lPresent > 1) {
            Fail(mOffset, "presence flag " + std::to_string(lPresent) + " is neither 0 nor 1");
            return false;
        }
        ++mOffset;
        mSink.Print("record %d at offset %zu: type %d %s%s, %s\n", pRecord, lStart, lType,
                    pSlot.KindName(),
                    !pSlot.IsChannel() ? ""
                    : pSlot.mIsUV      ? " (UV)"
                                       : " (texture)",
                    lPresent ? "present" : "absent");
        return !lPresent || DecodeElement(pSlot.Items());
    }

    bool DecodeElement(const QelItemFormat& pItems)
    {
        return DecodeArray("direct count", pItems) && DecodeArray("index count", sInt) &&
               DecodeMode("mapping mode", sMappingModeNames) &&
               DecodeMode("reference mode", sReferenceModeNames) && DecodeName();
    }

    bool DecodeArray(const char* pWhat, const QelItemFormat& pItems)
    {
        std::int32_t lCount;
        if (!ReadCount(pWhat, pItems.mWidth, lCount)) return false;
        mSink.Print("  %s %" PRId32 " (%s%s)", pWhat, lCount, pItems.mName,
                    pItems.mIsAddress ? ", addresses of the writing process" : "");
        const std::int32_t lShown = lCount < sQelDumpShownItems ? lCount : sQelDumpShownItems;
        for (std::int32_t lItem = 0; lItem < lShown; ++lItem) {
            mSink.Append(lItem == 0 ? ": " : " ", lItem == 0 ? 2 : 1);
            pItems.mPrint(mSink, mData + mOffset + static_cast<std::size_t>(lItem) * pItems.mWidth);
        }
        if (lCount > lShown) mSink.Print(" ... %" PRId32 " more", lCount - lShown);
        mSink.Append("\n", 1);
        mOffset += static_cast<std::size_t>(lCount) * pItems.mWidth;
        return true;
    }

    template <std::size_t tCount>
    bool DecodeMode(const char* pWhat, const char* const (&pNames)[tCount])
    {
        const std::size_t lStart = mOffset;
        std::int32_t lMode;
        if (!ReadInt(pWhat, lMode)) return false;
        if (lMode < 0 || lMode >= CountOf(pNames)) {
            Fail(lStart, std::string(pWhat) + " " + std::to_string(lMode) +
                             " is out of range 0 to " + std::to_string(CountOf(pNames) - 1));
            return false;
        }
        mSink.Print("  %s %" PRId32 " %s\n", pWhat, lMode, pNames[lMode]);
        return true;
    }

    bool DecodeName()
    {
        std::int32_t lLength;
        if (!ReadCount("name length", 1, lLength)) return false;
        const std::int32_t lShown = lLength < sShownNameBytes ? lLength : sShownNameBytes;
        mSink.Append("  name \"", 8);
        for (std::int32_t lByte = 0; lByte < lShown; ++lByte)
            PrintNameByte(mData[mOffset + static_cast<std::size_t>(lByte)]);
        if (lLength > lShown)
            mSink.Print("\"... (%" PRId32 " bytes)\n", lLength);
        else
            mSink.Append("\"\n", 2);
        mOffset += static_cast<std::size_t>(lLength);
        return true;
    }

    // Names are arbitrary bytes: anything but printable ASCII is escaped.
    void PrintNameByte(unsigned char pByte)
    {
        if (pByte == '"' || pByte == '\\')
            mSink.Print("\\%c", pByte);
        else if (pByte >= 0x20 && pByte < 0x7F)
            mSink.Print("%c", pByte);
        else
            mSink.Print("\\x%02x", static_cast<unsigned>(pByte));
    }

    const unsigned char* mData;
    std::size_t mSize;
    std::size_t mOffset;
    QelDumpSink& mSink;
    QelDumpResult mResult;
};

} // namespace

QelDumpResult QelDumpLayerStream(const void* pData, std::size_t pSize, std::FILE* pOut)
{
    QelDumpSink lSink(pOut);
    return QelStreamDecoder(pData, pSize, lSink).Run();
}

QelDumpResult QelDumpLayerStream(const void* pData, std::size_t pSize, std::string& pOut)
{
    QelDumpSink lSink(pOut);
    return QelStreamDecoder(pData, pSize, lSink).Run();
}

} // namespace qelsdk
