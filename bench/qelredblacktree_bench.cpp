// Insert, find and remove of one million random int keys: QelMap<int, int> against
// std::map<int, int>, measured in the same run so the ratio is meaningful.
#include <qelsdk/core/base/qelredblacktree.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace {

const int kKeyCount = 1000000;

// The keys in insertion order; fixed seed so every run measures the same trees.
const std::vector<int>& InsertionKeys()
{
    static const std::vector<int> sKeys = [] {
        std::mt19937 lRandom(20261122u);
        std::vector<int> lKeys(kKeyCount);
        for (int& lKey : lKeys)
            lKey = static_cast<int>(lRandom());
        return lKeys;
    }();
    return sKeys;
}

// The same keys in another random order, for lookups and removals.
const std::vector<int>& ShuffledKeys()
{
    static const std::vector<int> sKeys = [] {
        std::vector<int> lKeys = InsertionKeys();
        std::shuffle(lKeys.begin(), lKeys.end(), std::mt19937(7u));
        return lKeys;
    }();
    return sKeys;
}

class QelMapAdapter
{
public:
    void Insert(int pKey) { mMap.Insert(pKey, pKey); }
    int Find(int pKey) const
    {
        const auto* lRecord = mMap.Find(pKey);
        return lRecord ? lRecord->GetValue() : 0;
    }
    void Remove(int pKey) { mMap.Remove(pKey); }
    void Clear() { mMap.Clear(); }
    int Size() const { return mMap.GetSize(); }

private:
    qelsdk::QelMap<int, int> mMap;
};

class StdMapAdapter
{
public:
    void Insert(int pKey) { mMap.emplace(pKey, pKey); }
    int Find(int pKey) const
    {
        auto lIterator = mMap.find(pKey);
        return lIterator != mMap.end() ? lIterator->second : 0;
    }
    void Remove(int pKey) { mMap.erase(pKey); }
    void Clear() { mMap.clear(); }
    int Size() const { return static_cast<int>(mMap.size()); }

private:
    std::map<int, int> mMap;
};

template <class Map> void Fill(Map& pMap)
{
    for (int lKey : InsertionKeys())
        pMap.Insert(lKey);
}

template <class Map> void InsertRandom(benchmark::State& pState)
{
    Map lMap;
    for (auto lUnused : pState) {
        Fill(lMap);
        benchmark::DoNotOptimize(lMap.Size());
        pState.PauseTiming();
        lMap.Clear();
        pState.ResumeTiming();
    }
    pState.SetItemsProcessed(pState.iterations() * kKeyCount);
}

template <class Map> void FindRandom(benchmark::State& pState)
{
    Map lMap;
    Fill(lMap);
    for (auto lUnused : pState) {
        long long lSum = 0;
        for (int lKey : ShuffledKeys())
            lSum += lMap.Find(lKey);
        benchmark::DoNotOptimize(lSum);
    }
    pState.SetItemsProcessed(pState.iterations() * kKeyCount);
}

template <class Map> void RemoveRandom(benchmark::State& pState)
{
    Map lMap;
    for (auto lUnused : pState) {
        pState.PauseTiming();
        Fill(lMap);
        pState.ResumeTiming();
        for (int lKey : ShuffledKeys())
            lMap.Remove(lKey);
        benchmark::DoNotOptimize(lMap.Size());
    }
    pState.SetItemsProcessed(pState.iterations() * kKeyCount);
}

BENCHMARK_TEMPLATE(InsertRandom, StdMapAdapter)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(InsertRandom, QelMapAdapter)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(FindRandom, StdMapAdapter)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(FindRandom, QelMapAdapter)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(RemoveRandom, StdMapAdapter)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(RemoveRandom, QelMapAdapter)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
