// Throughput of whole-frame conversions through the root structure, each
// against a plain copy of the same number of bytes measured in the same run
// (the memory-bus reference). Every benchmark first checks that the joined
// whole-image call and the row-by-row call give the same bytes.
#include <TQColorSpace/TQColorSpace.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "core/startup.hpp"

namespace {

constexpr int32_t kW = 1920, kH = 1080;

const TCS_APIStu &Api() {
  static const TCS_APIStu *api = [] {
    TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr);
    return TCS_GetAPIStuPtr();
  }();
  return *api;
}

std::vector<uint8_t> Random(size_t n) {
  std::mt19937 rng(1);
  std::vector<uint8_t> v(n);
  for (auto &b : v) b = static_cast<uint8_t>(rng());
  return v;
}

void Copy(benchmark::State &state, size_t bytes) {
  const auto src = Random(bytes);
  std::vector<uint8_t> dst(bytes);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), bytes);
    benchmark::DoNotOptimize(dst.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}

void BM_Copy_RGB24Frame(benchmark::State &state) { Copy(state, size_t{3} * kW * kH); }

void BM_RGB24_2_YUV16(benchmark::State &state) {
  const auto src = Random(size_t{3} * kW * kH);
  std::vector<uint8_t> joined(size_t{2} * kW * kH), rows(joined.size() + 2 * kH);
  auto &t = *Api().pRGB24;
  t.TCS_RGB24_2_YUV16_Frame(joined.data(), 2 * kW, src.data(), 3 * kW, kW, kH, TCS_MATRIX_HD, 0, 1,
                            0);
  t.TCS_RGB24_2_YUV16_Frame(rows.data(), 2 * kW + 2, src.data(), 3 * kW, kW, kH, TCS_MATRIX_HD, 0,
                            1, 0);
  for (int32_t y = 0; y < kH; ++y)
    if (std::memcmp(&joined[size_t(y) * 2 * kW], &rows[size_t(y) * (2 * kW + 2)], 2 * kW))
      state.SkipWithError("joined and row-by-row results differ");
  for (auto _ : state) {
    t.TCS_RGB24_2_YUV16_Frame(joined.data(), 2 * kW, src.data(), 3 * kW, kW, kH, TCS_MATRIX_HD, 0,
                              1, 0);
    benchmark::DoNotOptimize(joined.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(src.size()));
}

void BM_YUV420_2_RGB32(benchmark::State &state) {
  const auto y = Random(size_t{kW} * kH), u = Random(size_t{kW / 2} * (kH / 2)), v = u;
  std::vector<uint8_t> dst(size_t{4} * kW * kH);
  auto &t = *Api().pYUV420;
  for (auto _ : state) {
    t.TCS_YUV420_2_RGB32_Frame(dst.data(), 4 * kW, y.data(), kW, u.data(), kW / 2, v.data(), kW / 2,
                               kW, kH, TCS_MATRIX_HD, 1, 255, 0);
    benchmark::DoNotOptimize(dst.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(y.size() + u.size() + v.size()));
}

void BM_RGB24_2_YUV420(benchmark::State &state) {
  const auto src = Random(size_t{3} * kW * kH);
  std::vector<uint8_t> y(size_t{kW} * kH), u(size_t{kW / 2} * (kH / 2)), v(u.size());
  auto &t = *Api().pRGB24;
  for (auto _ : state) {
    t.TCS_RGB24_2_YUV420_Frame(y.data(), kW, u.data(), kW / 2, v.data(), kW / 2, src.data(), 3 * kW,
                               kW, kH, TCS_MATRIX_HD, 1, 0);
    benchmark::DoNotOptimize(y.data());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(src.size()));
}

BENCHMARK(BM_Copy_RGB24Frame)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RGB24_2_YUV16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_YUV420_2_RGB32)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RGB24_2_YUV420)->Unit(benchmark::kMillisecond);

}  // namespace
