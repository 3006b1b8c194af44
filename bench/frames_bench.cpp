// Whole-frame conversions as a host calls them, beside the closest conversion
// of a general-purpose peer library (libyuv, when built with it) at its
// default dispatch and with its processor features masked to SSE2 and to
// SSSE3, and beside memcpy of the same number of bytes (half of what the
// conversion reads plus writes: a copy of k bytes moves 2k). The library's
// own tier is the one start-up chose for this process (TCB_CPU_LEVEL forces
// one).
#include <TQColorSpace/TQColorSpace.h>
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#if TQCS_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

struct Frame {
  int32_t w, h;
  // Planes of the source and destination, sized per conversion.
  std::vector<uint8_t> s0, s1, s2, d0, d1, d2;
};

std::vector<uint8_t> Random(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> v(n);
  for (auto &b : v) b = static_cast<uint8_t>(rng());
  return v;
}

// A conversion: plane sizes per pixel (in eighths of a byte, so 4:2:0 chroma
// is 2) and the two calls.
struct Conversion {
  const char *name;
  std::vector<int> src, dst;  // eighths of a byte per pixel, per plane
  std::function<void(Frame &)> ours;
  std::function<void(Frame &)> peer;  // empty when the peer has no counterpart
};

const TCS_APIStu &Api() { return *TCS_GetAPIStuPtr(); }

#if TQCS_HAVE_LIBYUV
#define PEER(...) [](Frame &f) { __VA_ARGS__; }
#else
#define PEER(...) nullptr
#endif

// Shorthands for the planes: pointer and pitch.
#define S0(bpp) f.s0.data(), int64_t{f.w} * (bpp)
#define D0(bpp) f.d0.data(), int64_t{f.w} * (bpp)
#define YUV_S f.s0.data(), f.w, f.s1.data(), f.w / 2, f.s2.data(), f.w / 2
#define YUV_D f.d0.data(), f.w, f.d1.data(), f.w / 2, f.d2.data(), f.w / 2
// 16-bit planes: byte pitches for the library, sample pitches for the peer.
#define U16(v) reinterpret_cast<const uint16_t *>(v.data())
#define YUV16_S U16(f.s0), 2 * f.w, U16(f.s1), f.w, U16(f.s2), f.w
#define YUV16_S_PEER U16(f.s0), f.w, U16(f.s1), f.w / 2, U16(f.s2), f.w / 2

