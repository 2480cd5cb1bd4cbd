// The layer's content stream and clone against plain copies of the same bytes,
// measured in the same run.
//
//   ./qellayer_bench --benchmark_counters_tabular=true
//
// The layer holds 1 M normals, 1 M UVs with 1 M indices and 1 M vertex colours
// (about 84 MB). Each case reports bytes per second; the ratios to compare are
// - write into a memory stream whose buffer has grown already / memcpy between warm
//   buffers, and into a fresh memory stream / memcpy into freshly allocated memory
//   (the first touch of new pages dominates both);
// - read back from a memory stream / memcpy out of warm buffers;
// - write to and read from a file / one fwrite and one fread of the same bytes;
// - Clone of the layer into another mesh / copying the same bytes into fresh memory.
#include <qelsdk/scene/geometry/qellayer.h>

#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qelmesh.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace qelsdk;
typedef QelLayerElement Element;

constexpr int kItems = 1 << 20;

template <class T> void FillArray(QelLayerElementArrayTemplate<T>& pArray, const T& pValue)
{
    pArray.Resize(kItems);
    T* lItems = static_cast<T*>(pArray.GetLocked(QelLayerElementArray::eReadWriteLock));
    for (int i = 0; i < kItems; ++i)
        lItems[i] = pValue;
    pArray.Release(reinterpret_cast<void**>(&lItems));
}

// A mesh whose one layer holds the elements the benchmark streams.
struct Scene
{
    Scene() : mMesh("mesh")
    {
        mLayer = mMesh.GetLayer(mMesh.CreateLayer());
        auto* lNormals =
            static_cast<QelLayerElementNormal*>(mLayer->CreateLayerElementOfType(Element::eNormal));
        FillArray(lNormals->GetDirectArray(), QelVector4(0, 0, 1, 0));
        auto* lUVs =
            static_cast<QelLayerElementUV*>(mLayer->CreateLayerElementOfType(Element::eUV));
        lUVs->SetReferenceMode(Element::eIndexToDirect);
        FillArray(lUVs->GetDirectArray(), QelVector2(0.5, 0.5));
        FillArray(lUVs->GetIndexArray(), 7);
        auto* lColors = static_cast<QelLayerElementVertexColor*>(
            mLayer->CreateLayerElementOfType(Element::eVertexColor));
        FillArray(lColors->GetDirectArray(), QelColor(1, 0.5, 0.25, 1));
        QelMemoryStream lStream;
        mLayer->ContentWriteTo(lStream);
        mBytes = static_cast<size_t>(lStream.GetSize());
    }

    QelMesh mMesh;
    QelLayer* mLayer;
    size_t mBytes;
};

Scene& TheScene()
{
    static Scene sScene;
    return sScene;
}

void SetBytes(benchmark::State& pState, size_t pBytes)
{
    pState.SetBytesProcessed(static_cast<int64_t>(pState.iterations()) *
                             static_cast<int64_t>(pBytes));
}

std::string TempPath()
{
    return (std::filesystem::temp_directory_path() /
            ("qellayer_bench_" + std::to_string(getpid()) + ".bin"))
        .string();
}

// A memory stream that keeps its grown buffer between writes: the write starts
// again at the front.
class ReusedStream : public QelStream
{
public:
    explicit ReusedStream(size_t pCapacity) : mData(pCapacity), mSize(0) {}
    using QelStream::Write;
    int Write(const void* pData, int pSize) override
    {
        std::memcpy(mData.data() + mSize, pData, static_cast<size_t>(pSize));
        mSize += static_cast<size_t>(pSize);
        return pSize;
    }
    int Read(void*, int) const override { return 0; }
    void Rewind() { mSize = 0; }

private:
    std::vector<char> mData;
    size_t mSize;
};

