// Layer elements against plain C++ measured in the same run.
//
//   ./qellayerelement_bench --benchmark_counters_tabular=true
//
// - RemapIndexArrayTo over 1 M and 4 M polygons of 3 and 4 vertices in turn: the time
//   grows linearly with the polygon count (ratio near 4) and costs a few ns per index
//   written; the baseline expands a std::vector<int> the same way. Large blocks are
//   kept in the heap (see main), so both measure the work and not page faults.
// - Create then Destroy of one element of each kind, 100 K times, against new and
//   delete of an object holding three std::vector members.
#include <qelsdk/scene/geometry/qellayer.h>

#include <qelsdk/scene/geometry/qelmesh.h>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <vector>

namespace {

using namespace qelsdk;

// A mesh whose polygons alternate between triangles and quads.
void AddPolygons(QelMesh& pMesh, int pCount)
{
    const int lVertices[] = {0, 1, 2, 3};
    for (int i = 0; i < pCount; ++i)
        pMesh.AddPolygon(lVertices, 3 + i % 2);
}

void FillIndices(QelLayerElementArrayTemplate<int>& pArray, int pCount)
{
    pArray.Resize(pCount);
    int* lItems = static_cast<int*>(pArray.GetLocked(QelLayerElementArray::eReadWriteLock));
    for (int i = 0; i < pCount; ++i)
        lItems[i] = i;
    pArray.Release(reinterpret_cast<void**>(&lItems));
}

void BM_RemapIndexArrayTo(benchmark::State& pState)
{
    const int lPolygons = static_cast<int>(pState.range(0));
    QelMesh lMesh("mesh");
    AddPolygons(lMesh, lPolygons);
    QelLayerElementPolygonGroup* lElement = QelLayerElementPolygonGroup::Create(&lMesh, "groups");
    lElement->SetReferenceMode(QelLayerElement::eIndexToDirect);
    int lWritten = 0;
    for (auto _ : pState) {
        pState.PauseTiming();
        lElement->SetMappingMode(QelLayerElement::ePerPolygon);
        FillIndices(lElement->GetIndexArray(), lPolygons);
        pState.ResumeTiming();
        RemapIndexArrayTo(lElement, QelLayerElement::ePerPolygonVertex, &lElement->GetIndexArray());
        lWritten = lElement->GetIndexArray().GetCount();
    }
    pState.counters["indices"] = lWritten;
    pState.counters["ns/index"] =
        benchmark::Counter(static_cast<double>(lWritten) * static_cast<double>(pState.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_RemapIndexArrayTo)->Arg(1 << 20)->Arg(4 << 20)->Unit(benchmark::kMillisecond);

// The baseline: the same expansion from one std::vector into a fresh one.
void BM_PlainRemap(benchmark::State& pState)
{
    const int lPolygons = static_cast<int>(pState.range(0));
    std::vector<int> lSizes(static_cast<size_t>(lPolygons));
    for (int i = 0; i < lPolygons; ++i)
        lSizes[static_cast<size_t>(i)] = 3 + i % 2;
    std::vector<int> lIndices(static_cast<size_t>(lPolygons));
    for (int i = 0; i < lPolygons; ++i)
        lIndices[static_cast<size_t>(i)] = i;
    size_t lWritten = 0;
    for (auto _ : pState) {
        std::vector<int> lExpanded;
        size_t lTotal = 0;
        for (int lSize : lSizes)
            lTotal += static_cast<size_t>(lSize);
        lExpanded.reserve(lTotal);
        for (size_t p = 0; p < lIndices.size(); ++p)
            lExpanded.insert(lExpanded.end(), static_cast<size_t>(lSizes[p]), lIndices[p]);
        benchmark::DoNotOptimize(lExpanded.data());
        lWritten = lExpanded.size();
    }
    pState.counters["ns/index"] =
        benchmark::Counter(static_cast<double>(lWritten) * static_cast<double>(pState.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PlainRemap)->Arg(1 << 20)->Arg(4 << 20)->Unit(benchmark::kMillisecond);

constexpr int kElements = 100000;

template <class TKind> void BM_CreateDestroy(benchmark::State& pState)
{
    QelMesh lMesh("mesh");
    for (auto _ : pState) {
        for (int i = 0; i < kElements; ++i)
            TKind::Create(&lMesh, "element")->Destroy();
    }
    pState.counters["ns/element"] = benchmark::Counter(
        static_cast<double>(kElements) * static_cast<double>(pState.iterations()),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementNormal)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementBinormal)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementTangent)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementMaterial)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementPolygonGroup)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementUV)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementVertexColor)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementSmoothing)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementCrease)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementHole)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementVisibility)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_CreateDestroy, QelLayerElementTexture)->Unit(benchmark::kMillisecond);

// User data with one int channel: one more array and a channel name per element.
void BM_CreateDestroyUserData(benchmark::State& pState)
{
    QelMesh lMesh("mesh");
    QelArray<QelDataType> lTypes;
    lTypes.Add(QelIntDT);
    QelArray<const char*> lNames;
    lNames.Add("weight");
    for (auto _ : pState) {
        for (int i = 0; i < kElements; ++i)
            QelLayerElementUserData::Create(&lMesh, "element", 1, lTypes, lNames)->Destroy();
    }
    pState.counters["ns/element"] = benchmark::Counter(
        static_cast<double>(kElements) * static_cast<double>(pState.iterations()),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_CreateDestroyUserData)->Unit(benchmark::kMillisecond);

// The baseline: an object with a name and two vectors, made and freed as often.
struct PlainElement
{
    std::vector<char> mName;
    std::vector<double> mDirect;
    std::vector<int> mIndex;
};

void BM_PlainCreateDestroy(benchmark::State& pState)
{
    for (auto _ : pState) {
        for (int i = 0; i < kElements; ++i) {
            auto* lElement = new PlainElement{std::vector<char>(8), {}, {}};
            benchmark::DoNotOptimize(lElement);
            delete lElement;
        }
    }
    pState.counters["ns/element"] = benchmark::Counter(
        static_cast<double>(kElements) * static_cast<double>(pState.iterations()),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PlainCreateDestroy)->Unit(benchmark::kMillisecond);

} // namespace

// Large blocks stay in the heap instead of coming from fresh mappings on every
// iteration: otherwise the first touch of new pages, not the remapping, sets the time
// of the 4 M case (and of its baseline alike).
int main(int pArgc, char** pArgv)
{
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    benchmark::Initialize(&pArgc, pArgv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
