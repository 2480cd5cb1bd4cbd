// The OBJ reader against the floor of any line-based reader: the same bytes read
// line by line with std::getline from an std::istringstream, measured in the same run.
//
//   ./qelobj_bench --benchmark_counters_tabular=true
//
// The text is a grid of 1 M triangles with a UV and a normal per vertex (every face
// vertex in the v/vt/vn form), generated in memory once. The import builds the mesh
// (control points and polygons) and the layer (normals and UVs, index to direct), so
// it pays for the library's own arrays too. The ratio to compare is the bytes per
// second of BM_ObjImport to those of BM_GetlineFloor; the target is within 3x.
#include "qelobj.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <sstream>
#include <string>

namespace {

using namespace qelsdk;

// A grid of kSide x kSide quads, two triangles each, cut at 1 000 000 triangles.
constexpr int kSide = 708;
constexpr int kTriangleTarget = 1000000;

void AppendNumber(std::string& pText, double pValue)
{
    char lBuffer[32];
    const std::to_chars_result lDone = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pValue);
    pText.append(lBuffer, lDone.ptr);
}

void AppendCorner(std::string& pText, int pIndex)
{
    char lBuffer[16];
    const std::to_chars_result lDone = std::to_chars(lBuffer, lBuffer + sizeof lBuffer, pIndex);
    for (char lSeparator : {' ', '/', '/'}) {
        pText += lSeparator;
        pText.append(lBuffer, lDone.ptr);
    }
}

std::string GenerateGrid()
{
    std::string lText;
    lText.reserve(size_t(120) << 20);
    const int lPoints = kSide + 1;
    for (const char* lKeyword : {"v ", "vt ", "vn "})
        for (int lRow = 0; lRow < lPoints; ++lRow)
            for (int lColumn = 0; lColumn < lPoints; ++lColumn) {
                const double lU = double(lColumn) / kSide;
                const double lV = double(lRow) / kSide;
                lText += lKeyword;
                AppendNumber(lText, lKeyword[1] == 'n' ? 0.0 : lU * 10);
                lText += ' ';
                AppendNumber(lText, lKeyword[1] == 'n' ? 0.0 : lV * 10);
                if (lKeyword[1] != 't') {
                    lText += ' ';
                    AppendNumber(lText, lKeyword[1] == 'n' ? 1.0 : lU * lV);
                }
                lText += '\n';
            }
    int lTriangles = 0;
    for (int lRow = 0; lRow < kSide; ++lRow)
        for (int lColumn = 0; lColumn < kSide; ++lColumn) {
            const int lA = lRow * lPoints + lColumn + 1;
            const int lCorners[2][3] = {{lA, lA + 1, lA + lPoints + 1},
                                        {lA, lA + lPoints + 1, lA + lPoints}};
            for (const auto& lTriangle : lCorners) {
                if (lTriangles == kTriangleTarget) return lText;
                ++lTriangles;
                lText += 'f';
                for (int lCorner : lTriangle)
                    AppendCorner(lText, lCorner);
                lText += '\n';
            }
        }
    return lText;
}

const std::string& Grid()
{
    static const std::string sGrid = GenerateGrid();
    return sGrid;
}

void BM_ObjImport(benchmark::State& pState)
{
    const std::string& lText = Grid();
    for (auto _ : pState) {
        QelObjScene lScene("grid");
        const QelObjResult lResult = QelObjRead(lText.data(), lText.size(), "grid.obj", lScene);
        if (!lResult.mSuccess || lScene.Mesh().GetPolygonCount() != kTriangleTarget) {
            pState.SkipWithError(lResult.mError.c_str());
            break;
        }
        benchmark::DoNotOptimize(lScene.Layer()->GetNormals());
    }
    pState.SetBytesProcessed(int64_t(pState.iterations()) * int64_t(lText.size()));
    pState.counters["MB"] = double(lText.size()) / 1e6;
}
BENCHMARK(BM_ObjImport)->Unit(benchmark::kMillisecond)->MinTime(3);

void BM_GetlineFloor(benchmark::State& pState)
{
    const std::string& lText = Grid();
    std::istringstream lStream(lText);
    std::string lLine;
    for (auto _ : pState) {
        lStream.clear();
        lStream.seekg(0);
        size_t lLines = 0;
        while (std::getline(lStream, lLine))
            ++lLines;
        benchmark::DoNotOptimize(lLines);
    }
    pState.SetBytesProcessed(int64_t(pState.iterations()) * int64_t(lText.size()));
}
BENCHMARK(BM_GetlineFloor)->Unit(benchmark::kMillisecond)->MinTime(3);

} // namespace

BENCHMARK_MAIN();
