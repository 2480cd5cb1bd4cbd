// Whole-buffer conversion: the batched QelTypeCopyArray and the per-item untyped entry
// point against the plain loop a caller would write for the same pair.
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltypecopy.h>
#include <qelsdk/core/qelvector.h>

#include <benchmark/benchmark.h>

#include <vector>

namespace qelsdk {
namespace {

constexpr int sItemCount = 10000000;

template <class T> T SampleAt(int pIndex);
template <> int SampleAt<int>(int pIndex) { return pIndex - sItemCount / 2; }
template <> short SampleAt<short>(int pIndex) { return static_cast<short>(pIndex); }
template <> double SampleAt<double>(int pIndex) { return pIndex * 0.37 - 1e6; }
template <> QelDouble3 SampleAt<QelDouble3>(int pIndex)
{
    return QelDouble3(pIndex, pIndex + 0.5, -pIndex);
}

template <class TDst, class TSrc> struct Buffers
{
    // One untimed conversion, so that every variant finds the destination (and the
    // heap behind strings) in the same state.
    Buffers() : mDst(sItemCount), mSrc(sItemCount)
    {
        for (int lIndex = 0; lIndex < sItemCount; ++lIndex) {
            mSrc[lIndex] = SampleAt<TSrc>(lIndex);
            QelTypeCopy(mDst[lIndex], mSrc[lIndex]);
        }
    }
    std::vector<TDst> mDst;
    std::vector<TSrc> mSrc;
};

void CountItems(benchmark::State& pState)
{
    pState.SetItemsProcessed(pState.iterations() * sItemCount);
}

template <class TDst, EQelType tDstType, class TSrc, EQelType tSrcType>
void Batched(benchmark::State& pState)
{
    Buffers<TDst, TSrc> lBuffers;
    for (auto _ : pState) {
        benchmark::DoNotOptimize(QelTypeCopyArray(lBuffers.mDst.data(), tDstType, sizeof(TDst),
                                                  lBuffers.mSrc.data(), tSrcType, sizeof(TSrc),
                                                  sItemCount));
        benchmark::ClobberMemory();
    }
    CountItems(pState);
}

template <class TDst, EQelType tDstType, class TSrc, EQelType tSrcType>
void PerItem(benchmark::State& pState)
{
    Buffers<TDst, TSrc> lBuffers;
    for (auto _ : pState) {
        for (int lIndex = 0; lIndex < sItemCount; ++lIndex)
            QelTypeCopy(&lBuffers.mDst[lIndex], tDstType, &lBuffers.mSrc[lIndex], tSrcType);
        benchmark::ClobberMemory();
    }
    CountItems(pState);
}

// The baseline: what a caller converting a buffer of a known pair writes by hand.
template <class TDst, class TSrc> void Plain(benchmark::State& pState)
{
    Buffers<TDst, TSrc> lBuffers;
    for (auto _ : pState) {
        TDst* lDst = lBuffers.mDst.data();
        const TSrc* lSrc = lBuffers.mSrc.data();
        for (int lIndex = 0; lIndex < sItemCount; ++lIndex)
            lDst[lIndex] = static_cast<TDst>(lSrc[lIndex]);
        benchmark::DoNotOptimize(lDst);
        benchmark::ClobberMemory();
    }
    CountItems(pState);
}

// The three components into a four-vector whose fourth stays.
void PlainDouble3ToDouble4(benchmark::State& pState)
{
    Buffers<QelDouble4, QelDouble3> lBuffers;
    for (auto _ : pState) {
        QelDouble4* lDst = lBuffers.mDst.data();
        const QelDouble3* lSrc = lBuffers.mSrc.data();
        for (int lIndex = 0; lIndex < sItemCount; ++lIndex) {
            lDst[lIndex][0] = lSrc[lIndex][0];
            lDst[lIndex][1] = lSrc[lIndex][1];
            lDst[lIndex][2] = lSrc[lIndex][2];
        }
        benchmark::DoNotOptimize(lDst);
        benchmark::ClobberMemory();
    }
    CountItems(pState);
}

// QelString has no static_cast from int: the baseline formats with QelString(int).
void PlainIntToString(benchmark::State& pState)
{
    Buffers<QelString, int> lBuffers;
    for (auto _ : pState) {
        for (int lIndex = 0; lIndex < sItemCount; ++lIndex)
            lBuffers.mDst[lIndex] = QelString(lBuffers.mSrc[lIndex]);
        benchmark::ClobberMemory();
    }
    CountItems(pState);
}

} // namespace
} // namespace qelsdk

using namespace qelsdk;

// Each pair: the plain loop first, then the batched form and the per-item entry point.
BENCHMARK(Plain<float, int>)->Name("IntToFloat/Plain")->Unit(benchmark::kMillisecond);
BENCHMARK(Batched<float, eQelFloat, int, eQelInt>)
    ->Name("IntToFloat/Batched")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PerItem<float, eQelFloat, int, eQelInt>)
    ->Name("IntToFloat/PerItem")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Plain<int, double>)->Name("DoubleToInt/Plain")->Unit(benchmark::kMillisecond);
BENCHMARK(Batched<int, eQelInt, double, eQelDouble>)
    ->Name("DoubleToInt/Batched")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PerItem<int, eQelInt, double, eQelDouble>)
    ->Name("DoubleToInt/PerItem")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PlainDouble3ToDouble4)->Name("Double3ToDouble4/Plain")->Unit(benchmark::kMillisecond);
BENCHMARK(Batched<QelDouble4, eQelDouble4, QelDouble3, eQelDouble3>)
    ->Name("Double3ToDouble4/Batched")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PerItem<QelDouble4, eQelDouble4, QelDouble3, eQelDouble3>)
    ->Name("Double3ToDouble4/PerItem")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Plain<double, short>)->Name("ShortToDouble/Plain")->Unit(benchmark::kMillisecond);
BENCHMARK(Batched<double, eQelDouble, short, eQelShort>)
    ->Name("ShortToDouble/Batched")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PerItem<double, eQelDouble, short, eQelShort>)
    ->Name("ShortToDouble/PerItem")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PlainIntToString)->Name("IntToString/Plain")->Unit(benchmark::kMillisecond);
BENCHMARK(Batched<QelString, eQelString, int, eQelInt>)
    ->Name("IntToString/Batched")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(PerItem<QelString, eQelString, int, eQelInt>)
    ->Name("IntToString/PerItem")
    ->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
