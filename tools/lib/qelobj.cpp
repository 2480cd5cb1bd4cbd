#include "qelobj.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <numeric>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <unordered_map>

namespace qelsdk {

QelObjScene::QelObjScene(const char* pName) : mMesh(pName), mNode(pName)
{
    mNode.ConnectSrcObject(&mMesh);
}

QelSurfaceMaterial* QelObjScene::AddMaterial(const char* pName)
{
    mMaterials.push_back(std::make_unique<QelSurfaceMaterial>(pName));
    mNode.ConnectSrcObject(mMaterials.back().get());
    return mMaterials.back().get();
}

QelTexture* QelObjScene::AddTexture(const char* pName)
{
    mTextures.push_back(std::make_unique<QelTexture>(pName));
    return mTextures.back().get();
}

QelLayer* QelObjScene::Layer()
{
    if (mMesh.GetLayerCount() == 0 && mMesh.CreateLayer() < 0) return nullptr;
    return mMesh.GetLayer(0);
}

namespace {

// Fills a layer array with pCount items in one write lock rather than item by item.
template <class T>
bool FillArray(QelLayerElementArrayTemplate<T>& pArray, const T* pItems, size_t pCount)
{
    pArray.Resize(static_cast<int>(pCount));
    if (pArray.GetCount() != static_cast<int>(pCount)) return false;
    if (pCount == 0) return true;
    // A read-write lock keeps the zeroed items Resize made instead of zeroing them again.
    T* lItems =
        static_cast<T*>(pArray.GetLocked(QelLayerElementArray::eReadWriteLock, QelTypeOf(T())));
    if (!lItems) return false;
    std::copy(pItems, pItems + pCount, lItems);
    void* lBuffer = lItems;
    pArray.Release(&lBuffer);
    return true;
}

// A copy of an array's items, taken under one read lock. Reading does not change the
// array; the lock calls are not const only because they hand out a writable buffer.
template <class T> std::vector<T> Snapshot(const QelLayerElementArrayTemplate<T>& pArray)
{
    auto& lArray = const_cast<QelLayerElementArrayTemplate<T>&>(pArray);
    const int lCount = lArray.GetCount();
    if (lCount <= 0) return {};
    T* lItems = static_cast<T*>(lArray.GetLocked(QelLayerElementArray::eReadLock, QelTypeOf(T())));
    if (!lItems) return {};
    std::vector<T> lCopy(lItems, lItems + lCount);
    void* lBuffer = lItems;
    lArray.Release(&lBuffer);
    return lCopy;
}

// Names numbered in the order of their first use.
class QelNameTable
{
public:
    int IndexOf(const std::string& pName)
    {
        auto lFound = mIndices.emplace(pName, static_cast<int>(mNames.size()));
        if (lFound.second) mNames.push_back(pName);
        return lFound.first->second;
    }
    const std::vector<std::string>& Names() const { return mNames; }

private:
    std::unordered_map<std::string, int> mIndices;
    std::vector<std::string> mNames;
};

// Which optional index a face vertex carries; fixed by the first face vertex.
enum class EForm { eUnknown, eAbsent, ePresent };

// One optional per-polygon-vertex attribute: the values of its statement (vt or vn)
// and the face's indices into them.
template <class T> struct QelAttribute
{
    std::vector<T> mValues;
    std::vector<int> mIndices;
    EForm mForm = EForm::eUnknown;
};

// A value that holds from polygon mFirst to the next run's first polygon.
struct QelValueRun
{
    int mFirst;
    int mValue;
};

void Continue(std::vector<QelValueRun>& pRuns, int pPolygon, int pValue)
{
    if (pRuns.empty() || pRuns.back().mValue != pValue) pRuns.push_back({pPolygon, pValue});
}

// One value per polygon, from the runs.
std::vector<int> Expand(const std::vector<QelValueRun>& pRuns, size_t pPolygonCount)
{
    std::vector<int> lValues(pPolygonCount);
    for (size_t i = 0; i < pRuns.size(); ++i) {
        const size_t lEnd = i + 1 < pRuns.size() ? size_t(pRuns[i + 1].mFirst) : pPolygonCount;
        std::fill(lValues.begin() + pRuns[i].mFirst, lValues.begin() + long(lEnd), pRuns[i].mValue);
    }
    return lValues;
}

// What the statements of a file amount to, before any of it goes into a scene.
struct QelObjContent
{
    std::vector<QelVector4> mPoints;
    QelAttribute<QelVector2> mUVs;
    QelAttribute<QelVector4> mNormals;
    std::vector<int> mPolygonVertices;
    std::vector<int> mPolygonSizes;
    // The per-polygon values as runs: most files change them every many faces.
    std::vector<QelValueRun> mMaterials;
    std::vector<QelValueRun> mGroups;
    std::vector<QelValueRun> mSmoothing;
    QelNameTable mMaterialNames;
    QelNameTable mGroupNames;
    bool mHasUsemtl = false;
    bool mHasGroups = false;
    bool mHasSmoothing = false;
    bool mHasStatements = false;
};

bool IsBlank(char pChar) { return pChar == ' ' || pChar == '\t' || pChar == '\v' || pChar == '\f'; }

// A control character other than white space marks a file that is not text.
bool IsBinary(unsigned char pChar)
{
    return (pChar < 0x20 && pChar != '\t' && pChar != '\v' && pChar != '\f' && pChar != '\r' &&
            pChar != '\n') ||
           pChar == 0x7f;
}

// The text of one line, taken apart token by token.
class QelLineCursor
{
public:
    QelLineCursor(const char* pBegin, const char* pEnd) : mPos(pBegin), mEnd(pEnd) {}

