// The layer stream dump: the lines it prints for streams the library writes, the
// offset and message of every way a stream can break, and the executable's statuses.
#include "qeldump.h"

#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qelsdk {
namespace {

typedef QelLayerElement Element;
typedef std::vector<unsigned char> Bytes;

Bytes BytesOf(const QelMemoryStream& pStream)
{
    const auto* lData = reinterpret_cast<const unsigned char*>(pStream.GetData());
    return Bytes(lData, lData + pStream.GetSize());
}

std::vector<std::string> LinesOf(const std::string& pText)
{
    std::vector<std::string> lLines;
    std::istringstream lStream(pText);
    for (std::string lLine; std::getline(lStream, lLine);)
        lLines.push_back(lLine);
    return lLines;
}

// The dump of pBytes as lines, with its result.
struct Dump
{
    explicit Dump(const Bytes& pBytes)
        : mResult(QelDumpLayerStream(pBytes.data(), pBytes.size(), mText))
    {
        mLines = LinesOf(mText);
    }
    std::string mText;
    QelDumpResult mResult;
    std::vector<std::string> mLines;
};

// The line an address item prints as.
std::string Address(const void* pPointer)
{
    char lText[32];
    std::snprintf(lText, sizeof(lText), "0x%016" PRIxPTR,
                  reinterpret_cast<std::uintptr_t>(pPointer));
    return lText;
}

// Appends native values to a hand-made stream.
struct Stream
{
    template <class T> Stream& Add(const T& pValue)
    {
        const auto* lBytes = reinterpret_cast<const unsigned char*>(&pValue);
        mBytes.insert(mBytes.end(), lBytes, lBytes + sizeof(T));
        return *this;
    }
    Stream& Record(int pType, char pPresent) { return Add(pType).Add(pPresent); }
    // The empty records of the positions pFirst to pEnd - 1 (0-based; 47 records).
    Stream& EmptyRecords(int pFirst, int pEnd = 47)
    {
        int lPosition = 0;
        for (int lType = 1; lType <= 30; ++lType)
            for (int lRecord = 0; lRecord < (lType > 13 ? 2 : 1); ++lRecord, ++lPosition)
                if (lPosition >= pFirst && lPosition < pEnd) Record(lType, 0);
        return *this;
    }
    Bytes mBytes;
};

struct DumpTest : testing::Test
{
    DumpTest() : mMesh("mesh"), mMaterial("material"), mTexture("texture")
    {
        mLayer = mMesh.GetLayer(mMesh.CreateLayer());
    }
    ~DumpTest() override
    {
        if (mUserData) mUserData->Destroy();
    }

    Bytes Written() const
    {
        QelMemoryStream lStream;
        EXPECT_TRUE(mLayer->ContentWriteTo(lStream));
        return BytesOf(lStream);
    }

    template <class T> QelLayerElementTemplate<T>* Create(int pType, bool pIsUV = false)
    {
        auto* lElement = dynamic_cast<QelLayerElementTemplate<T>*>(
            mLayer->CreateLayerElementOfType(static_cast<Element::EType>(pType), pIsUV));
        EXPECT_NE(lElement, nullptr) << pType;
        return lElement;
    }

