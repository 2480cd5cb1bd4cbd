// The OBJ reader and writer on texts the tests write themselves.
#include "qeldemo.h"
#include "qelobj.h"

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>


using namespace qelsdk;

namespace {

using E = QelLayerElement;

// Reads pText as the file "in.obj" into a scene of its own.
struct Import
{
    explicit Import(const std::string& pText, const char* pName = "in.obj")
        : mResult(QelObjRead(pText.data(), pText.size(), pName, mScene))
    {
    }

    QelLayer& Layer() { return *mScene.Layer(); }
    QelMesh& Mesh() { return mScene.Mesh(); }

    QelObjScene mScene;
    QelObjResult mResult;
};

template <class T> std::vector<T> Items(const QelLayerElementArrayTemplate<T>& pArray)
{
    std::vector<T> lItems;
    for (int i = 0; i < pArray.GetCount(); ++i)
        lItems.push_back(pArray.GetAt(i));
    return lItems;
}

std::vector<int> Polygon(const QelMesh& pMesh, int pPolygon)
{
    std::vector<int> lVertices;
    for (int i = 0; i < pMesh.GetPolygonSize(pPolygon); ++i)
        lVertices.push_back(pMesh.GetPolygonVertex(pPolygon, i));
    return lVertices;
}

const char* const sSquare = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
const char* const sSquareUVs = "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n";
const char* const sSquareNormals = "vn 0 0 1\nvn 0 0 -1\n";

TEST(QelObjRead, PlainFacesGiveGeometryAndNoElements)
{
    Import lImport(std::string(sSquare) + "f 1 2 3 4\nf 4 3 2\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    EXPECT_EQ(lImport.mResult.mError, "");
    EXPECT_EQ(lImport.mResult.mSkippedStatements, 0);
    EXPECT_EQ(lImport.mResult.GetWarningCount(), 0);
    ASSERT_EQ(lImport.Mesh().GetControlPointsCount(), 4);
    EXPECT_EQ(lImport.Mesh().GetControlPointAt(2), QelVector4(1, 1, 0, 1));
    ASSERT_EQ(lImport.Mesh().GetPolygonCount(), 2);
    EXPECT_EQ(Polygon(lImport.Mesh(), 0), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(Polygon(lImport.Mesh(), 1), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(QelDemoElementCount(lImport.Layer()), 0);
    EXPECT_EQ(lImport.mScene.GetMaterialCount(), 0);
}

TEST(QelObjRead, TextureCoordinateFormGivesAnIndexedDiffuseUVSet)
{
    Import lImport(std::string(sSquare) + sSquareUVs + "f 1/4 2/3 3/2 4/1\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    QelLayerElementUV* lUVs = lImport.Layer().GetUVs();
    ASSERT_NE(lUVs, nullptr);
    EXPECT_EQ(lImport.Layer().GetLayerElementOfType(E::eUV), lUVs);
    EXPECT_STREQ(lUVs->GetName(), "diffuse");
    EXPECT_EQ(lUVs->GetMappingMode(), E::ePerPolygonVertex);
    EXPECT_EQ(lUVs->GetReferenceMode(), E::eIndexToDirect);
    EXPECT_EQ(Items(lUVs->GetDirectArray()),
              (std::vector<QelVector2>{{0, 0}, {1, 0}, {1, 1}, {0, 1}}));
    EXPECT_EQ(Items(lUVs->GetIndexArray()), (std::vector<int>{3, 2, 1, 0}));
    EXPECT_EQ(lImport.Layer().GetNormals(), nullptr);
}

TEST(QelObjRead, NormalFormGivesIndexedNormals)
{
    Import lImport(std::string(sSquare) + sSquareNormals + "f 1//1 2//1 3//2\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    QelLayerElementNormal* lNormals = lImport.Layer().GetNormals();
    ASSERT_NE(lNormals, nullptr);
    EXPECT_STREQ(lNormals->GetName(), "normals");
    EXPECT_EQ(lNormals->GetMappingMode(), E::ePerPolygonVertex);
    EXPECT_EQ(lNormals->GetReferenceMode(), E::eIndexToDirect);
    EXPECT_EQ(Items(lNormals->GetDirectArray()),
              (std::vector<QelVector4>{{0, 0, 1, 0}, {0, 0, -1, 0}}));
    EXPECT_EQ(Items(lNormals->GetIndexArray()), (std::vector<int>{0, 0, 1}));
    EXPECT_EQ(lImport.Layer().GetUVs(), nullptr);
}

TEST(QelObjRead, FullFormGivesBothElements)
{
    Import lImport(std::string(sSquare) + sSquareUVs + sSquareNormals + "f 1/1/2 2/2/2 3/3/1\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    ASSERT_NE(lImport.Layer().GetUVs(), nullptr);
    ASSERT_NE(lImport.Layer().GetNormals(), nullptr);
    EXPECT_EQ(Items(lImport.Layer().GetUVs()->GetIndexArray()), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Items(lImport.Layer().GetNormals()->GetIndexArray()), (std::vector<int>{1, 1, 0}));
}

TEST(QelObjRead, NegativeIndicesCountBackFromWhatIsReadSoFar)
{
    Import lImport("v 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0.5 0.25\nvn 0 1 0\nf -3/-1/-1 -2/1/1 -1/-1/1\n"
                   "v 5 5 5\nvt 1 1\nf -4/-2/-1 -1/-1/-1 -2/-2/-1\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    EXPECT_EQ(Polygon(lImport.Mesh(), 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Polygon(lImport.Mesh(), 1), (std::vector<int>{0, 3, 2}));
    EXPECT_EQ(Items(lImport.Layer().GetUVs()->GetIndexArray()),
              (std::vector<int>{0, 0, 0, 0, 1, 0}));
    EXPECT_EQ(Items(lImport.Layer().GetNormals()->GetIndexArray()),
              (std::vector<int>{0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(lImport.Layer().GetUVs()->GetDirectArray().GetAt(0), QelVector2(0.5, 0.25));
}

TEST(QelObjRead, PolygonsOfAnySize)
{
    Import lImport("v 0 0 0\nv 1 0 0\nv 2 1 0\nv 1 2 0\nv 0 2 0\nv -1 1 0\n"
                   "f 1 2 3 4 5 6\nf 1 2 3 4 5\nf 6 5 4\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    ASSERT_EQ(lImport.Mesh().GetPolygonCount(), 3);
    EXPECT_EQ(lImport.Mesh().GetPolygonSize(0), 6);
    EXPECT_EQ(lImport.Mesh().GetPolygonSize(1), 5);
    EXPECT_EQ(Polygon(lImport.Mesh(), 2), (std::vector<int>{5, 4, 3}));
    EXPECT_EQ(lImport.Mesh().GetPolygonVertexCount(), 14);
}

TEST(QelObjRead, UsemtlGivesNodeMaterialsInOrderOfFirstUse)
{
    Import lImport(std::string(sSquare) +
                   "f 1 2 3\nusemtl wood\nf 1 2 3\nusemtl unused\nusemtl steel\nf 2 3 4\n"
                   "usemtl wood\nf 1 3 4\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    QelNode& lNode = lImport.mScene.Node();
    ASSERT_EQ(lNode.GetSrcObjectCount<QelSurfaceMaterial>(), 3);
    EXPECT_STREQ(lNode.GetSrcObject<QelSurfaceMaterial>(0)->GetName(), "default");
    EXPECT_STREQ(lNode.GetSrcObject<QelSurfaceMaterial>(1)->GetName(), "wood");
    EXPECT_STREQ(lNode.GetSrcObject<QelSurfaceMaterial>(2)->GetName(), "steel");
    QelLayerElementMaterial* lMaterials = lImport.Layer().GetMaterials();
    ASSERT_NE(lMaterials, nullptr);
    EXPECT_EQ(lMaterials->GetMappingMode(), E::ePerPolygon);
    EXPECT_EQ(lMaterials->GetReferenceMode(), E::eIndexToDirect);
    EXPECT_EQ(Items(lMaterials->GetIndexArray()), (std::vector<int>{0, 1, 2, 1}));
    EXPECT_EQ(Items(lMaterials->GetDirectArray()),
              (std::vector<QelSurfaceMaterial*>{lImport.mScene.GetMaterial(0),
                                                lImport.mScene.GetMaterial(1),
                                                lImport.mScene.GetMaterial(2)}));
}

TEST(QelObjRead, GroupsAndObjectsNumberPolygonsInOrderOfFirstUse)
{
    Import lImport(
        std::string(sSquare) +
        "f 1 2 3\ng top part\nf 1 2 3\no body\nf 2 3 4\ng top part\nf 1 3 4\ng\nf 1 2 4\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    QelLayerElementPolygonGroup* lGroups = lImport.Layer().GetPolygonGroups();
    ASSERT_NE(lGroups, nullptr);
    EXPECT_STREQ(lGroups->GetName(), "groups");
    EXPECT_EQ(lGroups->GetMappingMode(), E::ePerPolygon);
    EXPECT_EQ(lGroups->GetReferenceMode(), E::eDirect);
    EXPECT_EQ(Items(lGroups->GetDirectArray()), (std::vector<int>{0, 1, 2, 1, 0}));
    EXPECT_EQ(lImport.Layer().GetMaterials(), nullptr);
    EXPECT_EQ(lImport.Layer().GetSmoothing(), nullptr);
}

TEST(QelObjRead, SmoothingTakesOffZeroAndNumbers)
{
    Import lImport(std::string(sSquare) +
                   "f 1 2 3\ns 4\nf 1 2 3\ns off\nf 2 3 4\ns 2\nf 1 3 4\ns 0\nf 1 2 4\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    QelLayerElementSmoothing* lSmoothing = lImport.Layer().GetSmoothing();
    ASSERT_NE(lSmoothing, nullptr);
    EXPECT_EQ(lSmoothing->GetMappingMode(), E::ePerPolygon);
    EXPECT_EQ(lSmoothing->GetReferenceMode(), E::eDirect);
    EXPECT_EQ(Items(lSmoothing->GetDirectArray()), (std::vector<int>{0, 4, 0, 2, 0}));
}

TEST(QelObjRead, MissingMaterialLibraryIsAWarning)
{
    test::ScratchDirectory lDirectory("qelobj_test");
    std::ofstream(lDirectory.File("there.mtl")) << "newmtl a\n";
    const std::string lPath = lDirectory.File("in.obj");
    Import lImport(std::string("mtllib there.mtl\n") + sSquare + "mtllib gone.mtl\nf 1 2 3\n",
                   lPath.c_str());
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    EXPECT_EQ(lImport.mResult.mWarnings,
              std::vector<std::string>{lPath + ":6: material library 'gone.mtl' not found"});
    EXPECT_EQ(lImport.mResult.mSkippedStatements, 0);
}

TEST(QelObjRead, UnknownStatementsAreSkippedAndCounted)
{
    Import lImport(std::string("# a comment\n\n   \ncstype bezier\n") + sSquare +
                   "l 1 2\np 3\nvp 0.5\nf 1 2 3\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    EXPECT_EQ(lImport.mResult.mSkippedStatements, 4);
    EXPECT_EQ(lImport.Mesh().GetPolygonCount(), 1);
}

TEST(QelObjRead, AcceptsCarriageReturnsSignsWeightsAndColours)
{
    Import lImport("v +1 -2 3e1 1\r\nv 0 0 0 0.5 0.5 0.5\r\nv 1 1 1\r\nf 1 2 3\r\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    EXPECT_EQ(lImport.Mesh().GetControlPointAt(0), QelVector4(1, -2, 30, 1));
    EXPECT_EQ(lImport.Mesh().GetPolygonCount(), 1);
}

// The first error of a text, with the scene as it was.
std::string ErrorOf(const std::string& pText)
{
    Import lImport(pText, "bad.obj");
    EXPECT_FALSE(lImport.mResult.mSuccess);
    EXPECT_EQ(lImport.Mesh().GetControlPointsCount(), 0);
    EXPECT_EQ(lImport.Mesh().GetPolygonCount(), 0);
    EXPECT_EQ(lImport.Mesh().GetLayerCount(), 0);
    EXPECT_EQ(lImport.mScene.GetMaterialCount(), 0);
    return lImport.mResult.mError;
}

TEST(QelObjRead, MalformedInputGivesOneErrorNamingFileAndLine)
{
    EXPECT_EQ(ErrorOf("v 1 2 3\nv 1 x2 3\n"), "bad.obj:2: bad number 'x2'");
    EXPECT_EQ(ErrorOf("v 1 2 3\nvt 1..5\n"), "bad.obj:2: bad number '1..5'");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1 2 3a\n"), "bad.obj:5: bad number '3a'");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "s smooth\n"), "bad.obj:5: bad number 'smooth'");
    EXPECT_EQ(ErrorOf("v 1 2\n"), "bad.obj:1: v needs 3 to 7 numbers, not 2");
    EXPECT_EQ(ErrorOf("v 1 2 3 4 5 6 7 8\n"), "bad.obj:1: v needs 3 to 7 numbers, not 8");
    EXPECT_EQ(ErrorOf("vt\n"), "bad.obj:1: vt needs 1 to 3 numbers, not 0");
    EXPECT_EQ(ErrorOf("vt 1 2 3 4\n"), "bad.obj:1: vt needs 1 to 3 numbers, not 4");
    EXPECT_EQ(ErrorOf("vn 1 2 3 4\n"), "bad.obj:1: vn needs 3 numbers, not 4");
    EXPECT_EQ(ErrorOf("vn 1 2\n"), "bad.obj:1: vn needs 3 numbers, not 2");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1 2 5\n"),
              "bad.obj:5: vertex index 5 out of range (4 vertices)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1 2 -5\n"),
              "bad.obj:5: vertex index -5 out of range (4 vertices)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "vt 0 0\nf 1/1 2/2 3/1\n"),
              "bad.obj:6: texture coordinate index 2 out of range (1 texture coordinates)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1//1 2//1 3//1\n"),
              "bad.obj:5: normal index 1 out of range (0 normals)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 0 1 2\n"),
              "bad.obj:5: vertex index 0 is invalid (indices start at 1)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1 2\n"),
              "bad.obj:5: face with 2 vertices (at least 3 needed)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f\n"),
              "bad.obj:5: face with 0 vertices (at least 3 needed)");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + sSquareUVs + "f 1/1 2/2 3\n"),
              "bad.obj:9: face vertex '3' lacks a texture coordinate index, unlike the first "
              "face vertex");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1 2 3/1\n"),
              "bad.obj:5: face vertex '3/1' has a texture coordinate index, unlike the first "
              "face vertex");
    EXPECT_EQ(ErrorOf(std::string(sSquare) + "f 1 2 99999999999\n"),
              "bad.obj:5: bad number '99999999999'");
}

TEST(QelObjRead, EmptyAndBinaryInputAreErrors)
{
    EXPECT_EQ(ErrorOf(""), "bad.obj: empty file");
    EXPECT_EQ(ErrorOf("# nothing but a comment\n\n"), "bad.obj: empty file");
    EXPECT_EQ(ErrorOf("g alone\n"), "bad.obj: no vertices");
    EXPECT_EQ(ErrorOf(std::string("v 1 2 3\nv 1 \0 3\n", 16)),
              "bad.obj:2: binary data (byte 0), not an OBJ text file");
    EXPECT_EQ(ErrorOf("\x7f"
                      "ELF\x02\x01\x01"),
              "bad.obj:1: binary data (byte 127), not an OBJ "
              "text file");
}

TEST(QelObjReadFile, MissingFileIsAnError)
{
    test::ScratchDirectory lDirectory("qelobj_test");
    const std::string lPath = lDirectory.File("absent.obj");
    QelObjScene lScene;
    const QelObjResult lResult = QelObjReadFile(lPath.c_str(), lScene);
    EXPECT_FALSE(lResult.mSuccess);
    EXPECT_EQ(lResult.mError, lPath + ": cannot open: No such file or directory");
}

TEST(QelObjReadFile, ReadsTheFile)
{
    test::ScratchDirectory lDirectory("qelobj_test");
    const std::string lPath = lDirectory.File("square.obj");
    std::ofstream(lPath) << sSquare << "f 1 2 3 4\nbevel on\n";
    QelObjScene lScene;
    const QelObjResult lResult = QelObjReadFile(lPath.c_str(), lScene);
    ASSERT_TRUE(lResult.mSuccess) << lResult.mError;
    EXPECT_EQ(lResult.mSkippedStatements, 1);
    EXPECT_EQ(lScene.Mesh().GetPolygonCount(), 1);
}

const char* const sEverything = "mtllib scene.mtl\n"
                                "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 0.5 1\n"
                                "vt 0 0\nvt 1 0\nvt 0.1 0.7\n"
                                "vn 0 0 -1\nvn 0 0.7071 0.7071\n"
                                "o pyramid\nusemtl base\ns off\n"
                                "f 4/1/1 3/2/1 2/3/1 1/1/1\n"
                                "g sides\nusemtl paint\ns 3\n"
                                "f 1/1/2 2/2/2 5/3/2\nf -4/-3/-1 -3/-2/-1 -1/-1/-1\n"
                                "usemtl base\nf 3/1/2 4/2/2 5/3/2\n"
                                "g pyramid\ns 1\nf 4/1/2 1/2/2 5/3/2\n";

// Mutations of a valid file, from a fixed seed: each either imports or fails with
// one line naming the file, and never leaves anything half made.
TEST(QelObjRead, MutatedInputEitherImportsOrFailsCleanly)
{
    std::mt19937 lRandom(12345);
    const std::string lValid = sEverything;
    int lFailures = 0;
    for (int lRound = 0; lRound < 3000; ++lRound) {
        std::string lText = lValid;
        const int lEdits = 1 + static_cast<int>(lRandom() % 4);
        for (int i = 0; i < lEdits; ++i) {
            const size_t lAt = lRandom() % lText.size();
            switch (lRandom() % 3) {
            case 0:
                lText[lAt] = static_cast<char>(lRandom() % 256);
                break;
            case 1:
                lText.erase(lAt, 1 + lRandom() % 8);
                break;
            default:
                lText.insert(lAt, 1, "/-0123456789 \nfvgs#"[lRandom() % 20]);
                break;
            }
            if (lText.empty()) lText = "v";
        }
        Import lImport(lText, "m.obj");
        if (lImport.mResult.mSuccess) {
            EXPECT_EQ(lImport.mResult.mError, "");
            EXPECT_GT(lImport.Mesh().GetControlPointsCount(), 0);
            continue;
        }
        ++lFailures;
        EXPECT_EQ(lImport.mResult.mError.rfind("m.obj:", 0), 0u) << lImport.mResult.mError;
        EXPECT_EQ(lImport.mResult.mError.find('\n'), std::string::npos);
        EXPECT_EQ(lImport.Mesh().GetControlPointsCount(), 0);
        EXPECT_EQ(lImport.Mesh().GetLayerCount(), 0);
    }
    // The mutations do break files, and not all of them.
    EXPECT_GT(lFailures, 300);
    EXPECT_LT(lFailures, 2900);
}

TEST(QelObjWrite, ExportThenImportGivesTheSameElements)
{
    Import lFirst(sEverything);
    ASSERT_TRUE(lFirst.mResult.mSuccess) << lFirst.mResult.mError;
    ASSERT_EQ(QelDemoElementCount(lFirst.Layer()), 5);

    std::string lText;
    std::string lError;
    ASSERT_TRUE(QelObjWrite(lFirst.Mesh(), lFirst.Layer(), lText, lError)) << lError;
    EXPECT_EQ(lText, "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0.5 0.5 1\n"
                     "vt 0 0\nvt 1 0\nvt 0.1 0.7\n"
                     "vn 0 0 -1\nvn 0 0.7071 0.7071\n"
                     "g group0\nusemtl base\ns off\n"
                     "f 4/1/1 3/2/1 2/3/1 1/1/1\n"
                     "g group1\nusemtl paint\ns 3\n"
                     "f 1/1/2 2/2/2 5/3/2\nf 2/1/2 3/2/2 5/3/2\n"
                     "usemtl base\nf 3/1/2 4/2/2 5/3/2\n"
                     "g group0\ns 1\nf 4/1/2 1/2/2 5/3/2\n");

    Import lSecond(lText);
    ASSERT_TRUE(lSecond.mResult.mSuccess) << lSecond.mResult.mError;
    std::vector<std::string> lDifferences;
    EXPECT_TRUE(QelDemoCompareLayers(lFirst.Layer(), lSecond.Layer(), false, lDifferences));
    EXPECT_EQ(lDifferences, std::vector<std::string>{});
    ASSERT_EQ(lSecond.Mesh().GetPolygonCount(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Polygon(lSecond.Mesh(), i), Polygon(lFirst.Mesh(), i));
    ASSERT_EQ(lSecond.mScene.GetMaterialCount(), 2);
    EXPECT_STREQ(lSecond.mScene.GetMaterial(0)->GetName(), "base");
    EXPECT_STREQ(lSecond.mScene.GetMaterial(1)->GetName(), "paint");
}

TEST(QelObjWrite, WritesTheIndexFormTheElementsNeed)
{
    for (const char* lFaces : {"f 1 2 3\n", "f 1/1 2/2 3/1\n", "f 1//1 2//1 3//1\n"}) {
        Import lFirst(std::string(sSquare) + "vt 0 0\nvt 1 1\nvn 0 0 1\n" + lFaces);
        ASSERT_TRUE(lFirst.mResult.mSuccess) << lFirst.mResult.mError;
        std::string lText;
        std::string lError;
        ASSERT_TRUE(QelObjWrite(lFirst.Mesh(), lFirst.Layer(), lText, lError)) << lError;
        EXPECT_NE(lText.find(lFaces), std::string::npos) << lText;
    }
}

TEST(QelObjWrite, RefusesAnIndexBeyondTheDirectArray)
{
    Import lImport(std::string(sSquare) + "vn 0 0 1\nf 1//1 2//1 3//1\n");
    ASSERT_TRUE(lImport.mResult.mSuccess) << lImport.mResult.mError;
    lImport.Layer().GetNormals()->GetIndexArray().SetAt(1, 7);
    std::string lText;
    std::string lError;
    EXPECT_FALSE(QelObjWrite(lImport.Mesh(), lImport.Layer(), lText, lError));
    EXPECT_EQ(lError, "no normal for polygon vertex 1");
}

TEST(QelObjWriteFile, LeavesNothingBehindWhenItFails)
{
    test::ScratchDirectory lDirectory("qelobj_test");
    const std::string lPath = lDirectory.File("missing/out.obj");
    Import lImport(std::string(sSquare) + "f 1 2 3\n");
    std::string lError;
    EXPECT_FALSE(QelObjWriteFile(lImport.Mesh(), lImport.Layer(), lPath.c_str(), lError));
    EXPECT_EQ(lError, lPath + ": cannot write: No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(lPath + ".tmp"));

    const std::string lGood = lDirectory.File("out.obj");
    ASSERT_TRUE(QelObjWriteFile(lImport.Mesh(), lImport.Layer(), lGood.c_str(), lError));
    EXPECT_TRUE(std::filesystem::exists(lGood));
    EXPECT_FALSE(std::filesystem::exists(lGood + ".tmp"));
}

} // namespace
