// qellayer-demo: builds the default cube (or imports an OBJ file), prints the
// elements of its layer, streams the layer to a file and reads it back into a fresh
// mesh, and checks that every element survives. Exit status 0 only then.
//
//   qellayer-demo [-o LAYER.bin] [-e EXPORT.obj] [INPUT.obj]
#include "qeldemo.h"

#include <cstdio>
#include <cstring>

using namespace qelsdk;

namespace {

struct QelDemoOptions
{
    const char* mInput = nullptr;
    const char* mStreamPath = "layer.bin";
    const char* mExportPath = nullptr;
};

bool ParseArguments(int pCount, char** pArguments, QelDemoOptions& pOptions)
{
    for (int i = 1; i < pCount; ++i) {
        const char* lArgument = pArguments[i];
        const bool lTakesValue = !std::strcmp(lArgument, "-o") || !std::strcmp(lArgument, "-e");
        if (lTakesValue && i + 1 < pCount)
            (lArgument[1] == 'o' ? pOptions.mStreamPath : pOptions.mExportPath) = pArguments[++i];
        else if (lArgument[0] != '-' && !pOptions.mInput)
            pOptions.mInput = lArgument;
        else
            return false;
    }
    return true;
}

// A file without vn statements gets angle-weighted normals per polygon vertex, split
// where its smoothing groups part, so that every imported mesh shows normals.
bool ComputeMissingNormals(const char* pInput, QelObjScene& pScene)
{
    if (pScene.Layer()->GetNormals()) return true;
    const EQelLayerUtilStatus lStatus =
        QelComputeNormals(pScene.Mesh(), 0, QelLayerElement::ePerPolygonVertex);
    if (lStatus != eQelUtilOk) {
        std::fprintf(stderr, "%s: cannot compute normals (status %d)\n", pInput, lStatus);
        return false;
    }
    std::printf("%s: no normals in the file; computed per polygon vertex\n", pInput);
    return true;
}

bool Load(const QelDemoOptions& pOptions, QelObjScene& pScene)
{
    if (!pOptions.mInput) {
        if (QelDemoBuildCube(pScene)) return true;
        std::fprintf(stderr, "qellayer-demo: cannot build the default cube\n");
        return false;
    }
    const QelObjResult lResult = QelObjReadFile(pOptions.mInput, pScene);
    for (const std::string& lWarning : lResult.mWarnings)
        std::fprintf(stderr, "%s: warning\n", lWarning.c_str());
    if (!lResult.mSuccess) {
        std::fprintf(stderr, "%s\n", lResult.mError.c_str());
        return false;
    }
    if (lResult.mSkippedStatements)
        std::printf("%s: %d statement(s) skipped\n", pOptions.mInput, lResult.mSkippedStatements);
    return ComputeMissingNormals(pOptions.mInput, pScene);
}

} // namespace

int main(int argc, char** argv)
{
    QelDemoOptions lOptions;
    if (!ParseArguments(argc, argv, lOptions)) {
        std::fprintf(stderr, "usage: qellayer-demo [-o LAYER.bin] [-e EXPORT.obj] [INPUT.obj]\n");
        return 2;
    }
    QelObjScene lSource(lOptions.mInput ? lOptions.mInput : "cube");
    if (!Load(lOptions, lSource)) return 1;
    const QelMesh& lMesh = lSource.Mesh();
    std::printf("%s: %d control points, %d polygons, %d polygon vertices, %d materials\n\n",
                lOptions.mInput ? lOptions.mInput : "default cube", lMesh.GetControlPointsCount(),
                lMesh.GetPolygonCount(), lMesh.GetPolygonVertexCount(), lSource.GetMaterialCount());
    std::fputs(QelDemoElementTable(*lSource.Layer()).c_str(), stdout);

    QelObjScene lReadBack("read back");
    const QelDemoRoundTripResult lRoundTrip =
        QelDemoRoundTrip(lSource, lOptions.mStreamPath, lReadBack);
    if (!lRoundTrip.mError.empty()) {
        std::fprintf(stderr, "%s\n", lRoundTrip.mError.c_str());
        return 1;
    }
    std::printf("\nlayer stream: %d bytes written to %s and read back\n", lRoundTrip.mBytes,
                lOptions.mStreamPath);
    for (const std::string& lDifference : lRoundTrip.mDifferences)
        std::printf("  differs: %s\n", lDifference.c_str());
    std::printf("round trip: %s (%d elements)\n", lRoundTrip.mSuccess ? "OK" : "FAILED",
                QelDemoElementCount(*lSource.Layer()));
    if (!lRoundTrip.mSuccess) return 1;

    if (lOptions.mExportPath) {
        std::string lError;
        if (!QelObjWriteFile(lReadBack.Mesh(), *lReadBack.Layer(), lOptions.mExportPath, lError)) {
            std::fprintf(stderr, "%s\n", lError.c_str());
            return 1;
        }
        std::printf("OBJ written to %s\n", lOptions.mExportPath);
    }
    return 0;
}
