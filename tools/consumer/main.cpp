// A consumer of the installed package: builds a layer with a normal element, writes
// its content stream and checks the stream's size, so that headers, library and the
// element kinds' instantiations all have to be found and linked.
#include <qelsdk/qelsdk.h>

#include <cstdio>

int main()
{
    using namespace qelsdk;
    QelMesh lMesh("consumer");
    QelLayer* lLayer = lMesh.GetLayer(lMesh.CreateLayer());
    auto* lNormals = static_cast<QelLayerElementNormal*>(
        lLayer->CreateLayerElementOfType(QelLayerElement::eNormal));
    if (!lNormals) return 1;
    lNormals->SetName("normals");
    lNormals->GetDirectArray().Add(QelVector4(0, 0, 1, 0));
    lNormals->GetDirectArray().Add(QelVector4(0, 1, 0, 0));

    QelMemoryStream lStream;
    if (!lLayer->ContentWriteTo(lStream)) return 1;
    // 47 records of a type and a presence byte, then the normal element's content:
    // two counts, two QelVector4 items, two modes, the name's length and its bytes.
    const int lEmptyRecords = 47 * (4 + 1);
    const int lNormalContent = 4 + 2 * 32 + 4 + 4 + 4 + 4 + 7;
    const int lExpected = lEmptyRecords + lNormalContent;
    std::printf("consumer: layer stream of %d bytes, %d expected\n", lStream.GetSize(), lExpected);
    return lStream.GetSize() == lExpected ? 0 : 1;
}