    std::string_view Next()
    {
        while (mPos < mEnd && IsBlank(*mPos))
            ++mPos;
        const char* lStart = mPos;
        while (mPos < mEnd && !IsBlank(*mPos))
            ++mPos;
        return std::string_view(lStart, static_cast<size_t>(mPos - lStart));
    }
    // The rest of the line without its surrounding blanks.
    std::string_view Rest()
    {
        while (mPos < mEnd && IsBlank(*mPos))
            ++mPos;
        const char* lEnd = mEnd;
        while (lEnd > mPos && IsBlank(lEnd[-1]))
            --lEnd;
        return std::string_view(mPos, static_cast<size_t>(lEnd - mPos));
    }

private:
    const char* mPos;
    const char* mEnd;
};

// Parses the statements of a file into an QelObjContent, stopping at the first error.
class QelObjParser
{
public:
    QelObjParser(const char* pFileName, QelObjResult& pResult, QelObjContent& pContent)
        : mFileName(pFileName), mResult(pResult), mContent(pContent)
    {
    }

    bool Parse(const char* pData, size_t pSize);

private:
    bool Statement(const char* pBegin, const char* pEnd);
    bool Vertex(QelLineCursor& pCursor);
    bool TextureCoordinate(QelLineCursor& pCursor);
    bool Normal(QelLineCursor& pCursor);
    bool Face(QelLineCursor& pCursor);
    bool Corner(std::string_view pToken);
    template <class T>
    bool OptionalIndex(std::string_view& pRest, std::string_view pToken,
                       QelAttribute<T>& pAttribute, const char* pWhat, const char* pPlural);
    bool Smoothing(QelLineCursor& pCursor);
    void MaterialLibrary(QelLineCursor& pCursor);

    template <class T> bool Number(std::string_view pToken, T& pValue);
    template <class T>
    bool Components(QelLineCursor& pCursor, T pItem, int pMin, int pMax, const char* pNeeds,
                    const char* pTooMany, std::vector<T>& pItems);
    bool Resolve(int pIndex, size_t pCount, const char* pWhat, const char* pPlural, int& pResolved);
    bool Fail(const std::string& pText);
    std::string Where() const
    {
        return std::string(mFileName) + ":" + std::to_string(mLine) + ": ";
    }

    const char* mFileName;
    QelObjResult& mResult;
    QelObjContent& mContent;
    int mLine = 0;

