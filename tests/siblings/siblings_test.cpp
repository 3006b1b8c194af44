// The sibling stand-ins: TQCPUBase's level, null test and log; TQMemProc's
// copies, fills, extraction and scaling arithmetic, and the parity of its code
// paths.
#include <TQCPUBase.h>
#include <TQMemProc.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "support/page_guard.hpp"

namespace {

// Sets (or, with null, removes) a variable of the process environment.
void SetEnv(const char *name, const char *value) {
#if defined(_WIN32)
  _putenv_s(name, value ? value : "");
#else
  value ? (void)setenv(name, value, 1) : (void)unsetenv(name);
#endif
}

class EnvVar {
 public:
  EnvVar(const char *name, const char *value) : name_(name) {
    if (const char *old = std::getenv(name)) old_ = old, had_ = true;
    SetEnv(name, value);
  }
  ~EnvVar() { SetEnv(name_, had_ ? old_.c_str() : nullptr); }

 private:
  const char *name_;
  std::string old_;
  bool had_ = false;
};

TEST(TQCPUBase, LevelOverrideAcceptsAnyNumber) {
  for (const char *v : {"0", "1", "4", "5", "9"}) {
    EnvVar env("TCB_CPU_LEVEL", v);
    EXPECT_EQ(TCB_GetCPUInsHigh(), static_cast<uint32_t>(std::atoi(v)));
  }
  EnvVar garbage("TCB_CPU_LEVEL", "fast");
  EXPECT_EQ(TCB_GetCPUInsHigh(), TCB_GetCPUInsHighDetected());
  EXPECT_LE(TCB_GetCPUInsHighDetected(), 4u);
}

TEST(TQCPUBase, NullPointerTestLooksAtTheLeadingRunOnly) {
  void *run[4] = {&run, &run, nullptr, &run};
  EXPECT_FALSE(TCB_HasNullPointer(run, 2));
  EXPECT_TRUE(TCB_HasNullPointer(run, 3));
  EXPECT_FALSE(TCB_HasNullPointer(run, 0));
  EXPECT_TRUE(TCB_HasNullPointer(nullptr, 1));
}

TEST(TQCPUBase, LogWritesOneUtf8LineAtOrAboveTheThreshold) {
  EnvVar threshold("TCB_LOG_LEVEL", "1");
  testing::internal::CaptureStderr();
  TCB_WriteLog(0, u"Unit", u"Op()", u"%s", u"hidden");
  TCB_WriteLog(3, u"TQVideoColorAPI", u"TCS_X_Frame()", u"%s", u"Out of Memory \u00e9");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[TQ 3] TQVideoColorAPI TCS_X_Frame(): Out of Memory \xc3\xa9\n");
}

TEST(TQMemProc, PlaneCopyHonoursFlip) {
  const std::vector<uint8_t> src = {1, 2, 9, 3, 4, 9, 5, 6, 9};  // 3 rows of 2, pitch 3
  std::vector<uint8_t> dst(6, 0);
  g_pMemProcAPI->pMem->TMP_PlaneCopy(dst.data(), 2, src.data(), 3, 2, 3, 1);
  EXPECT_EQ(dst, (std::vector<uint8_t>{5, 6, 3, 4, 1, 2}));
  g_pMemProcAPI->pMem->TMP_PlaneCopy(dst.data(), 2, src.data(), 3, 2, 3, 0);
  EXPECT_EQ(dst, (std::vector<uint8_t>{1, 2, 3, 4, 5, 6}));
}

TEST(TQMemProc, FillExtractAndSwap) {
  std::vector<uint8_t> plane(8, 0);
  g_pMemProcAPI->pFill->TMP_PlaneFill(plane.data(), 4, 3, 255, 2);
  EXPECT_EQ(plane, (std::vector<uint8_t>{255, 255, 255, 0, 255, 255, 255, 0}));

  const uint8_t pixels[8] = {10, 11, 12, 13, 20, 21, 22, 23};
  uint8_t alpha[2] = {};
  g_pMemProcAPI->pMem->TMP_ExtractChannel_Row(alpha, pixels, 2, 3);
  EXPECT_EQ(alpha[0], 13);
  EXPECT_EQ(alpha[1], 23);

  uint8_t swapped[8] = {};
  g_pMemProcAPI->pMem->TMP_YUV16_Swap_Row(swapped, pixels, 4);
  EXPECT_EQ(std::vector<uint8_t>(swapped, swapped + 8),
            (std::vector<uint8_t>{11, 10, 13, 12, 21, 20, 23, 22}));

  uint8_t rgb24[6] = {};
  g_pMemProcAPI->pPixel->TMP_RGB32_2_RGB24_Row(rgb24, pixels, 2);
  EXPECT_EQ(std::vector<uint8_t>(rgb24, rgb24 + 6), (std::vector<uint8_t>{10, 11, 12, 20, 21, 22}));
}

TEST(TQMemProc, RangeScalingRoundsToNearestAndClamps) {
  const uint8_t in[6] = {0, 16, 128, 235, 240, 255};
  uint8_t out[6];
  // Full to legal, luma: x 219/255 + 16.
  g_pMemProcAPI->pPixel->TMP_Scale_Run(out, in, 14071, 512, 6);
  EXPECT_EQ(std::vector<uint8_t>(out, out + 6), (std::vector<uint8_t>{16, 30, 126, 218, 222, 235}));
  // Legal to full, luma: (x - 16) x 255/219, clamped.
  g_pMemProcAPI->pPixel->TMP_Scale_Run(out, in, 19077, -596, 6);
  EXPECT_EQ(std::vector<uint8_t>(out, out + 6), (std::vector<uint8_t>{0, 0, 130, 255, 255, 255}));
}

// ---------------------------------------------------------------------------
// Every code path gives the portable path's bytes.

using tqcs::test::Guard;
using tqcs::test::PageGuarded;

const char *const kSimdPaths[] = {"sse2", "ssse3", "avx2"};

// Coefficients of one call: a channel and four (gain, offset) pairs.
struct Params {
  int32_t channel = 0;
  int16_t gain[4] = {};
  int16_t offset[4] = {};
};

// Every third call extreme coefficients, the others random over the whole
// int16 range.
Params MakeParams(std::mt19937 &rng, int index) {
  static const int16_t kExtremes[][2] = {{-32768, -32768}, {32767, 32767}, {-32768, 32767},
                                         {32767, -32768},  {0, 0},         {16384, 0},
                                         {14071, 512},     {19077, -596},  {-1, 32767}};
  Params p;
  p.channel = index % 4;
  std::uniform_int_distribution<int> any(-32768, 32767);
  for (int i = 0; i < 4; ++i) {
    const auto &e = kExtremes[(index / 3 + i) % std::size(kExtremes)];
    const bool extreme = index % 3 == 0;
    p.gain[i] = extreme ? e[0] : static_cast<int16_t>(any(rng));
    p.offset[i] = extreme ? e[1] : static_cast<int16_t>(any(rng));
  }
  return p;
}

// Random bytes, or one of the extreme patterns.
void FillSource(uint8_t *p, int64_t n, std::mt19937 &rng, int index) {
  static const uint8_t kPattern[] = {0, 255, 1, 254, 127, 128, 255, 0};
  for (int64_t i = 0; i < n; ++i) {
    switch (index / 3 % 4) {
      case 0:
        p[i] = 0;
        break;
      case 1:
        p[i] = 255;
        break;
      case 2:
        p[i] = kPattern[i % 8];
        break;
      default:
        p[i] = static_cast<uint8_t>(rng());
    }
  }
}

// A row routine of one path over `n` items: the bytes it reads and writes.
struct RowRoutine {
  const char *name;
  int64_t (*srcBytes)(int32_t n);
  int64_t (*dstBytes)(int32_t n);
  void (*run)(const TMP_APIStu &api, uint8_t *dst, const uint8_t *src, int32_t n, const Params &p);
};

int64_t Pixels32(int32_t n) { return 4 * int64_t{std::max(n, 0)}; }
int64_t Pixels24(int32_t n) { return 3 * int64_t{std::max(n, 0)}; }
int64_t Bytes(int32_t n) { return std::max(n, 0); }
int64_t Pairs(int32_t n) { return 4 * int64_t{std::max(n / 2, 0)}; }

const RowRoutine kRowRoutines[] = {
    {"ExtractChannel_Row", Pixels32, Bytes,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &p) {
       a.pMem->TMP_ExtractChannel_Row(d, s, n, p.channel);
     }},
    {"ExtractChannel_Plane", Pixels32, Bytes,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &p) {
       a.pMem->TMP_ExtractChannel_Plane(d, 0, s, 0, n, p.channel, 1, 0);
     }},
    {"YUV16_Swap_Row", Pairs, Pairs,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &) {
       a.pMem->TMP_YUV16_Swap_Row(d, s, n);
     }},
    {"YUV16_Swap_Frame", Pairs, Pairs,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &) {
       a.pMem->TMP_YUV16_Swap_Frame(d, 0, s, 0, n, 1, 0);
     }},
    {"RGB32_2_RGB24_Row", Pixels32, Pixels24,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &) {
       a.pPixel->TMP_RGB32_2_RGB24_Row(d, s, n);
     }},
    {"Scale_Run", Bytes, Bytes,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &p) {
       a.pPixel->TMP_Scale_Run(d, s, p.gain[0], p.offset[0], n);
     }},
    {"Scale_YUV16", Bytes, Bytes,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &p) {
       a.pPixel->TMP_Scale_YUV16(d, 0, s, 0, p.gain, p.offset, n, 1, 0);
     }},
    {"Scale_32", Pixels32, Pixels32,
     [](const TMP_APIStu &a, uint8_t *d, const uint8_t *s, int32_t n, const Params &p) {
       a.pPixel->TMP_Scale_32(d, 0, s, 0, p.gain, p.offset, n, 1, 0);
     }},
};

