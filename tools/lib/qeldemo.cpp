#include "qeldemo.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <type_traits>

namespace qelsdk {

namespace {

using QelKind = QelLayerElement;

// Calls pVisit with the element as the storage template it is an instance of;
// false for an element of none of them.
template <class Visit> bool VisitTyped(const QelLayerElement& pElement, Visit&& pVisit)
{
    auto lTry = [&](auto* pTyped) {
        using QelTyped = std::remove_pointer_t<decltype(pTyped)>;
        const auto* lElement = dynamic_cast<const QelTyped*>(&pElement);
        if (lElement) pVisit(*lElement);
        return lElement != nullptr;
    };
    return lTry(static_cast<QelLayerElementTemplate<QelVector4>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<QelVector2>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<QelColor>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<int>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<double>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<bool>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<QelSurfaceMaterial*>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<QelTexture*>*>(nullptr)) ||
           lTry(static_cast<QelLayerElementTemplate<void*>*>(nullptr));
}

bool HasDirect(const QelLayerElement& pElement)
{
    return pElement.GetReferenceMode() != QelKind::eIndex;
}

bool HasIndex(const QelLayerElement& pElement)
{
    return pElement.GetReferenceMode() != QelKind::eDirect;
}

// One slot of a layer: a kind, and for the texture channels whether it is the UV set.
struct QelLayerSlot
{
    QelKind::EType mType;
    bool mIsUV;
};

// Every slot once: kinds 1 to 13 except eUV, which names the diffuse UV slot again,
// then each channel's UV set and texture.
std::vector<QelLayerSlot> Slots()
{
    std::vector<QelLayerSlot> lSlots;
    for (int lType = QelKind::eNormal; lType <= QelKind::eVisibility; ++lType)
        if (lType != QelKind::eUV) lSlots.push_back({static_cast<QelKind::EType>(lType), false});
    for (int lType = QelKind::eTextureDiffuse; lType <= QelKind::eTextureVectorDisplacement;
         ++lType) {
        lSlots.push_back({static_cast<QelKind::EType>(lType), true});
        lSlots.push_back({static_cast<QelKind::EType>(lType), false});
    }
    return lSlots;
}

template <class T>
bool FillDirect(QelLayerElementTemplate<T>* pElement, QelKind::EMappingMode pMapping,
                std::initializer_list<T> pItems)
{
    if (!pElement) return false;
    pElement->SetMappingMode(pMapping);
    pElement->SetReferenceMode(QelKind::eDirect);
    for (const T& lItem : pItems)
        if (pElement->GetDirectArray().Add(lItem) < 0) return false;
    return true;
}

bool FillIndices(QelLayerElementArrayTemplate<int>& pArray, std::initializer_list<int> pItems)
{
    for (int lItem : pItems)
        if (pArray.Add(lItem) < 0) return false;
    return true;
}

template <class Element> Element* Create(QelLayer& pLayer, QelKind::EType pType, const char* pName)
{
    auto* lElement = static_cast<Element*>(pLayer.CreateLayerElementOfType(pType));
    if (lElement) lElement->SetName(pName);
    return lElement;
}

// The corners of the six faces, each face counter-clockwise seen from outside, and
// the faces' normals.
const int sCubeFaces[6][4] = {{4, 5, 6, 7}, {1, 0, 3, 2}, {5, 1, 2, 6},
                              {0, 4, 7, 3}, {7, 6, 2, 3}, {0, 1, 5, 4}};
const double sCubeNormals[6][3] = {{0, 0, 1},  {0, 0, -1}, {1, 0, 0},
                                   {-1, 0, 0}, {0, 1, 0},  {0, -1, 0}};

bool BuildCubeGeometry(QelMesh& pMesh)
{
    pMesh.SetControlPointCount(8);
    if (pMesh.GetControlPointsCount() != 8) return false;
    for (int i = 0; i < 8; ++i)
        pMesh.SetControlPointAt(QelVector4(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1, 1), i);
    // The corners above are numbered by bits; the faces use the usual numbering.
    const int lFromUsual[8] = {0, 1, 3, 2, 4, 5, 7, 6};
    for (const auto& lFace : sCubeFaces) {
        int lCorners[4];
        for (int i = 0; i < 4; ++i)
            lCorners[i] = lFromUsual[lFace[i]];
        if (pMesh.AddPolygon(lCorners, 4) < 0) return false;
    }
    return true;
}

bool BuildCubeVertexElements(QelLayer& pLayer, const QelMesh& pMesh)
{
    auto* lNormals = Create<QelLayerElementNormal>(pLayer, QelKind::eNormal, "normals");
    if (!FillDirect<QelVector4>(lNormals, QelKind::ePerPolygonVertex, {})) return false;
    for (const auto& lNormal : sCubeNormals)
        for (int i = 0; i < 4; ++i)
            if (lNormals->GetDirectArray().Add(QelVector4(lNormal[0], lNormal[1], lNormal[2], 0)) <
                0)
                return false;

    auto* lUVs = Create<QelLayerElementUV>(pLayer, QelKind::eUV, "diffuse");
    if (!FillDirect<QelVector2>(lUVs, QelKind::ePerPolygonVertex, {{0, 0}, {1, 0}, {1, 1}, {0, 1}}))
        return false;
    lUVs->SetReferenceMode(QelKind::eIndexToDirect);
    for (int lFace = 0; lFace < 6; ++lFace)
        if (!FillIndices(lUVs->GetIndexArray(), {0, 1, 2, 3})) return false;

    auto* lColors = Create<QelLayerElementVertexColor>(pLayer, QelKind::eVertexColor, "colors");
    if (!FillDirect<QelColor>(lColors, QelKind::eByControlPoint, {})) return false;
    for (int i = 0; i < pMesh.GetControlPointsCount(); ++i) {
        const QelVector4 lPoint = pMesh.GetControlPointAt(i);
        const QelColor lColor((lPoint[0] + 1) / 2, (lPoint[1] + 1) / 2, (lPoint[2] + 1) / 2);
        if (lColors->GetDirectArray().Add(lColor) < 0) return false;
    }
    return true;
}

bool BuildCubePolygonElements(QelLayer& pLayer)
{
    if (!FillDirect<int>(Create<QelLayerElementSmoothing>(pLayer, QelKind::eSmoothing, "smoothing"),
                         QelKind::ePerPolygon, {1, 1, 2, 2, 0, 0}) ||
        !FillDirect<int>(
            Create<QelLayerElementPolygonGroup>(pLayer, QelKind::ePolygonGroup, "groups"),
            QelKind::ePerPolygon, {0, 0, 0, 1, 1, 1}))
        return false;
    auto* lMaterials = Create<QelLayerElementMaterial>(pLayer, QelKind::eMaterial, "materials");
    if (!lMaterials) return false;
    lMaterials->SetMappingMode(QelKind::ePerPolygon);
    lMaterials->SetReferenceMode(QelKind::eIndexToDirect);
    return FillIndices(lMaterials->GetIndexArray(), {0, 1, 0, 1, 0, 1});
}

// The cube's twelve edges: creases on the four edges of the top face, every edge
// visible.
bool BuildCubeEdgeElements(QelLayer& pLayer)
{
    auto* lCreases = Create<QelLayerElementCrease>(pLayer, QelKind::eEdgeCrease, "creases");
    auto* lVisibility =
        Create<QelLayerElementVisibility>(pLayer, QelKind::eVisibility, "visibility");
    if (!FillDirect<double>(lCreases, QelKind::eByEdge, {}) ||
        !FillDirect<bool>(lVisibility, QelKind::eByEdge, {}))
        return false;
    for (int lEdge = 0; lEdge < 12; ++lEdge)
        if (lCreases->GetDirectArray().Add(lEdge < 4 ? 1.0 : 0.0) < 0 ||
            lVisibility->GetDirectArray().Add(true) < 0)
            return false;
    return true;
}

bool BuildCubeTexture(QelObjScene& pScene, QelLayer& pLayer)
{
    auto* lTexture = Create<QelLayerElementTexture>(pLayer, QelKind::eTextureDiffuse, "checker");
    if (!FillDirect<QelTexture*>(lTexture, QelKind::eAllSame, {pScene.AddTexture("checker")}))
        return false;
    lTexture->SetReferenceMode(QelKind::eIndexToDirect);
    return FillIndices(lTexture->GetIndexArray(), {0});
}

const char* MappingName(QelKind::EMappingMode pMapping)
{
    static const char* const sNames[] = {"none",        "by control point", "per polygon vertex",
                                         "per polygon", "by edge",          "all same"};
    return pMapping >= 0 && pMapping <= 5 ? sNames[pMapping] : "other";
}

const char* ReferenceName(QelKind::EReferenceMode pReference)
{
    static const char* const sNames[] = {"direct", "index", "index to direct"};
    return pReference >= 0 && pReference <= 2 ? sNames[pReference] : "other";
}

// A text table whose columns are as wide as their widest cell; numbers go right.
class QelTextTable
{
public:
    void Row(std::vector<std::string> pCells) { mRows.push_back(std::move(pCells)); }