    std::string mMaterial = "default";
    std::string mGroup = "default";
    int mMaterialIndex = -1; // -1 until a face uses mMaterial
    int mGroupIndex = -1;    // -1 until a face uses mGroup
    int mSmoothingGroup = 0;
};

bool QelObjParser::Fail(const std::string& pText)
{
    mResult.mError = Where() + pText;
    return false;
}

// The number of statements of each kind that fill the large arrays, found by a look
// at the start of every line, so that the arrays are reserved once.
struct QelStatementCounts
{
    size_t mPoints = 0;
    size_t mUVs = 0;
    size_t mNormals = 0;
    size_t mFaces = 0;
};

QelStatementCounts CountStatements(const char* pData, size_t pSize)
{
    QelStatementCounts lCounts;
    const char* lPos = pData;
    const char* const lEnd = pData + pSize;
    while (lPos < lEnd) {
        while (lPos < lEnd && IsBlank(*lPos))
            ++lPos;
        const char lSecond = lEnd - lPos > 1 ? lPos[1] : '\0';
        if (lPos < lEnd && *lPos == 'v') {
            lCounts.mPoints += IsBlank(lSecond);
            lCounts.mUVs += lSecond == 't';
            lCounts.mNormals += lSecond == 'n';
        } else if (lPos < lEnd && *lPos == 'f') {
            lCounts.mFaces += IsBlank(lSecond);
        }
        const void* lNewline = std::memchr(lPos, '\n', static_cast<size_t>(lEnd - lPos));
        lPos = lNewline ? static_cast<const char*>(lNewline) + 1 : lEnd;
    }
    return lCounts;
}

// Room for what the counts announce; a face is taken to have three vertices, and
// larger ones grow the arrays. The counts come from the input's own lines, so they
// never exceed its size.
void Reserve(QelObjContent& pContent, const QelStatementCounts& pCounts)
{
    pContent.mPoints.reserve(pCounts.mPoints);
    pContent.mUVs.mValues.reserve(pCounts.mUVs);
    pContent.mNormals.mValues.reserve(pCounts.mNormals);
    pContent.mPolygonSizes.reserve(pCounts.mFaces);
    for (std::vector<int>* lPerCorner :
         {&pContent.mPolygonVertices, &pContent.mUVs.mIndices, &pContent.mNormals.mIndices})
        lPerCorner->reserve(pCounts.mFaces * 3);
}

// The first byte that marks the input as binary, or pEnd. Blocks are looked at whole,
// without an early exit, which lets the loop run wide over text.
const char* FindBinary(const char* pBegin, const char* pEnd)
{
    constexpr int lBlock = 64;
    const char* lPos = pBegin;
    for (; pEnd - lPos >= lBlock; lPos += lBlock) {
        bool lBinary = false;
        for (int i = 0; i < lBlock; ++i)
            lBinary |= IsBinary(static_cast<unsigned char>(lPos[i]));
        if (lBinary) break;
    }
    while (lPos < pEnd && !IsBinary(static_cast<unsigned char>(*lPos)))
        ++lPos;
    return lPos;
}

bool QelObjParser::Parse(const char* pData, size_t pSize)
{
    Reserve(mContent, CountStatements(pData, pSize));
    const char* lPos = pData;
    const char* const lEnd = pData + pSize;
    // Statements before the line of the first binary byte still count: their errors
    // come first.
    const char* const lBinary = FindBinary(pData, lEnd);
    while (lPos < lEnd) {
        if (mLine == INT_MAX) return Fail("too many lines");
        ++mLine;
        const char* lLineEnd =
            static_cast<const char*>(std::memchr(lPos, '\n', static_cast<size_t>(lEnd - lPos)));
        if (!lLineEnd) lLineEnd = lEnd;
        if (lBinary < lLineEnd)
            return Fail("binary data (byte " +
                        std::to_string(static_cast<unsigned char>(*lBinary)) +
                        "), not an OBJ text file");
        const char* lStatementEnd = lLineEnd;
        if (lStatementEnd > lPos && lStatementEnd[-1] == '\r') --lStatementEnd;
        if (!Statement(lPos, lStatementEnd)) return false;
        lPos = lLineEnd + 1;
    }
    return true;
}

bool QelObjParser::Statement(const char* pBegin, const char* pEnd)
{
    QelLineCursor lCursor(pBegin, pEnd);
    const std::string_view lKeyword = lCursor.Next();
    if (lKeyword.empty() || lKeyword[0] == '#') return true;
    mContent.mHasStatements = true;
    if (lKeyword == "v") return Vertex(lCursor);
    if (lKeyword == "vt") return TextureCoordinate(lCursor);
    if (lKeyword == "vn") return Normal(lCursor);
    if (lKeyword == "f") return Face(lCursor);
    if (lKeyword == "s") return Smoothing(lCursor);
    if (lKeyword == "usemtl" || lKeyword == "g" || lKeyword == "o") {
        const std::string_view lName = lCursor.Rest();
        const bool lIsMaterial = lKeyword == "usemtl";
        (lIsMaterial ? mContent.mHasUsemtl : mContent.mHasGroups) = true;
        (lIsMaterial ? mMaterial : mGroup).assign(lName.empty() ? "default" : lName);
        (lIsMaterial ? mMaterialIndex : mGroupIndex) = -1;
        return true;
    }
    if (lKeyword == "mtllib") {
        MaterialLibrary(lCursor);
        return true;
    }
    ++mResult.mSkippedStatements;
    return true;
}

// A whole token as a number of type T (double or int), with an optional '+'.
template <class T> bool QelObjParser::Number(std::string_view pToken, T& pValue)
{
    std::string_view lDigits = pToken;
    if (!lDigits.empty() && lDigits[0] == '+') lDigits.remove_prefix(1);
    const char* lEnd = lDigits.data() + lDigits.size();
    const std::from_chars_result lParsed = std::from_chars(lDigits.data(), lEnd, pValue);
    if (pToken.empty() || lParsed.ec != std::errc() || lParsed.ptr != lEnd)
        return Fail("bad number '" + std::string(pToken.substr(0, 40)) + "'");
    return true;
}

// The numbers of a v, vt or vn statement: pMin to pMax of them, the first three (two
// for a texture coordinate) going into pItem, whose other components keep their
// defaults; the item then joins pItems. pNeeds opens the message for a wrong count ("v needs 3 to 7
// numbers"), pTooMany is the message for an item past INT_MAX.
template <class T>
bool QelObjParser::Components(QelLineCursor& pCursor, T pItem, int pMin, int pMax,
                              const char* pNeeds, const char* pTooMany, std::vector<T>& pItems)
{
    constexpr int lSize = static_cast<int>(sizeof(T) / sizeof(double));
    int lCount = 0;
    for (std::string_view lToken = pCursor.Next(); !lToken.empty(); lToken = pCursor.Next()) {
        double lValue = 0;
        if (!Number(lToken, lValue)) return false;
        if (lCount < QelMin(lSize, 3)) pItem[lCount] = lValue;
        ++lCount;
    }
    if (lCount < pMin || lCount > pMax)
        return Fail(std::string(pNeeds) + ", not " + std::to_string(lCount));
    if (pItems.size() >= INT_MAX) return Fail(pTooMany);
    pItems.push_back(pItem);
    return true;
}

// A point takes 3 to 7 numbers (a weight or a colour may follow), a texture
// coordinate 1 to 3 (the third is dropped), a normal exactly 3.
bool QelObjParser::Vertex(QelLineCursor& pCursor)
{
    return Components(pCursor, QelVector4(0, 0, 0, 1), 3, 7, "v needs 3 to 7 numbers",
                      "too many vertices", mContent.mPoints);
}

bool QelObjParser::TextureCoordinate(QelLineCursor& pCursor)
{
    return Components(pCursor, QelVector2(0, 0), 1, 3, "vt needs 1 to 3 numbers",
                      "too many texture coordinates", mContent.mUVs.mValues);
}

bool QelObjParser::Normal(QelLineCursor& pCursor)
{
    return Components(pCursor, QelVector4(0, 0, 0, 0), 3, 3, "vn needs 3 numbers",
                      "too many normals", mContent.mNormals.mValues);
}

// A 1-based index counts from the start, a negative one back from the end of what
// has been read so far.
bool QelObjParser::Resolve(int pIndex, size_t pCount, const char* pWhat, const char* pPlural,
                           int& pResolved)
{
    if (pIndex == 0) return Fail(std::string(pWhat) + " index 0 is invalid (indices start at 1)");
    const long long lIndex = pIndex > 0 ? pIndex - 1LL : static_cast<long long>(pCount) + pIndex;
    if (lIndex < 0 || lIndex >= static_cast<long long>(pCount))
        return Fail(std::string(pWhat) + " index " + std::to_string(pIndex) + " out of range (" +
                    std::to_string(pCount) + " " + pPlural + ")");
    pResolved = static_cast<int>(lIndex);
    return true;
}

bool QelObjParser::Face(QelLineCursor& pCursor)
{
    if (mMaterialIndex < 0) mMaterialIndex = mContent.mMaterialNames.IndexOf(mMaterial);
    if (mGroupIndex < 0) mGroupIndex = mContent.mGroupNames.IndexOf(mGroup);
    int lSize = 0;
    for (std::string_view lToken = pCursor.Next(); !lToken.empty(); lToken = pCursor.Next()) {
        if (!Corner(lToken)) return false;
        ++lSize;
    }
    if (lSize < 3)
        return Fail("face with " + std::to_string(lSize) + " vertices (at least 3 needed)");
    if (mContent.mPolygonSizes.size() >= INT_MAX) return Fail("too many faces");
    const int lPolygon = static_cast<int>(mContent.mPolygonSizes.size());
    mContent.mPolygonSizes.push_back(lSize);
    Continue(mContent.mMaterials, lPolygon, mMaterialIndex);
    Continue(mContent.mGroups, lPolygon, mGroupIndex);
    Continue(mContent.mSmoothing, lPolygon, mSmoothingGroup);
    return true;
}

bool QelObjParser::Corner(std::string_view pToken)
{
    const size_t lSlash = pToken.find('/');
    int lVertex = 0;
    if (!Number(pToken.substr(0, lSlash), lVertex) ||
        !Resolve(lVertex, mContent.mPoints.size(), "vertex", "vertices", lVertex))
        return false;
    if (mContent.mPolygonVertices.size() >= INT_MAX) return Fail("too many face vertices");
    mContent.mPolygonVertices.push_back(lVertex);
    std::string_view lRest =
        lSlash == std::string_view::npos ? std::string_view() : pToken.substr(lSlash + 1);
    const bool lHasSlash = lSlash != std::string_view::npos;
    const size_t lSecond = lRest.find('/');
    std::string_view lUV = lHasSlash ? lRest.substr(0, lSecond) : std::string_view();
    std::string_view lNormal =
        lSecond == std::string_view::npos ? std::string_view() : lRest.substr(lSecond + 1);
    return OptionalIndex(lUV, pToken, mContent.mUVs, "texture coordinate", "texture coordinates") &&
           OptionalIndex(lNormal, pToken, mContent.mNormals, "normal", "normals");
}

// pDigits empty: the corner has no such index. The first face vertex decides whether
// every face vertex has one.
template <class T>
bool QelObjParser::OptionalIndex(std::string_view& pDigits, std::string_view pToken,
                                 QelAttribute<T>& pAttribute, const char* pWhat,
                                 const char* pPlural)
{
    const EForm lForm = pDigits.empty() ? EForm::eAbsent : EForm::ePresent;
    if (pAttribute.mForm == EForm::eUnknown) pAttribute.mForm = lForm;
    if (lForm != pAttribute.mForm)
        return Fail("face vertex '" + std::string(pToken.substr(0, 40)) + "' " +
                    (lForm == EForm::eAbsent ? "lacks" : "has") + " a " + pWhat +
                    " index, unlike the first face vertex");
    if (lForm == EForm::eAbsent) return true;
    int lIndex = 0;
    if (!Number(pDigits, lIndex) ||
        !Resolve(lIndex, pAttribute.mValues.size(), pWhat, pPlural, lIndex))
        return false;
    pAttribute.mIndices.push_back(lIndex);
    return true;
}

bool QelObjParser::Smoothing(QelLineCursor& pCursor)
{
    const std::string_view lValue = pCursor.Next();
    mContent.mHasSmoothing = true;
    if (lValue == "off") {
        mSmoothingGroup = 0;
        return true;
    }
    return Number(lValue, mSmoothingGroup);
}

void QelObjParser::MaterialLibrary(QelLineCursor& pCursor)
{
    const std::filesystem::path lDirectory = std::filesystem::path(mFileName).parent_path();
    for (std::string_view lName = pCursor.Next(); !lName.empty(); lName = pCursor.Next()) {
        std::error_code lError;
        if (!std::filesystem::exists(lDirectory / std::string(lName), lError))
            mResult.mWarnings.push_back(Where() + "material library '" + std::string(lName) +
                                        "' not found");
    }
}

// A per-polygon-vertex, index-to-direct element filled from an attribute.
template <class Element, class T>
bool FillIndexedElement(Element* pElement, const char* pName, const QelAttribute<T>& pAttribute)
{
    if (!pElement) return false;
    pElement->SetName(pName);
    pElement->SetMappingMode(QelLayerElement::ePerPolygonVertex);
    pElement->SetReferenceMode(QelLayerElement::eIndexToDirect);
    return FillArray(pElement->GetDirectArray(), pAttribute.mValues.data(),
                     pAttribute.mValues.size()) &&
           FillArray(pElement->GetIndexArray(), pAttribute.mIndices.data(),
                     pAttribute.mIndices.size());
}

// A per-polygon, direct element of ints.
template <class Element>
bool FillPolygonElement(Element* pElement, const char* pName, const std::vector<int>& pValues)
{
    if (!pElement) return false;
    pElement->SetName(pName);
    pElement->SetMappingMode(QelLayerElement::ePerPolygon);
    pElement->SetReferenceMode(QelLayerElement::eDirect);
    return FillArray(pElement->GetDirectArray(), pValues.data(), pValues.size());
}

template <class Element> Element* CreateElement(QelLayer& pLayer, QelLayerElement::EType pType)
{
    return static_cast<Element*>(pLayer.CreateLayerElementOfType(pType));
}

bool FillGeometry(const QelObjContent& pContent, QelMesh& pMesh)
{
    const int lPointCount = static_cast<int>(pContent.mPoints.size());
    pMesh.SetControlPointCount(lPointCount);
    if (pMesh.GetControlPointsCount() != lPointCount) return false;
    for (int i = 0; i < lPointCount; ++i)
        pMesh.SetControlPointAt(pContent.mPoints[i], i);
    const int* lVertices = pContent.mPolygonVertices.data();
    for (int lSize : pContent.mPolygonSizes) {
        if (pMesh.AddPolygon(lVertices, lSize) < 0) return false;
        lVertices += lSize;
    }
    return true;
}

bool FillMaterials(const QelObjContent& pContent, QelObjScene& pScene, QelLayer& pLayer)
{
    for (const std::string& lName : pContent.mMaterialNames.Names())
        pScene.AddMaterial(lName.c_str());
    auto* lElement = CreateElement<QelLayerElementMaterial>(pLayer, QelLayerElement::eMaterial);
    if (!lElement) return false;
    lElement->SetName("materials");
    lElement->SetMappingMode(QelLayerElement::ePerPolygon);
    lElement->SetReferenceMode(QelLayerElement::eIndexToDirect);
    const std::vector<int> lIndices = Expand(pContent.mMaterials, pContent.mPolygonSizes.size());
    return FillArray(lElement->GetIndexArray(), lIndices.data(), lIndices.size());
}

bool FillScene(const QelObjContent& pContent, QelObjScene& pScene)
{
    QelLayer* lLayer = pScene.Layer();
    if (!lLayer || !FillGeometry(pContent, pScene.Mesh())) return false;
    using QelKind = QelLayerElement;
    if (pContent.mNormals.mForm == EForm::ePresent &&
        !FillIndexedElement(CreateElement<QelLayerElementNormal>(*lLayer, QelKind::eNormal),
                            "normals", pContent.mNormals))
        return false;
    if (pContent.mUVs.mForm == EForm::ePresent &&
        !FillIndexedElement(CreateElement<QelLayerElementUV>(*lLayer, QelKind::eUV), "diffuse",
                            pContent.mUVs))
        return false;
    if (pContent.mHasUsemtl && !FillMaterials(pContent, pScene, *lLayer)) return false;
    if (pContent.mHasGroups &&
        !FillPolygonElement(
            CreateElement<QelLayerElementPolygonGroup>(*lLayer, QelKind::ePolygonGroup), "groups",
            Expand(pContent.mGroups, pContent.mPolygonSizes.size())))
        return false;
    if (pContent.mHasSmoothing &&
        !FillPolygonElement(CreateElement<QelLayerElementSmoothing>(*lLayer, QelKind::eSmoothing),
                            "smoothing",
                            Expand(pContent.mSmoothing, pContent.mPolygonSizes.size())))
        return false;
    return true;
}

} // namespace

QelObjResult QelObjRead(const char* pData, size_t pSize, const char* pFileName, QelObjScene& pScene)
{
    QelObjResult lResult;
    QelObjContent lContent;
    QelObjParser lParser(pFileName, lResult, lContent);
    if (!lParser.Parse(pData, pSize)) return lResult;
    const std::string lFile(pFileName);
    if (!lContent.mHasStatements) {
        lResult.mError = lFile + ": empty file";
        return lResult;
    }
    if (lContent.mPoints.empty()) {
        lResult.mError = lFile + ": no vertices";
        return lResult;
    }
    if (!FillScene(lContent, pScene)) {
        lResult.mError = lFile + ": out of memory";
        return lResult;
    }
    lResult.mSuccess = true;
    return lResult;
}

QelObjResult QelObjReadFile(const char* pPath, QelObjScene& pScene)
{
    QelObjResult lResult;
    std::FILE* lFile = std::fopen(pPath, "rb");
    if (!lFile) {
        lResult.mError = std::string(pPath) + ": cannot open: " + std::strerror(errno);
        return lResult;
    }
    std::string lText;
    char lChunk[65536];
    size_t lRead = 0;
    while ((lRead = std::fread(lChunk, 1, sizeof lChunk, lFile)) > 0)
        lText.append(lChunk, lRead);
    const bool lFailed = std::ferror(lFile) != 0;
    std::fclose(lFile);
    if (lFailed) {
        lResult.mError = std::string(pPath) + ": cannot read";
        return lResult;
    }
    return QelObjRead(lText.data(), lText.size(), pPath, pScene);
}

bool QelWriteFileAtomically(const char* pPath, const void* pData, size_t pSize, std::string& pError)
{
    const std::string lTemporary = std::string(pPath) + ".tmp";
    std::FILE* lFile = std::fopen(lTemporary.c_str(), "wb");
    if (!lFile) {
        pError = std::string(pPath) + ": cannot write: " + std::strerror(errno);
        return false;
    }
    const bool lWritten = std::fwrite(pData, 1, pSize, lFile) == pSize;
    const bool lClosed = std::fclose(lFile) == 0;
    if (!lWritten || !lClosed || std::rename(lTemporary.c_str(), pPath) != 0) {
        pError = std::string(pPath) + ": cannot write: " + std::strerror(errno);
        std::remove(lTemporary.c_str());
        return false;
    }
    return true;
}

namespace {

// Where an element's value for one polygon vertex, polygon or control point is: the
// position its mapping selects, through the index array when there is one. -1 when
// the mapping is not pAllowed, -2 when the position or the index is out of range.
struct QelValueLocator
{
    QelLayerElement::EMappingMode mMapping;
    bool mIndexed;
    std::vector<int> mIndices;
    int mDirectCount;

