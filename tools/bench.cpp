// tqcs bench: throughput of every routed conversion. Each pair is warmed up,
// then timed over at least --reps runs and at least a quarter of a second, so
// that a run slowed by another process on a shared machine moves neither the
// median nor, much, the spread reported beside it (the interquartile range).
#include <algorithm>
#include <chrono>
#include <cstdio>

#include "cli.hpp"
#include "engine.hpp"
#include "thread_pool.hpp"

namespace tqcs {

int RunBench(const Args &args) {
  std::string error;
  std::optional<Size> size;
  std::optional<Format> from, to;
  std::optional<int32_t> matrix;
  int threads = 1;
  if (!ReadSize(args, size, error) || !ReadFormat(args, "from", from, error) ||
      !ReadFormat(args, "to", to, error) || !ReadMatrix(args, matrix, error) ||
      !ReadThreads(args, threads, error))
    return Fail(error);
  int reps = 15;
  if (const std::string *text = args.Get("reps")) {
    const auto n = ParsePositive(*text);
    if (!n) return Fail("bad --reps '" + *text + "'");
    reps = *n;
  }
  for (const auto &format : {from, to})
    if (format && !IsLibraryCode(*format))
      return Fail(std::string("bench measures the library's formats, not ") + Info(*format).name);
  const Size s = size.value_or(Size{1920, 1080});
  if (s.width % 4 != 0 || s.height % 4 != 0) return Fail("the bench size must be a multiple of 4");
  // The dispatcher's codes by default; every library layout (progressive
  // 4:2:0) when a format is named.
  std::vector<int32_t> codes;
  for (const Format format : AllFormats())
    if (IsLibraryCode(format) && (from || to || format < kLibraryFormats))
      codes.push_back(format == kYuv420pFrame && !from && !to ? kYuv420p : format);
  const TCS_APIStu *api = CheckedApi();
  if (api == nullptr) return 1;
  const Engine engine(api);
  const int32_t m = matrix.value_or(DefaultMatrix(s.width, s.height));
  ThreadPool pool(threads);
  const size_t frames = static_cast<size_t>(pool.Size());
  std::printf(
      "%dx%d, matrix %s, %d thread(s) converting %zu frame(s) at once, after a warm-up\n"
      "median of at least %d runs and 0.25 s; spread: the middle half of the runs\n",
      s.width, s.height, MatrixName(m), pool.Size(), frames, reps);
  std::printf("%-16s %-16s %10s %8s %6s %8s\n", "from", "to", "frames/s", "GB/s", "runs", "spread");
  for (const int32_t a : codes)
    for (const int32_t b : codes) {
      if ((from && *from != a) || (to && *to != b) || !engine.Routed(a, b, {m, s.width, s.height}))
        continue;
      std::vector<Image> src(frames, Image(static_cast<Format>(a), s.width, s.height));
      std::vector<Image> dst(frames, Image(static_cast<Format>(b), s.width, s.height));
      for (Image &image : src)
        for (size_t i = 0; i < image.data.size(); ++i)
          image.data[i] = static_cast<uint8_t>(i * 7 + i / 4093);
      const auto run = [&] {
        const auto t = std::chrono::steady_clock::now();
        pool.ParallelFor(frames,
                         [&](size_t i) { engine.Dispatch(src[i], dst[i], m, false, false); });
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
      };
      for (int w = 0; w < 3; ++w) run();  // caches, pages and the pool's threads warmed
      std::vector<double> seconds;
      for (double total = 0; static_cast<int>(seconds.size()) < reps || total < 0.25;)
        total += seconds.emplace_back(run());
      std::sort(seconds.begin(), seconds.end());
      const size_t n = seconds.size();
      const double median = seconds[n / 2];
      const double fps = static_cast<double>(frames) / median;
      const double bytes = static_cast<double>(src[0].data.size() + dst[0].data.size());
      std::printf("%-16s %-16s %10.1f %8.2f %6zu %7.1f%%\n", Info(static_cast<Format>(a)).name,
                  Info(static_cast<Format>(b)).name, fps, fps * bytes / 1e9, n,
                  100 * (seconds[3 * n / 4] - seconds[n / 4]) / median);
    }
  return 0;
}

}  // namespace tqcs