std::vector<int32_t> RowCounts() {
  std::vector<int32_t> counts = {-1, -7, INT32_MIN, 1920, 4097, 65543};
  for (int32_t n = 0; n <= 130; ++n) counts.push_back(n);
  return counts;
}

// Destination bytes: 16 before (the offset's room) and 64 after the region,
// all seeded so that both paths start from the same bytes.
std::vector<uint8_t> Canaried(int64_t bytes, uint32_t seed) {
  std::vector<uint8_t> v(static_cast<size_t>(bytes) + 80);
  std::mt19937 rng(seed);
  for (auto &b : v) b = static_cast<uint8_t>(rng());
  return v;
}

class MemProcParity : public testing::TestWithParam<std::tuple<const char *, int>> {
 protected:
  void SetUp() override {
    simd_ = TMP_GetAPIStuForPath(std::get<0>(GetParam()));
    portable_ = TMP_GetAPIStuForPath("portable");
    if (!simd_) GTEST_SKIP() << "processor lacks the " << std::get<0>(GetParam()) << " path";
  }
  const RowRoutine &Routine() const { return kRowRoutines[std::get<1>(GetParam())]; }

  const TMP_APIStu *simd_ = nullptr;
  const TMP_APIStu *portable_ = nullptr;
};

// Sources ending at an unreadable page and starting just after one, every
// destination offset, canaries around the destination.
TEST_P(MemProcParity, RowsMatchPortableWithinTheCallersBytes) {
  const RowRoutine &r = Routine();
  std::mt19937 rng(1234);
  int index = 0;
  for (int32_t n : RowCounts()) {
    const int64_t in = r.srcBytes(n), out = r.dstBytes(n);
    PageGuarded endsAtGuard(static_cast<size_t>(in)), startsAfterGuard(in + 16, Guard::Before);
    for (int offset = 0; offset < 16; ++offset, ++index) {
      const Params p = MakeParams(rng, index);
      for (const uint8_t *src : {endsAtGuard.data(), startsAfterGuard.data() + offset}) {
        FillSource(const_cast<uint8_t *>(src), in, rng, index);
        std::vector<uint8_t> expect = Canaried(out, index), got = expect;
        const std::vector<uint8_t> before = expect;
        r.run(*portable_, expect.data() + offset, src, n, p);
        r.run(*simd_, got.data() + offset, src, n, p);
        ASSERT_EQ(got, expect) << r.name << " count " << n << " offset " << offset;
        ASSERT_TRUE(
            std::equal(expect.begin() + offset + out, expect.end(), before.begin() + offset + out))
            << "written past the destination: count " << n;
      }
    }
  }
}

