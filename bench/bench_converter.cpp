// The per-frame work of the camera wrapper: one BayerRG12 frame of 1920x1200
// converted to RGB16 packed (fresh image) and to BGRa8 packed (into a display
// buffer). Goal: under 15 ms per frame.
#include "kalto/imageformatconverter.h"
#include "kalto/kaltoimage.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

Kalto::CKaltoImage bayerFrame(uint32_t w, uint32_t h)
{
    Kalto::CKaltoImage img;
    img.Reset(Kalto::PixelType_BayerRG12, w, h);
    auto* p = static_cast<uint16_t*>(img.GetBuffer());
    std::mt19937 rng(3);
    std::uniform_int_distribution<int> v(0, 4095);
    for (size_t i = 0; i < size_t(w) * h; ++i)
        p[i] = static_cast<uint16_t>(v(rng));
    return img;
}

void BM_BayerRG12ToRgb16AndBgra8(benchmark::State& state)
{
    const uint32_t w = 1920, h = 1200;
    const Kalto::CKaltoImage src = bayerFrame(w, h);
    Kalto::CImageFormatConverter rgb16, bgra8;
    rgb16.OutputPixelFormat = Kalto::PixelType_RGB16packed;
    bgra8.OutputPixelFormat = Kalto::PixelType_BGRA8packed;
    std::vector<uint8_t> display(bgra8.GetBufferSizeForConversion(w, h));
    for (auto _ : state) {
        Kalto::CKaltoImage out16;
        rgb16.Convert(out16, src);
        bgra8.Convert(display.data(), display.size(), src);
        benchmark::DoNotOptimize(out16.GetBuffer());
        benchmark::DoNotOptimize(display.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * w * h);
}
BENCHMARK(BM_BayerRG12ToRgb16AndBgra8)->Unit(benchmark::kMillisecond);

void BM_BayerRG12ToRgb16Only(benchmark::State& state)
{
    const uint32_t w = 1920, h = 1200;
    const Kalto::CKaltoImage src = bayerFrame(w, h);
    Kalto::CImageFormatConverter rgb16;
    rgb16.OutputPixelFormat = Kalto::PixelType_RGB16packed;
    std::vector<uint8_t> out(rgb16.GetBufferSizeForConversion(w, h));
    for (auto _ : state) {
        rgb16.Convert(out.data(), out.size(), src);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_BayerRG12ToRgb16Only)->Unit(benchmark::kMillisecond);

}  // namespace