    int Locate(int pPosition) const
    {
        const int lPosition = mMapping == QelLayerElement::eAllSame ? 0 : pPosition;
        int lIndex = lPosition;
        if (mIndexed) {
            if (lPosition < 0 || lPosition >= static_cast<int>(mIndices.size())) return -2;
            lIndex = mIndices[static_cast<size_t>(lPosition)];
        }
        return lIndex >= 0 && lIndex < mDirectCount ? lIndex : -2;
    }
};

template <class T>
bool MakeLocator(const QelLayerElementTemplate<T>* pElement,
                 std::initializer_list<QelLayerElement::EMappingMode> pAllowed,
                 QelValueLocator& pLocator)
{
    if (!pElement) return false;
    const QelLayerElement::EMappingMode lMapping = pElement->GetMappingMode();
    bool lAllowed = false;
    for (QelLayerElement::EMappingMode lMode : pAllowed)
        lAllowed = lAllowed || lMode == lMapping;
    const QelLayerElement::EReferenceMode lReference = pElement->GetReferenceMode();
    if (!lAllowed || lReference == QelLayerElement::eIndex) return false;
    pLocator.mMapping = lMapping;
    pLocator.mIndexed = lReference == QelLayerElement::eIndexToDirect;
    if (pLocator.mIndexed) pLocator.mIndices = Snapshot(pElement->GetIndexArray());
    pLocator.mDirectCount = pElement->GetDirectArray().GetCount();
    return true;
}

// Appends numbers and words to the text without a stream.
class QelTextOut
{
public:
    explicit QelTextOut(std::string& pText) : mText(pText) {}