    // An element of every kind the layer holds: the eUV element shared with the
    // diffuse channel, a texture element holding mTexture, the material element
    // holding mMaterial and a user data element with one channel.
    void FillEveryKind()
    {
        auto* lNormals = Create<QelVector4>(Element::eNormal);
        lNormals->SetName("normals");
        lNormals->SetMappingMode(Element::ePerPolygonVertex);
        lNormals->SetReferenceMode(Element::eIndexToDirect);
        for (int lItem = 0; lItem < 6; ++lItem)
            lNormals->GetDirectArray().Add(QelVector4(lItem, 0.5, -1, 0));
        for (int lIndex : {5, 4, 3, 2, 1})
            lNormals->GetIndexArray().Add(lIndex);
        Create<QelVector4>(Element::eBinormal)->GetDirectArray().Add(QelVector4(0.1, 0, 0, 1e300));
        Create<QelVector4>(Element::eTangent);
        auto* lMaterials = Create<QelSurfaceMaterial*>(Element::eMaterial);
        lMaterials->SetMappingMode(Element::eAllSame);
        lMaterials->GetDirectArray().Add(&mMaterial);
        Create<int>(Element::ePolygonGroup)->GetDirectArray().Add(-7);
        auto* lUVs = Create<QelVector2>(Element::eUV);
        lUVs->SetName("map1");
        lUVs->GetDirectArray().Add(QelVector2(0.25, 0.75));
        Create<QelColor>(Element::eVertexColor)->GetDirectArray().Add(QelColor(1, 0.5, 0, 1));
        Create<int>(Element::eSmoothing)->GetDirectArray().Add(1);
        Create<double>(Element::eVertexCrease)->GetDirectArray().Add(0.125);
        Create<double>(Element::eEdgeCrease)->GetDirectArray().Add(2.0);
        auto* lHoles = Create<bool>(Element::eHole);
        lHoles->GetDirectArray().Add(true);
        lHoles->GetDirectArray().Add(false);
        mUserData = MakeUserData();
        mLayer->SetUserData(mUserData);
        Create<bool>(Element::eVisibility)->SetMappingMode(Element::eByEdge);
        auto* lTextures = Create<QelTexture*>(Element::eTextureBump);
        lTextures->SetName("bump \"x\"\n");
        lTextures->GetDirectArray().Add(&mTexture);
        Create<QelVector2>(Element::eTextureBump, true)->GetDirectArray().Add(QelVector2(3, 4));
    }

    // A user data element with one int channel, owned by the test: a layer cannot
    // create user data itself.
    QelLayerElementUserData* MakeUserData()
    {
        QelArray<QelDataType> lTypes;
        lTypes.Add(QelIntDT);
        QelArray<const char*> lNames;
        lNames.Add("weight");
        return QelLayerElementUserData::Create(&mMesh, "user", 7, lTypes, lNames);
    }