    std::string Text(size_t pFirstNumberColumn) const
    {
        std::vector<size_t> lWidths;
        for (const auto& lRow : mRows) {
            lWidths.resize(std::max(lWidths.size(), lRow.size()));
            for (size_t i = 0; i < lRow.size(); ++i)
                lWidths[i] = std::max(lWidths[i], lRow[i].size());
        }
        std::string lText;
        for (const auto& lRow : mRows) {
            std::string lLine;
            for (size_t i = 0; i < lRow.size(); ++i) {
                const std::string lPad(lWidths[i] - lRow[i].size(), ' ');
                if (i) lLine += "  ";
                lLine += i >= pFirstNumberColumn ? lPad + lRow[i] : lRow[i] + lPad;
            }
            lLine.erase(lLine.find_last_not_of(' ') + 1);
            lText += lLine + "\n";
        }
        return lText;
    }

private:
    std::vector<std::vector<std::string>> mRows;
};

template <class T> std::string ItemName(const T* pObject, bool pByAddress)
{
    if (!pObject) return "null";
    if (!pByAddress) return pObject->GetName();
    char lText[32];
    std::snprintf(lText, sizeof lText, "%p", static_cast<const void*>(pObject));
    return lText;
}

// Items compare as their bytes (what a stream carries), objects by address or name.
template <class T> bool SameItem(const T& pA, const T& pB, bool)
{
    // The stream copies items as raw bytes, so a round trip is exact when the bytes
    // are; comparing values would call a NaN different from itself.
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    return std::memcmp(&pA, &pB, sizeof(T)) == 0;
}
bool SameItem(QelSurfaceMaterial* pA, QelSurfaceMaterial* pB, bool pByAddress)
{
    return ItemName(pA, pByAddress) == ItemName(pB, pByAddress);
}
bool SameItem(QelTexture* pA, QelTexture* pB, bool pByAddress)
{
    return ItemName(pA, pByAddress) == ItemName(pB, pByAddress);
}

template <class T>
void CompareArrays(const std::string& pWhat, const QelLayerElementArrayTemplate<T>& pExpected,
                   const QelLayerElementArrayTemplate<T>& pActual, bool pByAddress,
                   std::vector<std::string>& pDifferences)
{
    if (pExpected.GetCount() != pActual.GetCount()) {
        pDifferences.push_back(pWhat + ": " + std::to_string(pActual.GetCount()) + " items, not " +
                               std::to_string(pExpected.GetCount()));
        return;
    }
    for (int i = 0; i < pExpected.GetCount(); ++i)
        if (!SameItem(pExpected.GetAt(i), pActual.GetAt(i), pByAddress)) {
            pDifferences.push_back(pWhat + ": item " + std::to_string(i) + " differs");
            return;
        }
}

template <class T>
void CompareTyped(const std::string& pWhat, const QelLayerElementTemplate<T>& pExpected,
                  const QelLayerElement& pActual, bool pByAddress,
                  std::vector<std::string>& pDifferences)
{
    const auto& lActual = static_cast<const QelLayerElementTemplate<T>&>(pActual);
    if (HasDirect(pExpected))
        CompareArrays(pWhat + " direct", pExpected.GetDirectArray(), lActual.GetDirectArray(),
                      pByAddress, pDifferences);
    if (HasIndex(pExpected))
        CompareArrays(pWhat + " index", pExpected.GetIndexArray(), lActual.GetIndexArray(),
                      pByAddress, pDifferences);
}

void CompareElements(const std::string& pWhat, const QelLayerElement& pExpected,
                     const QelLayerElement& pActual, bool pByAddress,
                     std::vector<std::string>& pDifferences)
{
    if (pExpected.GetMappingMode() != pActual.GetMappingMode())
        pDifferences.push_back(pWhat + ": mapping differs");
    if (pExpected.GetReferenceMode() != pActual.GetReferenceMode()) {
        pDifferences.push_back(pWhat + ": reference differs");
        return;
    }
    if (std::strcmp(pExpected.GetName(), pActual.GetName()) != 0)
        pDifferences.push_back(pWhat + ": name '" + pActual.GetName() + "', not '" +
                               pExpected.GetName() + "'");
    // Both elements sit in the same slot, so they are of the same storage type.
    VisitTyped(pExpected, [&](const auto& pTyped) {
        CompareTyped(pWhat, pTyped, pActual, pByAddress, pDifferences);
    });
}

} // namespace

bool QelDemoBuildCube(QelObjScene& pScene)
{
    QelLayer* lLayer = pScene.Layer();
    return lLayer && pScene.AddMaterial("red") && pScene.AddMaterial("blue") &&
           BuildCubeGeometry(pScene.Mesh()) && BuildCubeVertexElements(*lLayer, pScene.Mesh()) &&
           BuildCubePolygonElements(*lLayer) && BuildCubeEdgeElements(*lLayer) &&
           BuildCubeTexture(pScene, *lLayer);
}

const char* QelDemoKindName(QelLayerElement::EType pType, bool pIsUV)
{
    static const char* const sNonTexture[13] = {
        "normals", "binormals", "tangents",  "materials",     "polygon groups",
        "uv",      "colors",    "smoothing", "vertex crease", "edge crease",
        "holes",   "user data", "visibility"};
    static const char* const sChannels[17] = {"diffuse",
                                              "diffuse factor",
                                              "emissive",
                                              "emissive factor",
                                              "ambient",
                                              "ambient factor",
                                              "specular",
                                              "specular factor",
                                              "shininess",
                                              "normal map",
                                              "bump",
                                              "transparency",
                                              "transparency factor",
                                              "reflection",
                                              "reflection factor",
                                              "displacement",
                                              "vector displacement"};
    static const char* const sUVNames[17] = {"uv diffuse",
                                             "uv diffuse factor",
                                             "uv emissive",
                                             "uv emissive factor",
                                             "uv ambient",
                                             "uv ambient factor",
                                             "uv specular",
                                             "uv specular factor",
                                             "uv shininess",
                                             "uv normal map",
                                             "uv bump",
                                             "uv transparency",
                                             "uv transparency factor",
                                             "uv reflection",
                                             "uv reflection factor",
                                             "uv displacement",
                                             "uv vector displacement"};
    if (pType >= QelKind::eNormal && pType <= QelKind::eVisibility) return sNonTexture[pType - 1];
    if (pType >= QelKind::eTextureDiffuse && pType <= QelKind::eTextureVectorDisplacement)
        return (pIsUV ? sUVNames : sChannels)[pType - QelKind::eTextureDiffuse];
    return "unknown";
}

std::string QelDemoElementTable(const QelLayer& pLayer)
{
    QelTextTable lTable;
    lTable.Row({"kind", "name", "mapping", "reference", "direct", "index", "memory"});
    for (const QelLayerSlot& lSlot : Slots()) {
        const QelLayerElement* lElement = pLayer.GetLayerElementOfType(lSlot.mType, lSlot.mIsUV);
        if (!lElement) continue;
        std::string lDirect = "-";
        std::string lIndex = "-";
        VisitTyped(*lElement, [&](const auto& pTyped) {
            if (HasDirect(pTyped)) lDirect = std::to_string(pTyped.GetDirectArray().GetCount());
            if (HasIndex(pTyped)) lIndex = std::to_string(pTyped.GetIndexArray().GetCount());
        });
        lTable.Row({QelDemoKindName(lSlot.mType, lSlot.mIsUV), lElement->GetName(),
                    MappingName(lElement->GetMappingMode()),
                    ReferenceName(lElement->GetReferenceMode()), lDirect, lIndex,
                    std::to_string(lElement->MemorySize())});
    }
    return lTable.Text(4);
}

int QelDemoElementCount(const QelLayer& pLayer)
{
    int lCount = 0;
    for (const QelLayerSlot& lSlot : Slots())
        if (pLayer.GetLayerElementOfType(lSlot.mType, lSlot.mIsUV)) ++lCount;
    return lCount;
}

bool QelDemoCompareLayers(const QelLayer& pExpected, const QelLayer& pActual, bool pByAddress,
                          std::vector<std::string>& pDifferences)
{
    const size_t lBefore = pDifferences.size();
    for (const QelLayerSlot& lSlot : Slots()) {
        const QelLayerElement* lExpected =
            pExpected.GetLayerElementOfType(lSlot.mType, lSlot.mIsUV);
        const QelLayerElement* lActual = pActual.GetLayerElementOfType(lSlot.mType, lSlot.mIsUV);
        const std::string lWhat = QelDemoKindName(lSlot.mType, lSlot.mIsUV);
        if (!lExpected && !lActual) continue;
        if (!lExpected || !lActual)
            pDifferences.push_back(lWhat + (lActual ? ": unexpected" : ": missing"));
        else
            CompareElements(lWhat, *lExpected, *lActual, pByAddress, pDifferences);
    }
    return pDifferences.size() == lBefore;
}

QelDemoRoundTripResult QelDemoRoundTrip(QelObjScene& pSource, const char* pPath,
                                        QelObjScene& pReadBack)
{
    QelDemoRoundTripResult lResult;
    QelLayer* lSource = pSource.Layer();
    QelMemoryStream lStream;
    if (!lSource || !lSource->ContentWriteTo(lStream)) {
        lResult.mError = std::string(pPath) + ": cannot stream the layer";
        return lResult;
    }
    lResult.mBytes = lStream.GetSize();
    if (!QelWriteFileAtomically(pPath, lStream.GetData(), static_cast<size_t>(lStream.GetSize()),
                                lResult.mError))
        return lResult;

    const QelMesh& lMesh = pSource.Mesh();
    QelMesh& lCopy = pReadBack.Mesh();
    lCopy.SetControlPointCount(lMesh.GetControlPointsCount());
    for (int i = 0; i < lMesh.GetControlPointsCount(); ++i)
        lCopy.SetControlPointAt(lMesh.GetControlPointAt(i), i);
    std::vector<int> lVertices;
    for (int lPolygon = 0; lPolygon < lMesh.GetPolygonCount(); ++lPolygon) {
        lVertices.clear();
        for (int i = 0; i < lMesh.GetPolygonSize(lPolygon); ++i)
            lVertices.push_back(lMesh.GetPolygonVertex(lPolygon, i));
        lCopy.AddPolygon(lVertices.data(), static_cast<int>(lVertices.size()));
    }

    QelFileStream lFile(pPath, "rb");
    QelLayer* lTarget = pReadBack.Layer();
    if (!lFile.IsOpen() || !lTarget || !lTarget->ContentReadFrom(lFile)) {
        lResult.mError = std::string(pPath) + ": cannot read the layer back";
        return lResult;
    }
    lResult.mSuccess = QelDemoCompareLayers(*lSource, *lTarget, true, lResult.mDifferences);
    return lResult;
}

} // namespace qelsdk