    QelTextOut& operator<<(const char* pWord)
    {
        mText += pWord;
        return *this;
    }
    QelTextOut& operator<<(const std::string& pWord)
    {
        mText += pWord;
        return *this;
    }
    QelTextOut& operator<<(char pChar)
    {
        mText += pChar;
        return *this;
    }
    // The shortest text that reads back to the same double.
    QelTextOut& operator<<(double pValue)
    {
        char lBuffer[32];
        const std::to_chars_result lDone = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue);
        mText.append(lBuffer, lDone.ptr);
        return *this;
    }
    QelTextOut& operator<<(int pValue)
    {
        char lBuffer[16];
        const std::to_chars_result lDone = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue);
        mText.append(lBuffer, lDone.ptr);
        return *this;
    }

private:
    std::string& mText;
};

// A per-polygon value written as a statement whenever it changes between polygons.
class ObjWriter;

// A per-polygon value written as a statement whenever it changes between polygons:
// the value of each direct item, and the statement that announces a value.
struct QelPolygonRun
{
    QelPolygonRun(const char* pWhat, void (ObjWriter::*pStatement)(int))
        : mWhat(pWhat), mStatement(pStatement)
    {
    }

    const char* mWhat;
    void (ObjWriter::*mStatement)(int pValue);
    bool mPresent = false;
    QelValueLocator mLocator{};
    std::vector<int> mValues;
    bool mStarted = false;
    int mLast = 0;
};