    QelMesh mMesh;
    QelSurfaceMaterial mMaterial;
    QelTexture mTexture;
    QelLayer* mLayer;
    QelLayerElementUserData* mUserData = nullptr;
};

TEST_F(DumpTest, EmptyLayerIs47AbsentRecords)
{
    const Dump lDump(Written());
    ASSERT_TRUE(lDump.mResult.mOk) << lDump.mResult.mMessage;
    EXPECT_EQ(lDump.mResult.mOffset, 235u);
    ASSERT_EQ(lDump.mLines.size(), 48u);
    EXPECT_EQ(lDump.mLines[0], "record 1 at offset 0: type 1 LayerElementNormal, absent");
    EXPECT_EQ(lDump.mLines[5], "record 6 at offset 25: type 6 LayerElementUV, absent");
    EXPECT_EQ(lDump.mLines[12], "record 13 at offset 60: type 13 LayerElementVisibility, absent");
    EXPECT_EQ(lDump.mLines[13],
              "record 14 at offset 65: type 14 LayerElementTexture (texture), absent");
    EXPECT_EQ(lDump.mLines[14], "record 15 at offset 70: type 14 LayerElementUV (UV), absent");
    EXPECT_EQ(
        lDump.mLines[15],
        "record 16 at offset 75: type 15 LayerElementDiffuseFactorTextures (texture), absent");
    EXPECT_EQ(lDump.mLines[46], "record 47 at offset 230: type 30 "
                                "LayerElementVectorDisplacementUV (UV), absent");
    EXPECT_EQ(lDump.mLines[47], "47 records, 235 bytes");
}

TEST_F(DumpTest, EveryKindPrintsItsArraysModesAndName)
{
    FillEveryKind();
    const Bytes lBytes = Written();
    const Dump lDump(lBytes);
    ASSERT_TRUE(lDump.mResult.mOk) << lDump.mResult.mMessage;
    EXPECT_EQ(lDump.mResult.mOffset, lBytes.size());
    const std::string lUserChannel = Address(mUserData->GetDirectArrayVoid(0));
    const std::vector<std::string> lExpected = {
        "record 1 at offset 0: type 1 LayerElementNormal, present",
        "  direct count 6 (QelVector4): (0, 0.5, -1, 0) (1, 0.5, -1, 0) (2, 0.5, -1, 0) "
        "(3, 0.5, -1, 0) ... 2 more",
        "  index count 5 (int): 5 4 3 2 ... 1 more",
        "  mapping mode 2 ePerPolygonVertex",
        "  reference mode 2 eIndexToDirect",
        "  name \"normals\"",
        "record 2 at offset 244: type 2 LayerElementBinormal, present",
        "  direct count 1 (QelVector4): (0.1, 0, 0, 1e+300)",
        "  index count 0 (int)",
        "  mapping mode 0 eNone",
        "  reference mode 0 eDirect",
        "  name \"\"",
        "record 3 at offset 301: type 3 LayerElementTangent, present",
        "  direct count 0 (QelVector4)",
        "  index count 0 (int)",
        "  mapping mode 0 eNone",
        "  reference mode 0 eDirect",
        "  name \"\"",
        "record 4 at offset 326: type 4 LayerElementMaterial, present",
        "  direct count 1 (QelSurfaceMaterial*, addresses of the writing process): " +
            Address(&mMaterial),
        "  index count 0 (int)",
        "  mapping mode 5 eAllSame",
        "  reference mode 0 eDirect",
        "  name \"\"",
        "record 5 at offset 359: type 5 LayerElementPolygonGroup, present",
        "  direct count 1 (int): -7",
        "  index count 0 (int)",
        "  mapping mode 0 eNone",
        "  reference mode 0 eDirect",
        "  name \"\"",
        "record 6 at offset 388: type 6 LayerElementUV, present",
        "  direct count 1 (QelVector2): (0.25, 0.75)",
        "  index count 0 (int)",
        "  mapping mode 0 eNone",
        "  reference mode 0 eDirect",
        "  name \"map1\"",
    };
    ASSERT_GE(lDump.mLines.size(), lExpected.size());
    EXPECT_EQ(
        std::vector<std::string>(lDump.mLines.begin(), lDump.mLines.begin() + lExpected.size()),
        lExpected);
    const auto lFind = [&lDump](const std::string& pLine) {
        for (std::size_t lIndex = 0; lIndex < lDump.mLines.size(); ++lIndex)
            if (lDump.mLines[lIndex].rfind(pLine, 0) == 0) return lIndex;
        return lDump.mLines.size();
    };
    const std::vector<std::pair<std::string, std::vector<std::string>>> lRecords = {
        {"record 7 ", {"  direct count 1 (QelColor): (1, 0.5, 0, 1)"}},
        {"record 8 ", {"  direct count 1 (int): 1"}},
        {"record 9 ", {"  direct count 1 (double): 0.125"}},
        {"record 10 ", {"  direct count 1 (double): 2"}},
        {"record 11 ", {"  direct count 2 (bool): true false"}},
        {"record 12 ",
         {"  direct count 1 (void*, addresses of the writing process): " + lUserChannel,
          "  index count 0 (int)", "  mapping mode 0 eNone", "  reference mode 0 eDirect",
          "  name \"user\""}},
        {"record 13 ",
         {"  direct count 0 (bool)", "  index count 0 (int)", "  mapping mode 4 eByEdge"}},
        // The diffuse UV record carries the element of the eUV record again.
        {"record 15 at offset 679: type 14 LayerElementUV (UV), present",
         {"  direct count 1 (QelVector2): (0.25, 0.75)", "  index count 0 (int)",
          "  mapping mode 0 eNone", "  reference mode 0 eDirect", "  name \"map1\""}},
        {"record 33 ", {}},
        {"record 34 at offset 814: type 24 LayerElementBumpTextures (texture), present",
         {"  direct count 1 (QelTexture*, addresses of the writing process): " + Address(&mTexture),
          "  index count 0 (int)", "  mapping mode 0 eNone", "  reference mode 2 eIndexToDirect",
          "  name \"bump \\\"x\\\"\\x0a\""}},
        {"record 35 at offset 856: type 24 LayerElementBumpUV (UV), present",
         {"  direct count 1 (QelVector2): (3, 4)"}},
    };
    for (const auto& lRecord : lRecords) {
        const std::size_t lAt = lFind(lRecord.first);
        ASSERT_LT(lAt + lRecord.second.size(), lDump.mLines.size()) << lRecord.first;
        for (std::size_t lLine = 0; lLine < lRecord.second.size(); ++lLine)
            EXPECT_EQ(lDump.mLines[lAt + 1 + lLine], lRecord.second[lLine]) << lRecord.first;
    }
    EXPECT_EQ(lDump.mLines[lFind("record 33 ")],
              "record 33 at offset 809: type 23 LayerElementNormalMapUV (UV), absent");
    EXPECT_EQ(lDump.mLines.back(), "47 records, " + std::to_string(lBytes.size()) + " bytes");
}

// A stream cut anywhere breaks at a field inside the cut, and the lines of the records
// before the break are printed.
TEST_F(DumpTest, EveryCutBreaksInsideTheCut)
{
    FillEveryKind();
    const Bytes lBytes = Written();
    for (std::size_t lCut = 0; lCut < lBytes.size(); ++lCut) {
        const Dump lDump(Bytes(lBytes.begin(), lBytes.begin() + lCut));
        EXPECT_FALSE(lDump.mResult.mOk) << lCut;
        EXPECT_LE(lDump.mResult.mOffset, lCut) << lCut;
    }
}

// Any byte of a stream changed to any of a few values either still decodes, to its
// end, or breaks at an offset inside the buffer; never past it.
TEST_F(DumpTest, ChangedBytesDecodeOrBreakInsideTheBuffer)
{
    FillEveryKind();
    const Bytes lBytes = Written();
    for (std::size_t lAt = 0; lAt < lBytes.size(); ++lAt) {
        for (unsigned char lValue : {0x00, 0x01, 0x02, 0x7F, 0x80, 0xFF}) {
            Bytes lChanged = lBytes;
            lChanged[lAt] = lValue;
            const Dump lDump(lChanged);
            if (lDump.mResult.mOk)
                EXPECT_EQ(lDump.mResult.mOffset, lBytes.size()) << lAt;
            else
                EXPECT_LE(lDump.mResult.mOffset, lBytes.size()) << lAt;
        }
    }
}

TEST_F(DumpTest, CutsGiveTheFieldOffsetAndWhatItNeeds)
{
    auto* lNormals = Create<QelVector4>(Element::eNormal);
    lNormals->GetDirectArray().Add(QelVector4(1, 2, 3, 4));
    lNormals->SetReferenceMode(Element::eIndexToDirect);
    lNormals->GetIndexArray().Add(0);
    lNormals->SetName("n");
    const Bytes lBytes = Written();
    // Record 1: type at 0, flag at 4, direct count at 5, items at 9, index count at 41,
    // index at 45, mapping mode at 49, reference mode at 53, name length at 57, name at 61.
    const std::vector<std::tuple<std::size_t, std::size_t, std::string>> lCuts = {
        {0, 0, "record type needs 4 bytes, 0 left"},
        {3, 0, "record type needs 4 bytes, 3 left"},
        {4, 4, "presence flag needs 1 byte, 0 left"},
        {7, 5, "direct count needs 4 bytes, 2 left"},
        {40, 5, "direct count 1 needs 32 bytes, 31 left"},
        {44, 41, "index count needs 4 bytes, 3 left"},
        {48, 41, "index count 1 needs 4 bytes, 3 left"},
        {49, 49, "mapping mode needs 4 bytes, 0 left"},
        {56, 53, "reference mode needs 4 bytes, 3 left"},
        {60, 57, "name length needs 4 bytes, 3 left"},
        {61, 57, "name length 1 needs 1 byte, 0 left"},
        {64, 62, "record type needs 4 bytes, 2 left"},
        {lBytes.size() - 1, lBytes.size() - 1, "presence flag needs 1 byte, 0 left"},
    };
    for (const auto& [lCut, lOffset, lMessage] : lCuts) {
        const Dump lDump(Bytes(lBytes.begin(), lBytes.begin() + lCut));
        EXPECT_FALSE(lDump.mResult.mOk) << lCut;
        EXPECT_EQ(lDump.mResult.mOffset, lOffset) << lCut;
        EXPECT_EQ(lDump.mResult.mMessage, lMessage) << lCut;
    }
    // The records before the break are printed: here all of record 1.
    const Dump lDump(Bytes(lBytes.begin(), lBytes.begin() + 64));
    ASSERT_EQ(lDump.mLines.size(), 6u);
    EXPECT_EQ(lDump.mLines[5], "  name \"n\"");
}

// Each malformed stream: its bytes, the offset it breaks at and the message.
struct Malformed
{
    const char* mName;
    Stream mStream;
    std::size_t mOffset;
    const char* mMessage;
};

TEST(DumpMalformed, EachBreakHasItsOffsetAndMessage)
{
    Stream lNormalRecord;
    lNormalRecord.Record(1, 1);
    const std::vector<Malformed> lCases = {
        {"negative direct count", Stream(lNormalRecord).Add(-1), 5, "direct count -1 is negative"},
        {"huge direct count", Stream(lNormalRecord).Add(0x7FFFFFFF).EmptyRecords(1), 5,
         "direct count 2147483647 needs 68719476704 bytes, 230 left"},
        {"negative index count", Stream(lNormalRecord).Add(0).Add(-3), 9,
         "index count -3 is negative"},
        {"index count past the end", Stream(lNormalRecord).Add(0).Add(2).Add(0), 9,
         "index count 2 needs 8 bytes, 4 left"},
        {"mapping mode too high", Stream(lNormalRecord).Add(0).Add(0).Add(6).Add(0).Add(0), 13,
         "mapping mode 6 is out of range 0 to 5"},
        {"negative mapping mode", Stream(lNormalRecord).Add(0).Add(0).Add(-1).Add(0).Add(0), 13,
         "mapping mode -1 is out of range 0 to 5"},
        {"reference mode too high", Stream(lNormalRecord).Add(0).Add(0).Add(1).Add(3).Add(0), 17,
         "reference mode 3 is out of range 0 to 2"},
        {"negative name length", Stream(lNormalRecord).Add(0).Add(0).Add(0).Add(0).Add(-2), 21,
         "name length -2 is negative"},
        {"type out of sequence", Stream().Record(1, 0).Record(3, 0), 5,
         "record 2 has type 3, expected 2"},
        {"channel record out of sequence", Stream().EmptyRecords(0, 14).Record(15, 0), 70,
         "record 15 has type 15, expected 14"},
        {"flag 2", Stream().Record(1, 0).Record(2, 2), 9, "presence flag 2 is neither 0 nor 1"},
        {"flag 255", Stream().Record(1, static_cast<char>(-1)), 4,
         "presence flag 255 is neither 0 nor 1"},
        {"trailing bytes", Stream().EmptyRecords(0).Add(static_cast<char>(0)).Add(0), 235,
         "5 trailing bytes after the last record"},
    };
    for (const Malformed& lCase : lCases) {
        const Dump lDump(lCase.mStream.mBytes);
        EXPECT_FALSE(lDump.mResult.mOk) << lCase.mName;
        EXPECT_EQ(lDump.mResult.mOffset, lCase.mOffset) << lCase.mName;
        EXPECT_EQ(lDump.mResult.mMessage, lCase.mMessage) << lCase.mName;
    }
}

// Runs the dump executable on pArguments with its output in scratch files, removed after.
struct ToolRun
{
    explicit ToolRun(const std::string& pArguments)
    {
        const std::string lPrefix = ScratchPath("run");
        const std::string lOut = lPrefix + ".out";
        const std::string lErr = lPrefix + ".err";
        const int lStatus = std::system(("\"" QELSDK_TOOL_QELLAYER_DUMP "\" " + pArguments +
                                         " >\"" + lOut + "\" 2>\"" + lErr + "\"")
                                            .c_str());
        mExit = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : -1;
        mOut = Contents(lOut);
        mErr = Contents(lErr);
        std::remove(lOut.c_str());
        std::remove(lErr.c_str());
    }

