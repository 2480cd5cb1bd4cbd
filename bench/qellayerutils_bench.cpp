// Weld and computed normals over a grid mesh of 1 M triangles, against plain C++ doing
// the same work, measured in the same run.
//
//   ./qellayerutils_bench --benchmark_counters_tabular=true
//
// The ratios to compare are
// - QelWeld of the 3 M per-polygon-vertex UVs of the grid (about 0.5 M distinct) /
//   the same deduplication through a reserved std::unordered_map, giving the same
//   kept items and indices;
// - QelComputeNormals by control point, and per polygon vertex / the same
//   angle-weighted sums of triangle normals in plain loops over std::vector.
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayerutils.h>
#include <qelsdk/scene/geometry/qelmesh.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <unordered_map>
#include <vector>

namespace {

using namespace qelsdk;
typedef QelLayerElement Element;

constexpr int kColumns = 1000; // quads across
constexpr int kRows = 500;     // quads down: 2 x 1000 x 500 = 1 M triangles

// A gently waved grid of kColumns x kRows quads, each split into two triangles, with
// the control points and triangles also kept in plain vectors for the baselines.
struct Grid
{
    Grid() : mMesh("grid")
    {
        const int lWidth = kColumns + 1;
        mMesh.SetControlPointCount(lWidth * (kRows + 1));
        for (int y = 0; y <= kRows; ++y)
            for (int x = 0; x <= kColumns; ++x) {
                const double lZ = 0.1 * std::sin(x * 0.05) * std::cos(y * 0.07);
                mMesh.SetControlPointAt(QelVector4(x, y, lZ, 1), y * lWidth + x);
                mPoints.insert(mPoints.end(), {double(x), double(y), lZ});
                mUVs.push_back(QelVector2(double(x) / kColumns, double(y) / kRows));
            }
        for (int y = 0; y < kRows; ++y)
            for (int x = 0; x < kColumns; ++x) {
                const int lCorner = y * lWidth + x;
                const int lTriangles[2][3] = {{lCorner, lCorner + 1, lCorner + lWidth + 1},
                                              {lCorner, lCorner + lWidth + 1, lCorner + lWidth}};
                for (const auto& lTriangle : lTriangles) {
                    mMesh.AddPolygon(lTriangle, 3);
                    mTriangles.insert(mTriangles.end(), lTriangle, lTriangle + 3);
                }
            }
        mMesh.CreateLayer();
        mCornerUVs.reserve(mTriangles.size());
        for (int lPoint : mTriangles)
            mCornerUVs.push_back(mUVs[static_cast<size_t>(lPoint)]);
    }