class ObjWriter
{
public:
    ObjWriter(const QelMesh& pMesh, const QelLayer& pLayer, std::string& pText, std::string& pError)
        : mMesh(pMesh), mLayer(pLayer), mOut(pText), mError(pError)
    {
    }

    bool Write();

private:
    void Points();
    template <class T, int N>
    bool Values(const QelLayerElementTemplate<T>* pElement, const char* pKeyword,
                QelValueLocator& pLocator);
    template <class T>
    void Prepare(QelPolygonRun& pRun, const QelLayerElementTemplate<T>* pElement);
    bool PolygonStatements(int pPolygon);
    void Group(int pValue) { mOut << "g group" << pValue << '\n'; }
    void Material(int pValue);
    void Smoothing(int pValue);
    bool Corner(int pPolygon, int pPosition, int pPolygonVertex);
    bool Fail(const std::string& pText)
    {
        mError = pText;
        return false;
    }

    const QelMesh& mMesh;
    const QelLayer& mLayer;
    QelTextOut mOut;
    std::string& mError;

    bool mHasUVs = false;
    bool mHasNormals = false;
    QelValueLocator mUVs{};
    QelValueLocator mNormals{};
    QelPolygonRun mRuns[3] = {{"polygon group", &ObjWriter::Group},
                              {"material", &ObjWriter::Material},
                              {"smoothing", &ObjWriter::Smoothing}};
    std::vector<QelSurfaceMaterial*> mMaterialItems;
};

