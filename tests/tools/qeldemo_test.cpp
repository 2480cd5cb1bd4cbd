// The demo's steps in process, and qellayer-demo itself run as a program.
#include "qeldemo.h"

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace qelsdk;

namespace {

using E = QelLayerElement;

std::string Contents(const std::string& pPath)
{
    std::ifstream lFile(pPath, std::ios::binary);
    std::ostringstream lText;
    lText << lFile.rdbuf();
    return lText.str();
}

// One run of qellayer-demo in pDirectory with pArguments (already quoted).
struct DemoRun
{
    DemoRun(const test::ScratchDirectory& pDirectory, const std::string& pArguments)
    {
        const std::string lOut = pDirectory.Path() + "/../" + Name("out");
        const std::string lErr = pDirectory.Path() + "/../" + Name("err");
        const std::string lCommand = "cd '" + pDirectory.Path() +
                                     "' && '" QELSDK_TOOL_QELLAYER_DEMO "' " + pArguments + " >'" +
                                     lOut + "' 2>'" + lErr + "'";
        const int lStatus = std::system(lCommand.c_str());
        mStatus = WIFEXITED(lStatus) ? WEXITSTATUS(lStatus) : -1;
        mOut = Contents(lOut);
        mErr = Contents(lErr);
        std::filesystem::remove(lOut);
        std::filesystem::remove(lErr);
    }
    static std::string Name(const char* pWhat)
    {
        return "qeldemo_test_" + std::to_string(::getpid()) + "." + pWhat;
    }