void BM_WriteReusedMemory(benchmark::State& pState)
{
    Scene& lScene = TheScene();
    ReusedStream lStream(lScene.mBytes);
    for (auto _ : pState) {
        lStream.Rewind();
        benchmark::DoNotOptimize(lScene.mLayer->ContentWriteTo(lStream));
    }
    SetBytes(pState, lScene.mBytes);
}
BENCHMARK(BM_WriteReusedMemory)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MemcpyWarm(benchmark::State& pState)
{
    const size_t lBytes = TheScene().mBytes;
    std::vector<char> lFrom(lBytes, 1);
    std::vector<char> lTo(lBytes, 0);
    for (auto _ : pState) {
        std::memcpy(lTo.data(), lFrom.data(), lBytes);
        benchmark::ClobberMemory();
    }
    SetBytes(pState, lBytes);
}
BENCHMARK(BM_MemcpyWarm)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WriteFreshMemory(benchmark::State& pState)
{
    Scene& lScene = TheScene();
    for (auto _ : pState) {
        QelMemoryStream lStream;
        benchmark::DoNotOptimize(lScene.mLayer->ContentWriteTo(lStream));
    }
    SetBytes(pState, lScene.mBytes);
}
BENCHMARK(BM_WriteFreshMemory)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_MemcpyFresh(benchmark::State& pState)
{
    const size_t lBytes = TheScene().mBytes;
    std::vector<char> lFrom(lBytes, 1);
    for (auto _ : pState) {
        char* lTo = static_cast<char*>(std::malloc(lBytes));
        std::memcpy(lTo, lFrom.data(), lBytes);
        benchmark::DoNotOptimize(lTo);
        std::free(lTo);
    }
    SetBytes(pState, lBytes);
}
BENCHMARK(BM_MemcpyFresh)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ReadMemory(benchmark::State& pState)
{
    Scene& lScene = TheScene();
    QelMemoryStream lStream;
    lScene.mLayer->ContentWriteTo(lStream);
    QelMesh lMesh("read");
    QelLayer* lLayer = lMesh.GetLayer(lMesh.CreateLayer());
    lStream.Rewind();
    lLayer->ContentReadFrom(lStream); // the elements exist and are sized from now on
    for (auto _ : pState) {
        lStream.Rewind();
        benchmark::DoNotOptimize(lLayer->ContentReadFrom(lStream));
    }
    SetBytes(pState, lScene.mBytes);
}
BENCHMARK(BM_ReadMemory)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WriteFile(benchmark::State& pState)
{
    Scene& lScene = TheScene();
    const std::string lPath = TempPath();
    for (auto _ : pState) {
        QelFileStream lFile(lPath.c_str(), "wb");
        benchmark::DoNotOptimize(lScene.mLayer->ContentWriteTo(lFile));
    }
    std::remove(lPath.c_str());
    SetBytes(pState, lScene.mBytes);
}
BENCHMARK(BM_WriteFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FwriteFile(benchmark::State& pState)
{
    const size_t lBytes = TheScene().mBytes;
    std::vector<char> lFrom(lBytes, 1);
    const std::string lPath = TempPath();
    for (auto _ : pState) {
        std::FILE* lFile = std::fopen(lPath.c_str(), "wb");
        std::fwrite(lFrom.data(), 1, lBytes, lFile);
        std::fclose(lFile);
    }
    std::remove(lPath.c_str());
    SetBytes(pState, lBytes);
}
BENCHMARK(BM_FwriteFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ReadFile(benchmark::State& pState)
{
    Scene& lScene = TheScene();
    const std::string lPath = TempPath();
    {
        QelFileStream lFile(lPath.c_str(), "wb");
        lScene.mLayer->ContentWriteTo(lFile);
    }
    QelMesh lMesh("read");
    QelLayer* lLayer = lMesh.GetLayer(lMesh.CreateLayer());
    for (auto _ : pState) {
        QelFileStream lFile(lPath.c_str(), "rb");
        benchmark::DoNotOptimize(lLayer->ContentReadFrom(lFile));
    }
    std::remove(lPath.c_str());
    SetBytes(pState, lScene.mBytes);
}
BENCHMARK(BM_ReadFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FreadFile(benchmark::State& pState)
{
    const size_t lBytes = TheScene().mBytes;
    const std::string lPath = TempPath();
    {
        std::vector<char> lFrom(lBytes, 1);
        std::FILE* lFile = std::fopen(lPath.c_str(), "wb");
        std::fwrite(lFrom.data(), 1, lBytes, lFile);
        std::fclose(lFile);
    }
    std::vector<char> lTo(lBytes);
    for (auto _ : pState) {
        std::FILE* lFile = std::fopen(lPath.c_str(), "rb");
        benchmark::DoNotOptimize(std::fread(lTo.data(), 1, lBytes, lFile));
        std::fclose(lFile);
    }
    std::remove(lPath.c_str());
    SetBytes(pState, lBytes);
}
BENCHMARK(BM_FreadFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Clone(benchmark::State& pState)
{
    Scene& lScene = TheScene();
    for (auto _ : pState) {
        QelMesh lMesh("clone");
        QelLayer* lLayer = lMesh.GetLayer(lMesh.CreateLayer());
        lLayer->Clone(*lScene.mLayer);
        benchmark::DoNotOptimize(lLayer);
    }
    SetBytes(pState, lScene.mBytes);
}
BENCHMARK(BM_Clone)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