// Groups and smoothing: the ints of the direct array.
template <class T>
void ObjWriter::Prepare(QelPolygonRun& pRun, const QelLayerElementTemplate<T>* pElement)
{
    const auto lPerPolygon = {QelLayerElement::ePerPolygon, QelLayerElement::eAllSame};
    pRun.mPresent = MakeLocator(pElement, lPerPolygon, pRun.mLocator);
    if (!pRun.mPresent) return;
    if constexpr (std::is_same<T, int>::value) {
        pRun.mValues = Snapshot(pElement->GetDirectArray());
    } else {
        // Materials: the value is the position among the materials.
        mMaterialItems = Snapshot(pElement->GetDirectArray());
        pRun.mValues.resize(mMaterialItems.size());
        std::iota(pRun.mValues.begin(), pRun.mValues.end(), 0);
    }
}

void ObjWriter::Material(int pValue)
{
    const QelSurfaceMaterial* lMaterial = mMaterialItems[static_cast<size_t>(pValue)];
    mOut << "usemtl " << (lMaterial ? lMaterial->GetName() : "default") << '\n';
}

void ObjWriter::Smoothing(int pValue)
{
    if (pValue == 0)
        mOut << "s off\n";
    else
        mOut << "s " << pValue << '\n';
}

void ObjWriter::Points()
{
    for (int i = 0; i < mMesh.GetControlPointsCount(); ++i) {
        const QelVector4 lPoint = mMesh.GetControlPointAt(i);
        mOut << "v " << lPoint[0] << ' ' << lPoint[1] << ' ' << lPoint[2] << '\n';
    }
}

