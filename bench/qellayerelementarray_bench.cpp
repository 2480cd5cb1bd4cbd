// Element arrays against plain C++ containers measured in the same run.
//
//   ./qellayerelementarray_bench --benchmark_counters_tabular=true
//
// - GetLocked in the stored type copies nothing: its time does not grow with the count.
// - A converted lock and write-back of ints as floats against a plain loop converting
//   there and back.
// - Single-item Add, GetAt and SetAt (each under its own lock) against std::vector.
#include <qelsdk/scene/geometry/qellayerelementarray.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace qelsdk;
typedef QelLayerElementArrayTemplate<int> IntArray;

constexpr int kLarge = 10000000;

void Fill(IntArray& pArray, int pCount)
{
    pArray.Resize(pCount);
    int* lItems = static_cast<int*>(pArray.GetLocked(QelLayerElementArray::eWriteLock));
    for (int i = 0; i < pCount; ++i)
        lItems[i] = i;
    pArray.Release(reinterpret_cast<void**>(&lItems));
}

void BM_GetLockedRaw(benchmark::State& pState)
{
    IntArray lArray(eQelInt);
    Fill(lArray, static_cast<int>(pState.range(0)));
    for (auto _ : pState) {
        void* lItems = lArray.GetLocked(QelLayerElementArray::eReadLock);
        benchmark::DoNotOptimize(lItems);
        lArray.Release(&lItems);
    }
}
BENCHMARK(BM_GetLockedRaw)->Arg(1000)->Arg(kLarge);

void BM_ConvertedRoundTrip(benchmark::State& pState)
{
    IntArray lArray(eQelInt);
    Fill(lArray, kLarge);
    for (auto _ : pState) {
        void* lFloats = lArray.GetLocked(QelLayerElementArray::eReadWriteLock, eQelFloat);
        benchmark::DoNotOptimize(lFloats);
        lArray.Release(&lFloats, eQelFloat);
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_ConvertedRoundTrip)->Unit(benchmark::kMillisecond);

// The baseline: a fresh float buffer, converted into and back out of.
void BM_PlainRoundTrip(benchmark::State& pState)
{
    std::vector<int> lInts(kLarge);
    for (int i = 0; i < kLarge; ++i)
        lInts[i] = i;
    for (auto _ : pState) {
        std::vector<float> lFloats(lInts.size());
        for (size_t i = 0; i < lInts.size(); ++i)
            lFloats[i] = static_cast<float>(lInts[i]);
        benchmark::DoNotOptimize(lFloats.data());
        for (size_t i = 0; i < lInts.size(); ++i)
            lInts[i] = static_cast<int>(lFloats[i]);
        benchmark::ClobberMemory();
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_PlainRoundTrip)->Unit(benchmark::kMillisecond);

void BM_Add(benchmark::State& pState)
{
    for (auto _ : pState) {
        IntArray lArray(eQelInt);
        for (int i = 0; i < kLarge; ++i)
            lArray.Add(i);
        benchmark::DoNotOptimize(lArray.GetDataPtr());
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_Add)->Unit(benchmark::kMillisecond);

void BM_VectorPushBack(benchmark::State& pState)
{
    for (auto _ : pState) {
        std::vector<int> lVector;
        lVector.reserve(kLarge);
        for (int i = 0; i < kLarge; ++i)
            lVector.push_back(i);
        benchmark::DoNotOptimize(lVector.data());
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_VectorPushBack)->Unit(benchmark::kMillisecond);

void BM_GetAt(benchmark::State& pState)
{
    IntArray lArray(eQelInt);
    Fill(lArray, kLarge);
    for (auto _ : pState) {
        long long lSum = 0;
        for (int i = 0; i < kLarge; ++i)
            lSum += lArray.GetAt(i);
        benchmark::DoNotOptimize(lSum);
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_GetAt)->Unit(benchmark::kMillisecond);

void BM_SetAt(benchmark::State& pState)
{
    IntArray lArray(eQelInt);
    Fill(lArray, kLarge);
    for (auto _ : pState) {
        for (int i = 0; i < kLarge; ++i)
            lArray.SetAt(i, i + 1);
        benchmark::ClobberMemory();
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_SetAt)->Unit(benchmark::kMillisecond);

// The baselines for single items: one vector element read or written per step, kept
// from being folded into wider operations.
void BM_VectorGet(benchmark::State& pState)
{
    std::vector<int> lVector(kLarge, 1);
    for (auto _ : pState) {
        for (int i = 0; i < kLarge; ++i) {
            int lValue = lVector[i];
            benchmark::DoNotOptimize(lValue);
        }
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_VectorGet)->Unit(benchmark::kMillisecond);

void BM_VectorSet(benchmark::State& pState)
{
    std::vector<int> lVector(kLarge);
    for (auto _ : pState) {
        for (int i = 0; i < kLarge; ++i) {
            lVector[i] = i + 1;
            benchmark::ClobberMemory();
        }
    }
    pState.SetItemsProcessed(pState.iterations() * kLarge);
}
BENCHMARK(BM_VectorSet)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