    int mStatus;
    std::string mOut;
    std::string mErr;
};

TEST(QelDemoBuildCube, FillsTheMeshNodeAndLayer)
{
    QelObjScene lScene("cube");
    ASSERT_TRUE(QelDemoBuildCube(lScene));
    EXPECT_EQ(lScene.Mesh().GetControlPointsCount(), 8);
    EXPECT_EQ(lScene.Mesh().GetPolygonCount(), 6);
    EXPECT_EQ(lScene.Mesh().GetPolygonVertexCount(), 24);
    ASSERT_EQ(lScene.Node().GetSrcObjectCount<QelSurfaceMaterial>(), 2);
    EXPECT_STREQ(lScene.Node().GetSrcObject<QelSurfaceMaterial>(1)->GetName(), "blue");
    QelLayer& lLayer = *lScene.Layer();
    EXPECT_EQ(QelDemoElementCount(lLayer), 9);
    EXPECT_EQ(lLayer.GetNormals()->GetDirectArray().GetAt(23), QelVector4(0, -1, 0, 0));
    EXPECT_EQ(lLayer.GetNormals()->GetReferenceMode(), E::eDirect);
    EXPECT_EQ(lLayer.GetUVs()->GetReferenceMode(), E::eIndexToDirect);
    // The material items mirror the node once a lock (here the count's) has filled them.
    ASSERT_EQ(lLayer.GetMaterials()->GetDirectArray().GetCount(), 2);
    EXPECT_EQ(lLayer.GetMaterials()->GetDirectArray().GetAt(0),
              lScene.Node().GetSrcObject<QelSurfaceMaterial>(0));
    EXPECT_EQ(lLayer.GetMaterials()->GetIndexArray().GetAt(5), 1);
    QelLayerElementTexture* lTexture = lLayer.GetTextures(E::eTextureDiffuse);
    ASSERT_NE(lTexture, nullptr);
    EXPECT_STREQ(lTexture->GetDirectArray().GetAt(0)->GetName(), "checker");
    // Every face is counter-clockwise seen from outside: its normal points the way
    // of the cross product of its first two edges.
    for (int lPolygon = 0; lPolygon < 6; ++lPolygon) {
        const QelMesh& lMesh = lScene.Mesh();
        QelVector4 lP[3];
        for (int i = 0; i < 3; ++i)
            lP[i] = lMesh.GetControlPointAt(lMesh.GetPolygonVertex(lPolygon, i));
        const double lA[3] = {lP[1][0] - lP[0][0], lP[1][1] - lP[0][1], lP[1][2] - lP[0][2]};
        const double lB[3] = {lP[2][0] - lP[1][0], lP[2][1] - lP[1][1], lP[2][2] - lP[1][2]};
        const QelVector4 lNormal = lLayer.GetNormals()->GetDirectArray().GetAt(lPolygon * 4);
        const double lDot = (lA[1] * lB[2] - lA[2] * lB[1]) * lNormal[0] +
                            (lA[2] * lB[0] - lA[0] * lB[2]) * lNormal[1] +
                            (lA[0] * lB[1] - lA[1] * lB[0]) * lNormal[2];
        EXPECT_GT(lDot, 0) << "polygon " << lPolygon;
    }
}

const char* const sCubeTable =
    "kind            name        mapping             reference        direct  index  memory\n"
    "normals         normals     per polygon vertex  direct               24      -     768\n"
    "materials       materials   per polygon         index to direct       2      6      40\n"
    "polygon groups  groups      per polygon         direct                6      -      24\n"
    "colors          colors      by control point    direct                8      -     256\n"
    "smoothing       smoothing   per polygon         direct                6      -      24\n"
    "edge crease     creases     by edge             direct               12      -      96\n"
    "visibility      visibility  by edge             direct               12      -      12\n"
    "uv diffuse      diffuse     per polygon vertex  index to direct       4     24     160\n"
    "diffuse         checker     all same            index to direct       1      1      24\n";

TEST(QelDemoElementTable, AlignsOneRowPerElement)
{
    QelObjScene lScene("cube");
    ASSERT_TRUE(QelDemoBuildCube(lScene));
    EXPECT_EQ(QelDemoElementTable(*lScene.Layer()), sCubeTable);
}

TEST(QelDemoRoundTrip, ReadsEveryElementBackIntoAFreshMesh)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    const std::string lPath = lDirectory.File("layer.bin");
    QelObjScene lSource("cube");
    ASSERT_TRUE(QelDemoBuildCube(lSource));
    QelObjScene lReadBack("read back");
    const QelDemoRoundTripResult lResult = QelDemoRoundTrip(lSource, lPath.c_str(), lReadBack);
    EXPECT_TRUE(lResult.mSuccess);
    EXPECT_EQ(lResult.mError, "");
    EXPECT_EQ(lResult.mDifferences, std::vector<std::string>{});
    QelMemoryStream lStream;
    ASSERT_TRUE(lSource.Layer()->ContentWriteTo(lStream));
    EXPECT_EQ(lResult.mBytes, lStream.GetSize());
    EXPECT_EQ(Contents(lPath), std::string(lStream.GetData(), lStream.GetSize()));
    EXPECT_EQ(lDirectory.Files(), std::vector<std::string>{"layer.bin"});
    // The fresh node has taken on the very materials of the original.
    ASSERT_EQ(lReadBack.Node().GetSrcObjectCount<QelSurfaceMaterial>(), 2);
    EXPECT_EQ(lReadBack.Node().GetSrcObject<QelSurfaceMaterial>(0), lSource.GetMaterial(0));
    EXPECT_EQ(lReadBack.Node().GetSrcObject<QelSurfaceMaterial>(1), lSource.GetMaterial(1));
    EXPECT_EQ(lReadBack.Mesh().GetPolygonVertexCount(), 24);
}

TEST(QelDemoRoundTrip, ReportsAnUnwritableFile)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    const std::string lPath = lDirectory.File("no/layer.bin");
    QelObjScene lSource("cube");
    ASSERT_TRUE(QelDemoBuildCube(lSource));
    QelObjScene lReadBack("read back");
    const QelDemoRoundTripResult lResult = QelDemoRoundTrip(lSource, lPath.c_str(), lReadBack);
    EXPECT_FALSE(lResult.mSuccess);
    EXPECT_EQ(lResult.mError, lPath + ": cannot write: No such file or directory");
    EXPECT_EQ(lDirectory.Files(), std::vector<std::string>{});
}