    static std::string ScratchPath(const std::string& pName)
    {
        return (std::filesystem::temp_directory_path() /
                ("qeldump_" + std::to_string(getpid()) + "_" + pName))
            .string();
    }
    static std::string Contents(const std::string& pPath)
    {
        std::ifstream lFile(pPath, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(lFile), std::istreambuf_iterator<char>());
    }

    int mExit;
    std::string mOut;
    std::string mErr;
};

// A scratch file holding pBytes, removed with the object.
struct ScratchFile
{
    ScratchFile(const std::string& pName, const Bytes& pBytes) : mPath(ToolRun::ScratchPath(pName))
    {
        std::ofstream lFile(mPath, std::ios::binary);
        lFile.write(reinterpret_cast<const char*>(pBytes.data()),
                    static_cast<std::streamsize>(pBytes.size()));
    }
    ~ScratchFile() { std::remove(mPath.c_str()); }
    std::string mPath;
};

TEST_F(DumpTest, ExecutablePrintsAStreamFileAndExitsWith0)
{
    FillEveryKind();
    const Bytes lBytes = Written();
    const ScratchFile lFile("every.bin", lBytes);
    const ToolRun lRun("\"" + lFile.mPath + "\"");
    EXPECT_EQ(lRun.mExit, 0);
    EXPECT_EQ(lRun.mErr, "");
    EXPECT_EQ(lRun.mOut, Dump(lBytes).mText);
}

TEST(DumpExecutable, BrokenFileIsReportedWithItsOffsetAndExits1)
{
    const Bytes lBytes = Stream().Record(1, 0).Record(2, 3).mBytes;
    const ScratchFile lFile("flag.bin", lBytes);
    const ToolRun lRun("\"" + lFile.mPath + "\"");
    EXPECT_EQ(lRun.mExit, 1);
    EXPECT_EQ(lRun.mOut, "record 1 at offset 0: type 1 LayerElementNormal, absent\n");
    EXPECT_EQ(lRun.mErr, lFile.mPath + ": offset 9: presence flag 3 is neither 0 nor 1\n");
}

TEST(DumpExecutable, MissingFileExits1AndNoArgumentExits2)
{
    const std::string lPath = ToolRun::ScratchPath("missing.bin");
    const ToolRun lMissing("\"" + lPath + "\"");
    EXPECT_EQ(lMissing.mExit, 1);
    EXPECT_EQ(lMissing.mErr, lPath + ": cannot open: No such file or directory\n");
    const ToolRun lNoArgument("");
    EXPECT_EQ(lNoArgument.mExit, 2);
    EXPECT_EQ(lNoArgument.mErr, "usage: qellayer-dump PATH\n");
}

} // namespace
} // namespace qelsdk