const std::vector<Conversion> &Conversions() {
  static const std::vector<Conversion> all = {
      {"RGB24_to_YUV420", {24}, {8, 2, 2},
       [](Frame &f) {
         Api().pRGB24->TCS_RGB24_2_YUV420_Frame(YUV_D, S0(3), f.w, f.h, TCS_MATRIX_HD, 1, 0);
       },
       PEER(libyuv::RGB24ToI420(f.s0.data(), f.w * 3, YUV_D, f.w, f.h))},
      {"RGB32_to_YUV420", {32}, {8, 2, 2},
       [](Frame &f) {
         Api().pRGB32->TCS_RGB32_2_YUV420_Frame(YUV_D, S0(4), f.w, f.h, TCS_MATRIX_HD, 1, 0);
       },
       PEER(libyuv::ARGBToI420(f.s0.data(), f.w * 4, YUV_D, f.w, f.h))},
      {"YUV420_to_RGB32", {8, 2, 2}, {32},
       [](Frame &f) {
         Api().pYUV420->TCS_YUV420_2_RGB32_Frame(D0(4), YUV_S, f.w, f.h, TCS_MATRIX_HD, 1, 255,
                                                 0);
       },
       PEER(libyuv::I420ToARGB(YUV_S, f.d0.data(), f.w * 4, f.w, f.h))},
      {"YUV420_to_RGB24", {8, 2, 2}, {24},
       [](Frame &f) {
         Api().pYUV420->TCS_YUV420_2_RGB24_Frame(D0(3), YUV_S, f.w, f.h, TCS_MATRIX_HD, 1, 0);
       },
       PEER(libyuv::I420ToRGB24(YUV_S, f.d0.data(), f.w * 3, f.w, f.h))},
      {"YUV422_to_RGB32", {8, 4, 4}, {32},
       [](Frame &f) {
         Api().pYUV422->TCS_YUV422_2_RGB32_Frame(D0(4), YUV_S, f.w, f.h, TCS_MATRIX_HD, 1, 255,
                                                 0);
       },
       PEER(libyuv::I422ToARGB(YUV_S, f.d0.data(), f.w * 4, f.w, f.h))},
      // The peer has no packed 4:4:4 reader; its planar 4:4:4 one does the same work.
      {"YUVA_to_RGB32", {32}, {32},
       [](Frame &f) {
         Api().pYUVA->TCS_YUVA_2_RGB32_Frame(D0(4), S0(4), f.w, f.h, TCS_MATRIX_HD, 1, 0);
       },
       PEER(libyuv::I444ToARGB(f.s0.data(), f.w, f.s0.data() + f.s0.size() / 4, f.w,
                               f.s0.data() + f.s0.size() / 2, f.w, f.d0.data(), f.w * 4, f.w,
                               f.h))},
      {"YUYV_to_RGB32", {16}, {32},
       [](Frame &f) {
         Api().pYUV16->TCS_YUV16_2_RGB32_Frame(D0(4), S0(2), f.w, f.h, TCS_MATRIX_HD, 1, 1, 255,
                                               0);
       },
       PEER(libyuv::YUY2ToARGB(f.s0.data(), f.w * 2, f.d0.data(), f.w * 4, f.w, f.h))},
      {"UYVY_to_RGB32", {16}, {32},
       [](Frame &f) {
         Api().pYUV16->TCS_YUV16_2_RGB32_Frame(D0(4), S0(2), f.w, f.h, TCS_MATRIX_HD, 1, 0, 255,
                                               0);
       },
       PEER(libyuv::UYVYToARGB(f.s0.data(), f.w * 2, f.d0.data(), f.w * 4, f.w, f.h))},
      {"RGB32_to_YUYV", {32}, {16},
       [](Frame &f) {
         Api().pRGB32->TCS_RGB32_2_YUV16_Frame(D0(2), S0(4), f.w, f.h, TCS_MATRIX_HD, 1, 1, 0);
       },
       PEER(libyuv::ARGBToYUY2(f.s0.data(), f.w * 4, f.d0.data(), f.w * 2, f.w, f.h))},
      {"YUV422_to_YUYV", {8, 4, 4}, {16},
       [](Frame &f) { Api().pYUV422->TCS_YUV422_2_YUV16_Frame(D0(2), YUV_S, f.w, f.h, 1, 0); },
       PEER(libyuv::I422ToYUY2(YUV_S, f.d0.data(), f.w * 2, f.w, f.h))},
      {"YUYV_to_YUV422", {16}, {8, 4, 4},
       [](Frame &f) { Api().pYUV16->TCS_YUV16_2_YUV422_Frame(YUV_D, S0(2), f.w, f.h, 1, 0); },
       PEER(libyuv::YUY2ToI422(f.s0.data(), f.w * 2, YUV_D, f.w, f.h))},
      {"YUYV_to_YUV420", {16}, {8, 2, 2},
       [](Frame &f) { Api().pYUV16->TCS_YUV16_2_YUV420_Frame(YUV_D, S0(2), f.w, f.h, 1, 0); },
       PEER(libyuv::YUY2ToI420(f.s0.data(), f.w * 2, YUV_D, f.w, f.h))},
      {"RGB24_to_RGB32", {24}, {32},
       [](Frame &f) {
         Api().pGeneral->TCS_Cr24_2_Cr32_Frame(D0(4), S0(3), f.w, f.h, 0, 255, 0);
       },
       PEER(libyuv::RGB24ToARGB(f.s0.data(), f.w * 3, f.d0.data(), f.w * 4, f.w, f.h))},
      {"RGB32_to_RGB24", {32}, {24},
       [](Frame &f) { Api().pGeneral->TCS_Cr32_2_Cr24_Frame(D0(3), S0(4), f.w, f.h, 0, 0); },
       PEER(libyuv::ARGBToRGB24(f.s0.data(), f.w * 4, f.d0.data(), f.w * 3, f.w, f.h))},
      {"RGB32_SwapRB", {32}, {32},
       [](Frame &f) { Api().pRGB32->TCS_RGB32_SwapRB_Frame(D0(4), S0(4), f.w, f.h, 0); },
       PEER(libyuv::ARGBToABGR(f.s0.data(), f.w * 4, f.d0.data(), f.w * 4, f.w, f.h))},
      {"RGB24_SwapRB", {24}, {24},
       [](Frame &f) { Api().pRGB24->TCS_RGB24_SwapRB_Frame(D0(3), S0(3), f.w, f.h, 0); },
       PEER(libyuv::RAWToRGB24(f.s0.data(), f.w * 3, f.d0.data(), f.w * 3, f.w, f.h))},
      // 10-bit planes (16-bit samples) to 8-bit planes of the same subsampling.
      {"YUV420_10bit_to_YUV420", {16, 4, 4}, {8, 2, 2},
       [](Frame &f) {
         Api().pYUV420->TCS_YUV420_10Bit_2_YUV420_Frame(YUV_D, YUV16_S, f.w, f.h, 0);
       },
       PEER(libyuv::I010ToI420(YUV16_S_PEER, YUV_D, f.w, f.h))},
      {"YUV422_10bit_to_YUV422", {16, 8, 8}, {8, 4, 4},
       [](Frame &f) {
         Api().pYUV422->TCS_YUV422_10Bit_2_YUV422_Frame(YUV_D, YUV16_S, f.w, f.h, 0);
       },
       PEER(libyuv::I210ToI422(YUV16_S_PEER, YUV_D, f.w, f.h))},
      {"RGB32_to_Gray", {32}, {8},
       [](Frame &f) {
         Api().pRGB32->TCS_RGB32_2_Gray_Frame(D0(1), S0(4), f.w, f.h, TCS_MATRIX_HD, 1, 0);
       },
       PEER(libyuv::ARGBToJ400(f.s0.data(), f.w * 4, f.d0.data(), f.w, f.w, f.h))},
  };
  return all;
}