TEST(QelDemoCompareLayers, NamesEachDifference)
{
    QelObjScene lA("a");
    QelObjScene lB("b");
    ASSERT_TRUE(QelDemoBuildCube(lA));
    ASSERT_TRUE(QelDemoBuildCube(lB));
    std::vector<std::string> lDifferences;
    EXPECT_TRUE(QelDemoCompareLayers(*lA.Layer(), *lB.Layer(), false, lDifferences));
    EXPECT_FALSE(QelDemoCompareLayers(*lA.Layer(), *lB.Layer(), true, lDifferences));
    EXPECT_EQ(lDifferences, (std::vector<std::string>{"materials direct: item 0 differs",
                                                      "diffuse direct: item 0 differs"}));

    lDifferences.clear();
    lB.Layer()->GetNormals()->GetDirectArray().SetAt(3, QelVector4(0, 0, 1, 1));
    lB.Layer()->GetSmoothing()->SetName("other");
    lB.Layer()->GetEdgeCrease()->GetDirectArray().Add(0.5);
    lB.Layer()->GetVisibility()->SetMappingMode(E::ePerPolygon);
    lB.Layer()->SetHole(QelLayerElementHole::Create(&lB.Mesh(), "holes"));
    EXPECT_FALSE(QelDemoCompareLayers(*lA.Layer(), *lB.Layer(), false, lDifferences));
    EXPECT_EQ(lDifferences,
              (std::vector<std::string>{"normals direct: item 3 differs",
                                        "smoothing: name 'other', not 'smoothing'",
                                        "edge crease direct: 13 items, not 12", "holes: unexpected",
                                        "visibility: mapping differs"}));
}

TEST(QelLayerDemo, DefaultCubePrintsTheTableAndRoundTrips)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    const DemoRun lRun(lDirectory, "");
    QelObjScene lCube("cube");
    ASSERT_TRUE(QelDemoBuildCube(lCube));
    QelMemoryStream lStream;
    ASSERT_TRUE(lCube.Layer()->ContentWriteTo(lStream));
    EXPECT_EQ(lRun.mStatus, 0);
    EXPECT_EQ(lRun.mErr, "");
    EXPECT_EQ(lRun.mOut, std::string("default cube: 8 control points, 6 polygons, 24 polygon "
                                     "vertices, 2 materials\n\n") +
                             sCubeTable + "\nlayer stream: " + std::to_string(lStream.GetSize()) +
                             " bytes written to layer.bin and read back\n"
                             "round trip: OK (9 elements)\n");
    EXPECT_EQ(lDirectory.Files(), std::vector<std::string>{"layer.bin"});
}

TEST(QelLayerDemo, ImportsExportsAndImportsAgain)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    std::ofstream(lDirectory.File("in.obj"))
        << "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 1\nvn 0 0 1\n"
           "g a\nusemtl m\ns 1\nf 1/1/1 2/2/1 3/1/1 4/2/1\nvp 1\n";
    const DemoRun lFirst(lDirectory, "-o first.bin -e out.obj in.obj");
    EXPECT_EQ(lFirst.mStatus, 0) << lFirst.mErr;
    EXPECT_EQ(lFirst.mErr, "");
    EXPECT_NE(lFirst.mOut.find("in.obj: 1 statement(s) skipped\n"), std::string::npos);
    EXPECT_NE(lFirst.mOut.find("round trip: OK (5 elements)\nOBJ written to out.obj\n"),
              std::string::npos);
    const std::string lExported = Contents(lDirectory.File("out.obj"));
    EXPECT_EQ(lExported, "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 1\nvn 0 0 1\n"
                         "g group0\nusemtl m\ns 1\nf 1/1/1 2/2/1 3/1/1 4/2/1\n");

    const DemoRun lSecond(lDirectory, "-o second.bin -e again.obj out.obj");
    EXPECT_EQ(lSecond.mStatus, 0) << lSecond.mErr;
    EXPECT_EQ(Contents(lDirectory.File("again.obj")), lExported);
    EXPECT_EQ(lDirectory.Files(), (std::vector<std::string>{"again.obj", "first.bin", "in.obj",
                                                            "out.obj", "second.bin"}));
}

