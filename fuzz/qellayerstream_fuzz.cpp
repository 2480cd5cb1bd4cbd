// The layer's content reader on arbitrary bytes, into a fresh layer and into a layer
// that already holds an element of every kind the reader may fill. User data and a
// material element bound to a node are left out: their pointer items are taken back
// as live addresses by design. Whatever was read is then written, cloned and cleared.
#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qelmesh.h>

#include "qelfuzzsupport.h"

#include <cstddef>
#include <cstdint>

using namespace qelsdk;

namespace {

typedef QelLayerElement Element;

// Creates every element but user data and the shared eUV slot, each with a few
// items and indices.
void Populate(QelLayer& pLayer)
{
    for (int lKind = Element::eNormal; lKind <= Element::eTextureVectorDisplacement; ++lKind) {
        if (lKind == Element::eUV || lKind == Element::eUserData) continue;
        const auto lType = static_cast<Element::EType>(lKind);
        for (bool lIsUV : {false, true}) {
            if (lIsUV && lKind < Element::eTextureDiffuse) continue;
            QelLayerElement* lElement = pLayer.CreateLayerElementOfType(lType, lIsUV);
            if (!lElement) continue;
            lElement->SetName("seeded");
        }
    }
    if (QelLayerElementNormal* lNormals = pLayer.GetNormals()) {
        lNormals->GetDirectArray().Add(QelVector4(0, 0, 1, 0));
        lNormals->GetIndexArray().Add(0);
    }
    if (QelLayerElementHole* lHoles = pLayer.GetHole()) lHoles->GetDirectArray().Add(true);
}

// Reads the stream into pLayer, then exercises what the reader left: the writer,
// the memory figure, a clone and a clear.
void ReadAndUse(const uint8_t* pData, size_t pSize, bool pPopulated)
{
    QelMesh lMesh("fuzz");
    if (lMesh.CreateLayer() < 0 || lMesh.CreateLayer() < 0) return;
    QelLayer& lLayer = *lMesh.GetLayer(0);
    if (pPopulated) Populate(lLayer);
    QelMemoryStream lInput(pData, static_cast<int>(pSize));
    lLayer.ContentReadFrom(lInput);
    QelMemoryStream lOutput;
    lLayer.ContentWriteTo(lOutput);
    (void)lLayer.MemoryUsage();
    lMesh.GetLayer(1)->Clone(lLayer);
    lLayer.Clear();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::QelInstallFuzzHandlers(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    if (pSize > (size_t(1) << 20)) return 0;
    ReadAndUse(pData, pSize, false);
    ReadAndUse(pData, pSize, true);
    return 0;
}