Frame MakeFrame(const Conversion &c, int32_t w, int32_t h) {
  Frame f{w, h, {}, {}, {}, {}, {}, {}};
  std::vector<uint8_t> *src[] = {&f.s0, &f.s1, &f.s2}, *dst[] = {&f.d0, &f.d1, &f.d2};
  const size_t pixels = size_t(w) * h;
  for (size_t i = 0; i < c.src.size(); ++i) *src[i] = Random(pixels * c.src[i] / 8, 1 + i);
  for (size_t i = 0; i < c.dst.size(); ++i) dst[i]->assign(pixels * c.dst[i] / 8, 0);
  return f;
}

size_t BytesMoved(const Conversion &c, int32_t w, int32_t h) {
  size_t eighths = 0;
  for (int e : c.src) eighths += e;
  for (int e : c.dst) eighths += e;
  return size_t(w) * h * eighths / 8;
}

enum class Side { Ours, PeerDefault, PeerSSE2, PeerSSSE3, Memcpy };

void Run(benchmark::State &state, const Conversion &c, Side side, int32_t w, int32_t h) {
  Frame f = MakeFrame(c, w, h);
  const size_t moved = BytesMoved(c, w, h);
#if TQCS_HAVE_LIBYUV
  using namespace libyuv;
  const int mask = side == Side::PeerSSE2    ? (kCpuHasX86 | kCpuHasSSE2)
                   : side == Side::PeerSSSE3 ? (kCpuHasX86 | kCpuHasSSE2 | kCpuHasSSSE3)
                                             : -1;
  MaskCpuFlags(mask);
#endif
  std::vector<uint8_t> a(moved / 2), b(moved / 2);
  for (auto _ : state) {
    switch (side) {
      case Side::Ours:
        c.ours(f);
        break;
      case Side::Memcpy:
        std::memcpy(b.data(), a.data(), a.size());
        break;
      default:
        c.peer(f);
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(moved));
}

const bool g_registered = [] {
  const struct {
    const char *name;
    int32_t w, h;
  } sizes[] = {{"1080p", 1920, 1080}, {"2160p", 3840, 2160}};
  const struct {
    Side side;
    const char *name;
  } sides[] = {{Side::Ours, "tqcs"},
               {Side::PeerDefault, "libyuv"},
               {Side::PeerSSE2, "libyuv_sse2"},
               {Side::PeerSSSE3, "libyuv_ssse3"},
               {Side::Memcpy, "memcpy"}};
  for (const auto &size : sizes)
    for (const Conversion &c : Conversions())
      for (const auto &side : sides) {
        if (side.side != Side::Ours && side.side != Side::Memcpy && !c.peer) continue;
        const std::string name = std::string("frame/") + c.name + "/" + size.name + "/" + side.name;
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&c, s = side.side, w = size.w,
                                      h = size.h](benchmark::State &st) { Run(st, c, s, w, h); })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
      }
  return true;
}();

}  // namespace