TEST(QelLayerDemo, ComputesNormalsForAFileWithout)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    std::ofstream(lDirectory.File("in.obj")) << "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n";
    const DemoRun lRun(lDirectory, "-e out.obj in.obj");
    EXPECT_EQ(lRun.mStatus, 0) << lRun.mErr;
    EXPECT_EQ(lRun.mErr, "");
    EXPECT_NE(lRun.mOut.find("in.obj: no normals in the file; computed per polygon vertex\n"),
              std::string::npos);
    EXPECT_EQ(Contents(lDirectory.File("out.obj")),
              "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
              "vn 0 0 1\nvn 0 0 1\nvn 0 0 1\nvn 0 0 1\nf 1//1 2//2 3//3 4//4\n");
}

TEST(QelLayerDemo, MissingMaterialLibraryIsOnlyAWarning)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    std::ofstream(lDirectory.File("in.obj"))
        << "mtllib lost.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    const DemoRun lRun(lDirectory, "in.obj");
    EXPECT_EQ(lRun.mStatus, 0);
    EXPECT_EQ(lRun.mErr, "in.obj:1: material library 'lost.mtl' not found: warning\n");
}

// Each malformed input: one line on stderr, nothing on stdout, status 1 and no file.
TEST(QelLayerDemo, MalformedInputFailsWithOneLineAndNoOutputFile)
{
    struct Case
    {
        std::string mText;
        std::string mError;
    };
    const std::string lSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
    const std::vector<Case> lCases = {
        {lSquare + "v 1 2 three\n", "in.obj:4: bad number 'three'"},
        {lSquare + "f 1 2 4\n", "in.obj:4: vertex index 4 out of range (3 vertices)"},
        {lSquare + "f 1 0 2\n", "in.obj:4: vertex index 0 is invalid (indices start at 1)"},
        {lSquare + "f 1 2\n", "in.obj:4: face with 2 vertices (at least 3 needed)"},
        {"", "in.obj: empty file"},
        {std::string("\x89PNG\r\n\x1a\n\0\0", 10), "in.obj:2: binary data (byte 26), not an OBJ "
                                                   "text file"}};
    for (const Case& lCase : lCases) {
        test::ScratchDirectory lDirectory("qeldemo_test");
        std::ofstream(lDirectory.File("in.obj"), std::ios::binary) << lCase.mText;
        const DemoRun lRun(lDirectory, "-o layer.bin -e out.obj in.obj");
        EXPECT_EQ(lRun.mStatus, 1) << lCase.mError;
        EXPECT_EQ(lRun.mErr, lCase.mError + "\n");
        EXPECT_EQ(lRun.mOut, "");
        EXPECT_EQ(lDirectory.Files(), std::vector<std::string>{"in.obj"});
    }
}

TEST(QelLayerDemo, MissingFileFailsWithStatusOne)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    const DemoRun lRun(lDirectory, "absent.obj");
    EXPECT_EQ(lRun.mStatus, 1);
    EXPECT_EQ(lRun.mErr, "absent.obj: cannot open: No such file or directory\n");
    EXPECT_EQ(lDirectory.Files(), std::vector<std::string>{});
}

TEST(QelLayerDemo, UnwritableStreamFileFailsWithStatusOne)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    const DemoRun lRun(lDirectory, "-o no/layer.bin");
    EXPECT_EQ(lRun.mStatus, 1);
    EXPECT_EQ(lRun.mErr, "no/layer.bin: cannot write: No such file or directory\n");
    EXPECT_EQ(lDirectory.Files(), std::vector<std::string>{});
}

TEST(QelLayerDemo, BadArgumentsGiveUsageAndStatusTwo)
{
    test::ScratchDirectory lDirectory("qeldemo_test");
    for (const char* lArguments : {"-x", "-o", "a.obj b.obj"}) {
        const DemoRun lRun(lDirectory, lArguments);
        EXPECT_EQ(lRun.mStatus, 2) << lArguments;
        EXPECT_EQ(lRun.mErr, "usage: qellayer-demo [-o LAYER.bin] [-e EXPORT.obj] [INPUT.obj]\n");
    }
}

} // namespace