    QelMesh mMesh;
    std::vector<double> mPoints;
    std::vector<int> mTriangles;
    std::vector<QelVector2> mUVs;
    std::vector<QelVector2> mCornerUVs; // one per polygon vertex
};

Grid& TheGrid()
{
    static Grid sGrid;
    return sGrid;
}

void SetItems(benchmark::State& pState, size_t pItems)
{
    pState.SetItemsProcessed(static_cast<int64_t>(pState.iterations()) *
                             static_cast<int64_t>(pItems));
}

// --- Weld ------------------------------------------------------------------------------

void BM_Weld(benchmark::State& pState)
{
    Grid& lGrid = TheGrid();
    QelMesh lOwner("uvs");
    QelLayerElementUV* lUVs = QelLayerElementUV::Create(&lOwner, "uv");
    lUVs->SetMappingMode(Element::ePerPolygonVertex);
    const int lCount = static_cast<int>(lGrid.mCornerUVs.size());
    int lKept = 0;
    for (auto _ : pState) {
        pState.PauseTiming();
        lUVs->SetReferenceMode(Element::eDirect);
        lUVs->GetDirectArray().Resize(lCount);
        void* lItems = lUVs->GetDirectArray().GetLocked(QelLayerElementArray::eReadWriteLock);
        std::memcpy(lItems, lGrid.mCornerUVs.data(), sizeof(QelVector2) * lCount);
        lUVs->GetDirectArray().Release(&lItems);
        pState.ResumeTiming();
        if (QelWeld(*lUVs) != eQelUtilOk) pState.SkipWithError("weld refused");
        lKept = lUVs->GetDirectArray().GetCount();
    }
    pState.counters["kept"] = lKept;
    SetItems(pState, lGrid.mCornerUVs.size());
}
BENCHMARK(BM_Weld)->Unit(benchmark::kMillisecond);

struct UVKey
{
    uint64_t mU, mV;
    bool operator==(const UVKey& pOther) const { return mU == pOther.mU && mV == pOther.mV; }
};

struct UVKeyHash
{
    size_t operator()(const UVKey& pKey) const
    {
        return std::hash<uint64_t>()(pKey.mU * 0x9E3779B97F4A7C15ULL ^ pKey.mV);
    }
};

void BM_WeldBaselineUnorderedMap(benchmark::State& pState)
{
    const std::vector<QelVector2>& lItems = TheGrid().mCornerUVs;
    size_t lKept = 0;
    for (auto _ : pState) {
        std::unordered_map<UVKey, int, UVKeyHash> lClasses;
        lClasses.reserve(lItems.size());
        std::vector<QelVector2> lUnique;
        std::vector<int> lIndices(lItems.size());
        for (size_t i = 0; i < lItems.size(); ++i) {
            UVKey lKey;
            std::memcpy(&lKey.mU, &lItems[i][0], sizeof(double));
            std::memcpy(&lKey.mV, &lItems[i][1], sizeof(double));
            auto lFound = lClasses.emplace(lKey, static_cast<int>(lUnique.size()));
            if (lFound.second) lUnique.push_back(lItems[i]);
            lIndices[i] = lFound.first->second;
        }
        benchmark::DoNotOptimize(lIndices.data());
        lKept = lUnique.size();
    }
    pState.counters["kept"] = static_cast<double>(lKept);
    SetItems(pState, lItems.size());
}
BENCHMARK(BM_WeldBaselineUnorderedMap)->Unit(benchmark::kMillisecond);

// --- Normals ---------------------------------------------------------------------------

void BM_ComputeNormals(benchmark::State& pState)
{
    const Element::EMappingMode lMapping = static_cast<Element::EMappingMode>(pState.range(0));
    QelMesh& lMesh = TheGrid().mMesh;
    for (auto _ : pState)
        if (QelComputeNormals(lMesh, 0, lMapping) != eQelUtilOk)
            pState.SkipWithError("normals refused");
    SetItems(pState, static_cast<size_t>(lMesh.GetPolygonCount()));
}
BENCHMARK(BM_ComputeNormals)
    ->Arg(Element::eByControlPoint)
    ->Arg(Element::ePerPolygonVertex)
    ->Unit(benchmark::kMillisecond);

// The same angle-weighted sums over the plain vectors: one sum per control point, then
// one unit normal per control point or per triangle corner.
void BM_ComputeNormalsBaseline(benchmark::State& pState)
{
    const bool lPerCorner = pState.range(0) == Element::ePerPolygonVertex;
    const Grid& lGrid = TheGrid();
    const std::vector<double>& lPoints = lGrid.mPoints;
    const std::vector<int>& lTriangles = lGrid.mTriangles;
    for (auto _ : pState) {
        std::vector<double> lSums(lPoints.size(), 0.0);
        for (size_t t = 0; t < lTriangles.size(); t += 3) {
            const double* lCorner[3];
            for (int j = 0; j < 3; ++j)
                lCorner[j] = &lPoints[3 * static_cast<size_t>(lTriangles[t + j])];
            double lEdges[3][3];
            for (int j = 0; j < 3; ++j)
                for (int c = 0; c < 3; ++c)
                    lEdges[j][c] = lCorner[(j + 1) % 3][c] - lCorner[j][c];
            const double lNormal[3] = {lEdges[0][1] * lEdges[1][2] - lEdges[0][2] * lEdges[1][1],
                                       lEdges[0][2] * lEdges[1][0] - lEdges[0][0] * lEdges[1][2],
                                       lEdges[0][0] * lEdges[1][1] - lEdges[0][1] * lEdges[1][0]};
            const double lLength = std::sqrt(lNormal[0] * lNormal[0] + lNormal[1] * lNormal[1] +
                                             lNormal[2] * lNormal[2]);
            if (lLength == 0.0) continue;
            for (int j = 0; j < 3; ++j) {
                // The angle at corner j, between the edge out of it and the one into it.
                const double* lOut = lEdges[j];
                const double* lIn = lEdges[(j + 2) % 3];
                const double lCross[3] = {lIn[1] * lOut[2] - lIn[2] * lOut[1],
                                          lIn[2] * lOut[0] - lIn[0] * lOut[2],
                                          lIn[0] * lOut[1] - lIn[1] * lOut[0]};
                const double lAngle =
                    std::atan2(std::sqrt(lCross[0] * lCross[0] + lCross[1] * lCross[1] +
                                         lCross[2] * lCross[2]),
                               -(lIn[0] * lOut[0] + lIn[1] * lOut[1] + lIn[2] * lOut[2]));
                double* lSum = &lSums[3 * static_cast<size_t>(lTriangles[t + j])];
                for (int c = 0; c < 3; ++c)
                    lSum[c] += lNormal[c] / lLength * lAngle;
            }
        }
        const size_t lCount = lPerCorner ? lTriangles.size() : lPoints.size() / 3;
        std::vector<QelVector4> lNormals(lCount);
        for (size_t i = 0; i < lCount; ++i) {
            const double* lSum = &lSums[3 * (lPerCorner ? size_t(lTriangles[i]) : i)];
            const double lLength =
                std::sqrt(lSum[0] * lSum[0] + lSum[1] * lSum[1] + lSum[2] * lSum[2]);
            lNormals[i] = QelVector4(lSum[0] / lLength, lSum[1] / lLength, lSum[2] / lLength, 0);
        }
        benchmark::DoNotOptimize(lNormals.data());
    }
    SetItems(pState, lTriangles.size() / 3);
}
BENCHMARK(BM_ComputeNormalsBaseline)
    ->Arg(Element::eByControlPoint)
    ->Arg(Element::ePerPolygonVertex)
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
