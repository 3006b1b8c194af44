// Prints a hash of what every driver slot of sub-tables 1 to 7 and every
// tiered kernel slot writes for seeded inputs, one line a slot, through the
// tables start-up built at the level in force (TCB_CPU_LEVEL). Every build of
// the library (the ELF one, the Windows one) must print the same lines at
// every level: the comparison needs hashes, not the frames themselves.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>

#include <cinttypes>
#include <cstdio>
#include <random>
#include <vector>

#include "base/formats.hpp"
#include "base/state.hpp"
#include "drivers/driver_harness.hpp"
#include "drivers/slot_calls.hpp"
#include "support/kernel_shapes.hpp"
#include "support/log_capture.hpp"
#include "video/descriptor_routes.hpp"

namespace tqcs::test {
namespace {

constexpr uint64_t kFnvBasis = 0xcbf29ce484222325ull;

uint64_t Fnv(uint64_t h, const std::vector<uint8_t> &bytes) {
  for (uint8_t b : bytes) h = (h ^ b) * 0x100000001b3ull;
  return h;
}

// Widths and heights cover odd sizes, single rows and the SIMD bodies' tails.
void HashDrivers() {
  for (const SlotRef &slot : AllDriverSlots()) {
    if (!calls::LayoutOf(slot)) continue;
    uint64_t h = kFnvBasis;
    uint32_t seed = 1;
    for (int32_t w : {1, 2, 7, 16, 33, 70})
      for (int32_t rows : {1, 2, 5, 8})
        for (int64_t flip = 0; flip < 2; ++flip)
          h = Fnv(h, calls::RunOnFreshImages(slot, w, rows, flip, seed += 3));
    std::printf("driver %s %016" PRIx64 "\n", slot.name.c_str(), h);
  }
}

// Buffers of sub-table 0 calls: generous for every code (the dispatcher
// derives planar planes from the first plane's pitch), seeded random bytes.
struct Buffer {
  Buffer(int64_t pitch, int32_t rows, uint32_t seed)
      : pitch(pitch), bytes(static_cast<size_t>(pitch * (2 * rows + 4))) {
    std::mt19937 rng(seed);
    for (uint8_t &b : bytes) b = static_cast<uint8_t>(rng());
  }
  uint8_t *p() { return bytes.data(); }
  int64_t pitch;
  std::vector<uint8_t> bytes;
};

uint64_t FnvValue(uint64_t h, uint64_t v) {
  std::vector<uint8_t> b(8);
  for (int i = 0; i < 8; ++i) b[i] = static_cast<uint8_t>(v >> (8 * i));
  return Fnv(h, b);
}

// A descriptor over three planes of one buffer (planar codes read all three).
TCS_FrameDesc Desc(Buffer &b, int32_t code, int32_t rows) {
  TCS_FrameDesc d{};
  d.plane[0] = {b.p(), b.pitch};
  d.plane[1] = {b.p() + b.pitch * rows, b.pitch / 2};
  d.plane[2] = {b.p() + b.pitch * rows + b.pitch / 2 * rows, b.pitch / 2};
  d.format = code;
  return d;
}

// The descriptor forms over the extended format space: every pair with a code
// outside 0 to 11 that converts, each plane in its own buffer, at sizes every
// layout takes (4:1:1 and V210 widths, field heights of 4:2:0) and some
// heights the field forms refuse.
void HashExtended() {
  const TCS_GeneralTable &g = *g_pColorSpaceAPI->pGeneral;
  std::vector<int32_t> codes;
  for (const FormatInfo &f : kFormats)
    if (f.packing != Packing::Reserved) codes.push_back(f.code);
  struct Image {
    std::vector<std::vector<uint8_t>> planes;
    TCS_FrameDesc desc{};
    Image(int32_t code, int32_t w, int32_t rows, uint32_t seed) {
      std::mt19937 rng(seed);
      desc.format = code;
      for (int k = 0; k < 3; ++k) {
        const int64_t pitch = 8 * w + 8 + 2 * k;
        planes.emplace_back(static_cast<size_t>(pitch * rows));
        for (uint8_t &b : planes.back()) b = static_cast<uint8_t>(rng());
        desc.plane[k] = {planes.back().data(), pitch};
      }
    }
    uint64_t Into(uint64_t h) const {
      for (const auto &p : planes) h = Fnv(h, p);
      return h;
    }
  };
  for (int32_t s : codes)
    for (int32_t d : codes) {
      if ((s <= 11 && d <= 11) || !video::lines::ChainOfCodes(s, d)) continue;
      char name[64];
      std::snprintf(name, sizeof name, "descriptor %d>%d", s, d);
      // Widths of whole V210 groups and 4:1:1 quads; heights of whole 4:2:0
      // fields and ones that no field form of 4:2:0 takes; every matrix
      // selector where the chain has a matrix.
      const bool matrices = video::lines::ChainOfCodes(s, d)->matrix;
      uint64_t h = kFnvBasis;
      uint32_t seed = 11;
      for (int32_t w : {12, 36})
        for (int32_t rows : {2, 6, 12})
          for (uint8_t flip = 0; flip < 2; ++flip)
            for (int32_t matrix : {0, 1, 3, 2}) {
              if (!matrices && matrix) break;
              Image src(s, w, rows, seed += 7), dst(d, w, rows, seed + 1);
              Image f1(d, w, rows / 2, seed + 2), f2(d, w, rows / 2, seed + 3);
              Image g1(s, w, rows / 2, seed + 4), g2(s, w, rows / 2, seed + 5);
              h = FnvValue(h, g.TCS_ColorConvFrameEx(&dst.desc, &src.desc, matrix, w, rows, flip));
              h = FnvValue(
                  h, g.TCS_ColorConvSplitEx(&f1.desc, &f2.desc, &src.desc, matrix, w, rows, flip));
              h = FnvValue(h, g.TCS_ColorConvComposeEx(&dst.desc, &g1.desc, &g2.desc, matrix, w,
                                                       rows, flip));
              h = f2.Into(f1.Into(dst.Into(h)));
            }
      std::printf("general %s %016" PRIx64 "\n", name, h);
    }
}

// Every operation of sub-table 0: the dispatchers over every code pair (and
// unknown codes) in their three forms, plain and by descriptor, the repackers,
// the field split and compose and the range scaling.
void HashGeneral() {
  const TCS_GeneralTable &g = *g_pColorSpaceAPI->pGeneral;
  constexpr int32_t kWidths[] = {1, 2, 7, 16, 33};
  constexpr int32_t kHeights[] = {1, 2, 5, 8};
  auto each = [&](const char *name, auto call) {
    uint64_t h = kFnvBasis;
    uint32_t seed = 7;
    for (int32_t w : kWidths)
      for (int32_t rows : kHeights)
        for (uint8_t flip = 0; flip < 2; ++flip) h = call(h, w, rows, flip, seed += 5);
    std::printf("general %s %016" PRIx64 "\n", name, h);
  };
  for (int32_t s = -1; s <= 11; ++s)
    for (int32_t d = -1; d <= 11; ++d) {
      char name[64];
      std::snprintf(name, sizeof name, "dispatch %d>%d", s, d);
      each(name, [&](uint64_t h, int32_t w, int32_t rows, uint8_t flip, uint32_t seed) {
        for (int32_t matrix : {0, 1, 2, 3}) {
          const int64_t pitch = 4 * w + 6;
          Buffer src(pitch, rows, seed), dst(pitch + 2, rows, seed + 1);
          Buffer f1(pitch + 4, rows, seed + 2), f2(pitch + 6, rows, seed + 3);
          h = FnvValue(h, g.TCS_ColorConvFrame(dst.p(), dst.pitch, d, src.p(), src.pitch, s, matrix,
                                               w, rows, flip));
          h = FnvValue(h, g.TCS_ColorConvSplit(f1.p(), f1.pitch, f2.p(), f2.pitch, d, src.p(),
                                               src.pitch, s, matrix, w, rows, flip));
          h = Fnv(Fnv(Fnv(h, dst.bytes), f1.bytes), f2.bytes);
          h = FnvValue(h, g.TCS_ColorConvCompose(dst.p(), dst.pitch, d, f1.p(), f1.pitch, f2.p(),
                                                 f2.pitch, s, matrix, w, rows, flip));
          h = Fnv(h, dst.bytes);
          const TCS_FrameDesc dd = Desc(dst, d, rows), sd = Desc(src, s, rows);
          const TCS_FrameDesc d1 = Desc(f1, d, rows), d2 = Desc(f2, d, rows);
          const TCS_FrameDesc s1 = Desc(f1, s, rows), s2 = Desc(f2, s, rows);
          h = FnvValue(h, g.TCS_ColorConvFrameEx(&dd, &sd, matrix, w, rows, flip));
          h = FnvValue(h, g.TCS_ColorConvSplitEx(&d1, &d2, &sd, matrix, w, rows, flip));
          h = FnvValue(h, g.TCS_ColorConvComposeEx(&dd, &s1, &s2, matrix, w, rows, flip));
          h = Fnv(Fnv(Fnv(h, dst.bytes), f1.bytes), f2.bytes);
        }
        return h;
      });
    }
  HashExtended();
  // The repack triples: frame, split, compose, with each option value.
  auto triple = [&](const char *name, auto frame, auto split, auto compose,
                    std::vector<std::vector<int64_t>> options) {
    each(name, [&](uint64_t h, int32_t w, int32_t rows, uint8_t flip, uint32_t seed) {
      for (std::vector<int64_t> o : options) {
        o.push_back(flip);
        const int64_t pitch = 4 * w + 3;
        Buffer src(pitch, rows, seed), dst(pitch + 1, rows, seed + 1);
        Buffer f1(pitch + 2, rows, seed + 2), f2(pitch + 5, rows, seed + 3);
        InvokeWithPlanes(frame, {{dst.p(), dst.pitch}, {src.p(), src.pitch}}, w, rows, o);
        InvokeWithPlanes(split, {{f1.p(), f1.pitch}, {f2.p(), f2.pitch}, {src.p(), src.pitch}}, w,
                         rows, o);
        h = Fnv(Fnv(Fnv(h, dst.bytes), f1.bytes), f2.bytes);
        InvokeWithPlanes(compose, {{dst.p(), dst.pitch}, {f1.p(), f1.pitch}, {f2.p(), f2.pitch}}, w,
                         rows, o);
        h = Fnv(h, dst.bytes);
      }
      return h;
    });
  };
  triple("Cr32_Split_Channel", g.TCS_Cr32_Split_Channel_Frame, g.TCS_Cr32_Split_Channel_Split,
         g.TCS_Cr32_Split_Channel_Compose, {{-1}, {0}, {1}, {2}, {3}, {4}});
  triple("Cr24_2_Cr32", g.TCS_Cr24_2_Cr32_Frame, g.TCS_Cr24_2_Cr32_Split, g.TCS_Cr24_2_Cr32_Compose,
         {{0, 0}, {0, 200}, {1, 255}, {2, 17}});
  triple("Cr32_2_Cr24", g.TCS_Cr32_2_Cr24_Frame, g.TCS_Cr32_2_Cr24_Split, g.TCS_Cr32_2_Cr24_Compose,
         {{0}, {1}, {2}});
  each("SplitFrame+ComposeFields",
       [&](uint64_t h, int32_t w, int32_t rows, uint8_t flip, uint32_t seed) {
         for (int32_t bytes : {-1, 0, 1, 2, 3, 4, 5}) {
           const int64_t pitch = 4 * w + 3;
           Buffer src(pitch, rows, seed), dst(pitch + 1, rows, seed + 1);
           Buffer f1(pitch + 2, rows, seed + 2), f2(pitch + 5, rows, seed + 3);
           h = FnvValue(h, g.TCS_SplitFrame(f1.p(), f1.pitch, f2.p(), f2.pitch, src.p(), src.pitch,
                                            w, rows, bytes, flip));
           h = Fnv(Fnv(h, f1.bytes), f2.bytes);
           h = FnvValue(h, g.TCS_ComposeFields(dst.p(), dst.pitch, f1.p(), f1.pitch, f2.p(),
                                               f2.pitch, w, rows, bytes, flip));
           h = Fnv(h, dst.bytes);
         }
         return h;
       });
  for (int32_t code = -1; code <= 11; ++code) {
    char name[64];
    std::snprintf(name, sizeof name, "range %d", code);
    each(name, [&](uint64_t h, int32_t w, int32_t rows, uint8_t flip, uint32_t seed) {
      const int64_t pitch = 4 * w + 9;
      Buffer src(pitch, rows, seed), dst(pitch + 3, rows, seed + 1);
      g.TCS_RangeCompressFrame(dst.p(), dst.pitch, src.p(), src.pitch, code, w, rows, flip);
      h = Fnv(h, dst.bytes);
      g.TCS_RangeExpandFrame(dst.p(), dst.pitch, src.p(), src.pitch, code, w, rows, flip);
      return Fnv(h, dst.bytes);
    });
  }
}

// Rows of a pitched source span the rows its kernel reads before and after.
void HashKernels(const TCS_KernelTable &table) {
  for (const SlotExtents &shape : kSlotExtents) {
    const int32_t slot = static_cast<int32_t>(shape.slot);
    const SlotSignature sig = SignatureOf(slot);
    uint64_t h = kFnvBasis;
    for (int32_t count : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 47, 64, 100, 255}) {
      std::mt19937 rng(static_cast<uint32_t>(slot * 1000 + count));
      std::vector<std::vector<uint8_t>> buffers(shape.rowCount);
      std::vector<std::vector<int16_t>> coefs(8, std::vector<int16_t>(8));
      CallArgs args;
      args.count = count;
      args.alpha = 200;
      for (auto &row : coefs) {
        for (int16_t &c : row) c = static_cast<int16_t>(rng());
        args.coefs.push_back(row.data());
      }
      for (size_t r = 0; r < shape.rowCount; ++r) {
        const int64_t bytes = static_cast<int64_t>(shape.rows[r].Bytes(count));
        const int64_t pitch = sig.pitched[r] ? bytes + 5 : 0;
        const int before = sig.pitched[r] && !sig.written[r] ? shape.srcRowsBefore : 0;
        buffers[r].resize(static_cast<size_t>((before + 2) * (bytes + 5)));
        for (uint8_t &b : buffers[r]) b = static_cast<uint8_t>(rng());
        args.rows.push_back(buffers[r].data() + before * pitch);
        args.pitches.push_back(pitch);
      }
      CallSlot(table, slot, args);
      for (size_t r = 0; r < buffers.size(); ++r)
        if (sig.written[r]) h = Fnv(h, buffers[r]);
    }
    std::printf("kernel %s %016" PRIx64 "\n", SlotName(slot), h);
  }
}

}  // namespace
}  // namespace tqcs::test

int main() {
  using namespace tqcs;
  // A forced level this processor lacks would run instructions it does not have.
  const uint32_t level = TCB_GetCPUInsHigh();
  if (level >= 1 && level <= 4 && level > TCB_GetCPUInsHighDetected()) {
    std::printf("level %u is above this processor's: not run\n", level);
    return 77;
  }
  test::LogCapture quiet;  // refusals of the odd sizes stay off stderr
  if (!TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr)) return 1;
  std::printf("level %u\n", level);
  test::HashDrivers();
  test::HashGeneral();
  test::HashKernels(*g_pColorSpaceAPI->pKernel);
  return 0;
}