// Each routine also runs with the destination on its source row.
TEST_P(MemProcParity, InPlaceMatchesPortable) {
  const RowRoutine &r = Routine();
  std::mt19937 rng(99);
  int index = 0;
  for (int32_t n : RowCounts()) {
    const int64_t in = std::max(r.srcBytes(n), r.dstBytes(n));
    for (int offset = 0; offset < 16; offset += 5, ++index) {
      const Params p = MakeParams(rng, index);
      std::vector<uint8_t> expect = Canaried(in, index);
      FillSource(expect.data() + offset, in, rng, index + 3);
      std::vector<uint8_t> got = expect;
      r.run(*portable_, expect.data() + offset, expect.data() + offset, n, p);
      r.run(*simd_, got.data() + offset, got.data() + offset, n, p);
      ASSERT_EQ(got, expect) << r.name << " count " << n << " offset " << offset;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Paths, MemProcParity,
    testing::Combine(testing::ValuesIn(kSimdPaths),
                     testing::Range(0, static_cast<int>(std::size(kRowRoutines)))),
    [](const auto &info) {
      return std::string(std::get<0>(info.param)) + "_" +
             kRowRoutines[std::get<1>(info.param)].name;
    });

// A frame routine of one path: row bytes of source and destination for a width.
struct FrameRoutine {
  const char *name;
  int64_t (*srcRow)(int32_t width);
  int64_t (*dstRow)(int32_t width);
  std::function<void(const TMP_APIStu &, uint8_t *, int64_t, const uint8_t *, int64_t, int32_t,
                     int32_t, uint8_t, const Params &)>
      run;
};

const FrameRoutine kFrameRoutines[] = {
    {"ExtractChannel_Plane", Pixels32, Bytes,
     [](const TMP_APIStu &a, uint8_t *d, int64_t dp, const uint8_t *s, int64_t sp, int32_t w,
        int32_t h, uint8_t flip, const Params &p) {
       a.pMem->TMP_ExtractChannel_Plane(d, dp, s, sp, w, p.channel, h, flip);
     }},
    {"YUV16_Swap_Frame", Pairs, Pairs,
     [](const TMP_APIStu &a, uint8_t *d, int64_t dp, const uint8_t *s, int64_t sp, int32_t w,
        int32_t h, uint8_t flip,
        const Params &) { a.pMem->TMP_YUV16_Swap_Frame(d, dp, s, sp, w, h, flip); }},
    {"Scale_YUV16", Bytes, Bytes,
     [](const TMP_APIStu &a, uint8_t *d, int64_t dp, const uint8_t *s, int64_t sp, int32_t w,
        int32_t h, uint8_t flip, const Params &p) {
       a.pPixel->TMP_Scale_YUV16(d, dp, s, sp, p.gain, p.offset, w, h, flip);
     }},
    {"Scale_32", Pixels32, Pixels32,
     [](const TMP_APIStu &a, uint8_t *d, int64_t dp, const uint8_t *s, int64_t sp, int32_t w,
        int32_t h, uint8_t flip,
        const Params &p) { a.pPixel->TMP_Scale_32(d, dp, s, sp, p.gain, p.offset, w, h, flip); }},
};

// Frames of a few rows, both flips, source pitches of either sign (the row
// with the highest address ends at an unreadable page), padded destinations.
TEST(MemProcFrameParity, FramesMatchPortable) {
  const TMP_APIStu *portable = TMP_GetAPIStuForPath("portable");
  std::mt19937 rng(7);
  int index = 0;
  for (const char *path : kSimdPaths) {
    const TMP_APIStu *simd = TMP_GetAPIStuForPath(path);
    if (!simd) continue;
    for (const FrameRoutine &r : kFrameRoutines) {
      for (int32_t width : {0, 1, 7, 16, 33, 70, 131}) {
        for (int32_t height : {0, 1, 2, 5}) {
          for (int sign : {1, -1}) {
            for (uint8_t flip : {0, 1}) {
              const int64_t in = r.srcRow(width), out = r.dstRow(width);
              const int64_t srcPitch = sign * (in + width % 5), dstPitch = out + 3;
              const int64_t span = std::max<int64_t>(height - 1, 0) * (in + width % 5) + in;
              PageGuarded source(static_cast<size_t>(span));
              FillSource(source.data(), span, rng, index + 3);
              const uint8_t *first = sign > 0 ? source.data() : source.data() + span - in;  // row 0
              const Params p = MakeParams(rng, index++);
              std::vector<uint8_t> expect = Canaried(dstPitch * height, index), got = expect;
              r.run(*portable, expect.data(), dstPitch, first, srcPitch, width, height, flip, p);
              r.run(*simd, got.data(), dstPitch, first, srcPitch, width, height, flip, p);
              ASSERT_EQ(got, expect) << path << " " << r.name << " " << width << "x" << height
                                     << " pitch sign " << sign << " flip " << int{flip};
            }
          }
        }
      }
    }
  }
}

// The path chosen at load: the one TMP_CPU_PATH names if the processor has it,
// otherwise the most capable one.
TEST(MemProcPaths, LoadTimeChoiceHonoursTheOverride) {
  const TMP_APIStu *best = nullptr;
  for (const char *path : {"portable", "sse2", "ssse3", "avx2"})
    if (const TMP_APIStu *api = TMP_GetAPIStuForPath(path)) best = api;
  ASSERT_NE(TMP_GetAPIStuForPath("sse2"), nullptr);
  EXPECT_EQ(TMP_GetAPIStuForPath("avx512"), nullptr);
  const char *forced = std::getenv("TMP_CPU_PATH");
  const TMP_APIStu *named = forced ? TMP_GetAPIStuForPath(forced) : nullptr;
  EXPECT_EQ(g_pMemProcAPI, named ? named : best);
  EXPECT_EQ(TMP_GetAPIStuPtr(), g_pMemProcAPI);
}

}  // namespace
