#include "TQMemProc.h"

#include <cpuid.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "tiers.hpp"

namespace tqmp {
namespace {

void MemCopy(uint8_t *dst, const uint8_t *src, int64_t bytes) {
  if (bytes > 0) std::memmove(dst, src, static_cast<size_t>(bytes));
}

// Starts the destination at its last row and negates its pitch when flipping.
void Orient(uint8_t *&dst, int64_t &pitch, int32_t rows, uint8_t flip) {
  if (flip && rows > 0) {
    dst += pitch * (rows - 1);
    pitch = -pitch;
  }
}

void PlaneCopy(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
               int32_t bytesPerRow, int32_t rows, uint8_t flip) {
  Orient(dst, dstPitch, rows, flip);
  for (int32_t y = 0; y < rows; ++y, dst += dstPitch, src += srcPitch)
    MemCopy(dst, src, bytesPerRow);
}

void PlaneFill(uint8_t *dst, int64_t dstPitch, int32_t bytesPerRow, uint8_t value, int32_t rows) {
  if (bytesPerRow <= 0) return;
  for (int32_t y = 0; y < rows; ++y, dst += dstPitch)
    std::memset(dst, value, static_cast<size_t>(bytesPerRow));
}

// One code path's tables: the frame routines walk rows (flip applied to the
// destination) and hand each to the path's row routine.
template <int kPath>
struct PathTables {
  static constexpr RowSet kRows = RowsOfPath(kPath);

  static void ExtractChannelPlane(uint8_t *dst, int64_t dstPitch, const uint8_t *src,
                                  int64_t srcPitch, int64_t width, int32_t channel, int32_t height,
                                  uint8_t flip) {
    if (!dst || !src || width <= 0 || height <= 0 || channel < 0 || channel > 3) return;
    Orient(dst, dstPitch, height, flip);
    for (int32_t y = 0; y < height; ++y, dst += dstPitch, src += srcPitch)
      kRows.ExtractChannel_Row.fn(dst, src, static_cast<int32_t>(width), channel);
  }

  static void SwapFrame(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                        int64_t width, int32_t height, uint8_t flip) {
    if (!dst || !src || width <= 0 || height <= 0) return;
    Orient(dst, dstPitch, height, flip);
    for (int32_t y = 0; y < height; ++y, dst += dstPitch, src += srcPitch)
      kRows.YUV16_Swap_Row.fn(dst, src, static_cast<int32_t>(width));
  }

  static void ScaleRows(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                        const int16_t *gain, const int16_t *offset, int32_t rowBytes,
                        int32_t height, uint8_t flip) {
    Orient(dst, dstPitch, height, flip);
    for (int32_t y = 0; y < height; ++y, dst += dstPitch, src += srcPitch)
      kRows.Scale_Row.fn(dst, src, gain, offset, rowBytes);
  }

  static void Scale32(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                      const int16_t *gain, const int16_t *offset, int32_t width, int32_t height,
                      uint8_t flip) {
    ScaleRows(dst, dstPitch, src, srcPitch, gain, offset, width > 0 ? 4 * width : 0, height, flip);
  }

  static inline constinit TMP_MemTable mem = {
      MemCopy, {},        PlaneCopy,           kRows.ExtractChannel_Row.fn, ExtractChannelPlane,
      nullptr, SwapFrame, kRows.YUV16_Swap_Row.fn};
  static inline constinit TMP_FillTable fill = {{}, PlaneFill};
  static inline constinit TMP_PixelTable pixel = {
      {}, ScaleRows, nullptr, Scale32, {}, kRows.RGB32_2_RGB24_Row.fn, {}, kRows.Scale_Run.fn};
  static inline constinit TMP_APIStu root = {&mem,    nullptr, &fill, nullptr,
                                             nullptr, nullptr, &pixel};
};

// Every path's root structure, in the order of kPathNames.
template <int... kPath>
constexpr std::array<TMP_APIStu *, kPaths> Roots(std::integer_sequence<int, kPath...>) {
  return {&PathTables<kPath>::root...};
}
constexpr std::array<TMP_APIStu *, kPaths> kPathRoots =
    Roots(std::make_integer_sequence<int, kPaths>{});

uint64_t ReadXcr0() {
  uint32_t eax = 0, edx = 0;
  __asm__ volatile("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
  return (static_cast<uint64_t>(edx) << 32) | eax;
}

// The most capable path the processor (and, for AVX2, the OS) supports. SSE2
// is part of x86-64.
int DetectedPath() {
  static const int path = [] {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx) || !(ecx & bit_SSSE3)) return 1;
    const bool ymmSaved = (ecx & bit_OSXSAVE) && (ecx & bit_AVX) && (ReadXcr0() & 6) == 6;
    if (ymmSaved && __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) && (ebx & bit_AVX2)) return 3;
    return 2;
  }();
  return path;
}

int PathNamed(const char *name) {
  for (int i = 0; name && i < kPaths; ++i)
    if (std::strcmp(name, kPathNames[i]) == 0) return i;
  return -1;
}

// Chosen once at load: the detected path, or the one TMP_CPU_PATH names if the
// processor has it (a more capable name is capped at the detected path).
[[gnu::constructor]] void ChoosePathAtLoad() {
  const int named = PathNamed(std::getenv("TMP_CPU_PATH"));
  const int detected = DetectedPath();
  g_pMemProcAPI = kPathRoots[named < 0 || named > detected ? detected : named];
}

}  // namespace
}  // namespace tqmp

extern "C" {
// The portable path until the load-time choice replaces it.
constinit TMP_APIStu *g_pMemProcAPI = tqmp::kPathRoots[0];
TMP_APIStu *TMP_GetAPIStuPtr(void) { return g_pMemProcAPI; }

TMP_APIStu *TMP_GetAPIStuForPath(const char *path) {
  const int i = tqmp::PathNamed(path);
  return i < 0 || i > tqmp::DetectedPath() ? nullptr : tqmp::kPathRoots[i];
}
}