// The direct items of a UV (N = 2) or normal (N = 3) element as vt or vn lines.
template <class T, int N>
bool ObjWriter::Values(const QelLayerElementTemplate<T>* pElement, const char* pKeyword,
                       QelValueLocator& pLocator)
{
    if (!MakeLocator(pElement,
                     {QelLayerElement::ePerPolygonVertex, QelLayerElement::eByControlPoint},
                     pLocator))
        return false;
    for (const T& lValue : Snapshot(pElement->GetDirectArray())) {
        mOut << pKeyword;
        for (int i = 0; i < N; ++i)
            mOut << ' ' << lValue[i];
        mOut << '\n';
    }
    return true;
}

bool ObjWriter::Write()
{
    Points();
    mHasUVs = Values<QelVector2, 2>(mLayer.GetUVs(), "vt", mUVs);
    mHasNormals = Values<QelVector4, 3>(mLayer.GetNormals(), "vn", mNormals);
    Prepare(mRuns[0], mLayer.GetPolygonGroups());
    Prepare(mRuns[1], mLayer.GetMaterials());
    Prepare(mRuns[2], mLayer.GetSmoothing());

    int lPolygonVertex = 0;
    for (int lPolygon = 0; lPolygon < mMesh.GetPolygonCount(); ++lPolygon) {
        if (!PolygonStatements(lPolygon)) return false;
        mOut << 'f';
        for (int i = 0; i < mMesh.GetPolygonSize(lPolygon); ++i)
            if (!Corner(lPolygon, i, lPolygonVertex++)) return false;
        mOut << '\n';
    }
    return true;
}

// The g, usemtl and s statements of the runs whose value changes at this polygon.
bool ObjWriter::PolygonStatements(int pPolygon)
{
    for (QelPolygonRun& lRun : mRuns) {
        if (!lRun.mPresent) continue;
        const int lIndex = lRun.mLocator.Locate(pPolygon);
        if (lIndex < 0 || lIndex >= static_cast<int>(lRun.mValues.size()))
            return Fail(std::string("no ") + lRun.mWhat + " for polygon " +
                        std::to_string(pPolygon));
        const int lValue = lRun.mValues[static_cast<size_t>(lIndex)];
        if (lRun.mStarted && lValue == lRun.mLast) continue;
        lRun.mStarted = true;
        lRun.mLast = lValue;
        (this->*lRun.mStatement)(lValue);
    }
    return true;
}

bool ObjWriter::Corner(int pPolygon, int pPosition, int pPolygonVertex)
{
    const int lVertex = mMesh.GetPolygonVertex(pPolygon, pPosition);
    if (lVertex < 0 || lVertex >= mMesh.GetControlPointsCount())
        return Fail("polygon " + std::to_string(pPolygon) + " names vertex " +
                    std::to_string(lVertex) + " of " +
                    std::to_string(mMesh.GetControlPointsCount()));
    auto lLocate = [&](const QelValueLocator& pLocator) {
        return pLocator.Locate(
            pLocator.mMapping == QelLayerElement::eByControlPoint ? lVertex : pPolygonVertex);
    };
    mOut << ' ' << lVertex + 1;
    if (!mHasUVs && !mHasNormals) return true;
    mOut << '/';
    if (mHasUVs) {
        const int lUV = lLocate(mUVs);
        if (lUV < 0) return Fail("no UV for polygon vertex " + std::to_string(pPolygonVertex));
        mOut << lUV + 1;
    }
    if (!mHasNormals) return true;
    const int lNormal = lLocate(mNormals);
    if (lNormal < 0) return Fail("no normal for polygon vertex " + std::to_string(pPolygonVertex));
    mOut << '/' << lNormal + 1;
    return true;
}

} // namespace

bool QelObjWrite(const QelMesh& pMesh, const QelLayer& pLayer, std::string& pText,
                 std::string& pError)
{
    return ObjWriter(pMesh, pLayer, pText, pError).Write();
}

bool QelObjWriteFile(const QelMesh& pMesh, const QelLayer& pLayer, const char* pPath,
                     std::string& pError)
{
    std::string lText;
    if (!QelObjWrite(pMesh, pLayer, lText, pError)) {
        pError = std::string(pPath) + ": " + pError;
        return false;
    }
    return QelWriteFileAtomically(pPath, lText.data(), lText.size(), pError);
}

} // namespace qelsdk
