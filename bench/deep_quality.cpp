// Round-trip quality of 8-bit 4:2:0: RGB pictures to 4:2:0 and back through
// this library's frame-sited and field-sited codes and through the peers
// (libswscale, libyuv) at the same matrix and full range, as the PSNR of the
// result against the original over all three channels. Every pairing of a
// way down with a way back is measured too, which tells whether a loss comes
// from making the chroma or from spreading it back.
//
// Usage: tqcs_deep_quality NAME=PATH=WIDTHxHEIGHT...  (PATH: raw R G B bytes)
// Writes markdown tables to stdout.
#include <TQColorSpace/TQColorSpace.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "deep_peers.hpp"

namespace {

struct Picture {
  std::string name;
  int w = 0, h = 0;
  std::vector<uint8_t> rgb;  // R G B a pixel, w * 3 bytes a row
};

// Bytes past the end of each buffer: libswscale's SIMD rows may store a
// little beyond the last pixel of a frame.
constexpr size_t kSlack = 64;

struct Yuv420 {
  int w, h;
  std::vector<uint8_t> y, u, v;
  Yuv420(int width, int height)
      : w(width),
        h(height),
        y(size_t(w) * h + kSlack),
        u(size_t(w / 2) * (h / 2) + kSlack),
        v(u.size()) {}
};

enum Matrix { kHD, kSD };

using Down = std::function<bool(const Picture &, Yuv420 &, Matrix)>;
using Up = std::function<bool(const Yuv420 &, std::vector<uint8_t> &, Matrix)>;
struct Way {
  const char *name;
  bool hd;  // also offered for BT.709 (libyuv's full-range forward is BT.601 only)
  Down down;
  Up up;
};

TCS_FrameDesc YuvDesc(const Yuv420 &p, int32_t code) {
  auto *self = const_cast<Yuv420 *>(&p);
  TCS_FrameDesc d{};
  d.plane[0] = {self->y.data(), p.w};
  d.plane[1] = {self->u.data(), p.w / 2};
  d.plane[2] = {self->v.data(), p.w / 2};
  d.format = code;
  return d;
}

TCS_FrameDesc RgbDesc(const std::vector<uint8_t> &rgb, int w) {
  TCS_FrameDesc d{};
  d.plane[0] = {const_cast<uint8_t *>(rgb.data()), int64_t{w} * 3};
  d.format = TCS_FORMAT_RGB24_SWAP;
  return d;
}

bool Convert(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, Matrix m, int w, int h) {
  return TCS_GetAPIStuPtr()->pGeneral->TCS_ColorConvFrameEx(
             &dst, &src, m == kHD ? TCS_MATRIX_HD : TCS_MATRIX_SD, w, h, 0) != 0;
}

Way Library(const char *name, int32_t code) {
  return {name, true,
          [=](const Picture &p, Yuv420 &out, Matrix m) {
            return Convert(YuvDesc(out, code), RgbDesc(p.rgb, p.w), m, p.w, p.h);
          },
          [=](const Yuv420 &in, std::vector<uint8_t> &rgb, Matrix m) {
            return Convert(RgbDesc(rgb, in.w), YuvDesc(in, code), m, in.w, in.h);
          }};
}

// Experiments on the way down, not what the library does: every pixel's Y,
// U and V through the library's rounded 4:4:4 conversion (code 4 to code 2),
// then each 4:2:0 chroma sample the mean of its two rows, taken either from
// the even column alone or through the co-sited [1 2 1] / 4 filter over
// columns 2i - 1, 2i and 2i + 1 (the edge repeats), rounded. The way back is
// code 11's.
Way Experiment(const char *name, bool filter) {
  return {name, true,
          [=](const Picture &p, Yuv420 &out, Matrix m) {
            std::vector<uint8_t> yuv(size_t(p.w) * p.h * 4);
            TCS_FrameDesc dst{};
            dst.plane[0] = {yuv.data(), int64_t{p.w} * 4};
            dst.format = TCS_FORMAT_YUVA;
            if (!Convert(dst, RgbDesc(p.rgb, p.w), m, p.w, p.h)) return false;
            auto at = [&](int x, int y, int c) {
              return int(yuv[(size_t(y) * p.w + std::clamp(x, 0, p.w - 1)) * 4 + c]);
            };
            for (int y = 0; y < p.h; ++y)
              for (int x = 0; x < p.w; ++x) out.y[size_t(y) * p.w + x] = uint8_t(at(x, y, 0));
            const int total = filter ? 8 : 2;
            for (int j = 0; j < p.h / 2; ++j)
              for (int i = 0; i < p.w / 2; ++i)
                for (int c = 1; c < 3; ++c) {
                  int sum = total / 2;
                  for (int y = 2 * j; y < 2 * j + 2; ++y)
                    sum += filter ? at(2 * i - 1, y, c) + 2 * at(2 * i, y, c) + at(2 * i + 1, y, c)
                                  : at(2 * i, y, c);
                  (c == 1 ? out.u : out.v)[size_t(j) * (p.w / 2) + i] = uint8_t(sum / total);
                }
            return true;
          },
          Library("", TCS_FORMAT_YUV420_FRAME).up};
}

#if TQCS_HAVE_FFMPEG
// libswscale between rgb24 and yuv420p, both full range, with the matrix's
// coefficients; `down_flags`/`up_flags` are added to SWS_BILINEAR.
bool Sws(int w, int h, AVPixelFormat from, const uint8_t *const src[], const int src_pitch[],
         AVPixelFormat to, uint8_t *const dst[], const int dst_pitch[], Matrix m, int flags) {
  SwsContext *ctx =
      sws_getContext(w, h, from, w, h, to, SWS_BILINEAR | flags, nullptr, nullptr, nullptr);
  if (!ctx) return false;
  const int *table = sws_getCoefficients(m == kHD ? SWS_CS_ITU709 : SWS_CS_ITU601);
  sws_setColorspaceDetails(ctx, table, 1, table, 1, 0, 1 << 16, 1 << 16);
  sws_scale(ctx, src, src_pitch, 0, h, dst, dst_pitch);
  sws_freeContext(ctx);
  return true;
}

Way Swscale(const char *name, int down_flags, int up_flags) {
  return {name, true,
          [=](const Picture &p, Yuv420 &out, Matrix m) {
            const uint8_t *src[] = {p.rgb.data()};
            const int src_pitch[] = {p.w * 3};
            uint8_t *dst[] = {out.y.data(), out.u.data(), out.v.data()};
            const int dst_pitch[] = {p.w, p.w / 2, p.w / 2};
            return Sws(p.w, p.h, AV_PIX_FMT_RGB24, src, src_pitch, AV_PIX_FMT_YUV420P, dst,
                       dst_pitch, m, down_flags);
          },
          [=](const Yuv420 &in, std::vector<uint8_t> &rgb, Matrix m) {
            const uint8_t *src[] = {in.y.data(), in.u.data(), in.v.data()};
            const int src_pitch[] = {in.w, in.w / 2, in.w / 2};
            uint8_t *dst[] = {rgb.data()};
            const int dst_pitch[] = {in.w * 3};
            return Sws(in.w, in.h, AV_PIX_FMT_YUV420P, src, src_pitch, AV_PIX_FMT_RGB24, dst,
                       dst_pitch, m, up_flags);
          }};
}
#endif

#if TQCS_HAVE_LIBYUV
// libyuv's full-range BT.601 ("J") pair; RAW is its name for R G B memory.
// The way back spreads chroma by repetition or, with `bilinear`, by its
// bilinear chroma filter (the U and V planes swapped with the VU constants
// give R G B order, as its own J420ToRAW does).
Way Libyuv(const char *name, bool bilinear) {
  return {
      name, false,
      [](const Picture &p, Yuv420 &out, Matrix m) {
        return m == kSD && libyuv::RAWToJ420(p.rgb.data(), p.w * 3, out.y.data(), p.w, out.u.data(),
                                             p.w / 2, out.v.data(), p.w / 2, p.w, p.h) == 0;
      },
      [=](const Yuv420 &in, std::vector<uint8_t> &rgb, Matrix m) {
        if (m != kSD) return false;
        if (!bilinear)
          return libyuv::J420ToRAW(in.y.data(), in.w, in.u.data(), in.w / 2, in.v.data(), in.w / 2,
                                   rgb.data(), in.w * 3, in.w, in.h) == 0;
        return libyuv::I420ToRGB24MatrixFilter(
                   in.y.data(), in.w, in.v.data(), in.w / 2, in.u.data(), in.w / 2, rgb.data(),
                   in.w * 3, &libyuv::kYvuJPEGConstants, in.w, in.h, libyuv::kFilterBilinear) == 0;
      }};
}
#endif

std::vector<Way> Ways() {
  std::vector<Way> ways = {Library("tqcs 11 (frame)", TCS_FORMAT_YUV420_FRAME),
                           Library("tqcs 9 (field)", TCS_FORMAT_YUV420)};
#if TQCS_HAVE_FFMPEG
  ways.push_back(Swscale("swscale", 0, 0));
  ways.push_back(Swscale("swscale accurate", SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP,
                         SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT));
#endif
#if TQCS_HAVE_LIBYUV
  ways.push_back(Libyuv("libyuv J", false));
  ways.push_back(Libyuv("libyuv J bilinear", true));
#endif
  return ways;
}

double Psnr(const std::vector<uint8_t> &a, const std::vector<uint8_t> &b) {
  double sum = 0;
  // a: the original; b may be longer (slack).
  for (size_t i = 0; i < a.size(); ++i) sum += double(a[i] - b[i]) * (a[i] - b[i]);
  const double mse = sum / double(a.size());
  return mse == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 / mse);
}

// The PSNR of `down` then `up` on one picture; NAN where a way refuses.
double RoundTrip(const Picture &p, const Way &down, const Way &up, Matrix m) {
  Yuv420 yuv(p.w, p.h);
  std::vector<uint8_t> back(p.rgb.size() + kSlack);
  if (!down.down(p, yuv, m) || !up.up(yuv, back, m)) return NAN;
  return Psnr(p.rgb, back);
}

bool Load(const std::string &arg, Picture &p) {
  const size_t a = arg.find('='), b = arg.rfind('='), x = arg.rfind('x');
  if (a == std::string::npos || a == b || x == std::string::npos || x < b) return false;
  p.name = arg.substr(0, a);
  p.w = std::stoi(arg.substr(b + 1, x - b - 1));
  p.h = std::stoi(arg.substr(x + 1));
  std::ifstream in(arg.substr(a + 1, b - a - 1), std::ios::binary);
  p.rgb.assign(std::istreambuf_iterator<char>(in), {});
  return p.w % 2 == 0 && p.h % 2 == 0 && p.rgb.size() == size_t(p.w) * p.h * 3;
}

void Cell(double v) { v == v ? std::printf(" %.2f |", v) : std::printf(" – |"); }

// One row a picture, one column a way (down and back the same way).
void SameWayTable(const std::vector<Picture> &pics, const std::vector<Way> &ways, Matrix m) {
  std::printf("| picture | size |");
  for (const Way &w : ways)
    if (m == kSD || w.hd) std::printf(" %s |", w.name);
  std::printf("\n|---|---|");
  for (const Way &w : ways)
    if (m == kSD || w.hd) std::printf("---:|");
  std::printf("\n");
  std::vector<double> mean(ways.size(), 0);
  for (const Picture &p : pics) {
    std::printf("| %s | %dx%d |", p.name.c_str(), p.w, p.h);
    for (size_t i = 0; i < ways.size(); ++i) {
      if (m == kHD && !ways[i].hd) continue;
      const double v = RoundTrip(p, ways[i], ways[i], m);
      mean[i] += v / double(pics.size());
      Cell(v);
    }
    std::printf("\n");
  }
  std::printf("| **mean** | |");
  for (size_t i = 0; i < ways.size(); ++i)
    if (m == kSD || ways[i].hd) Cell(mean[i]);
  std::printf("\n\n");
}

// Mean PSNR over the pictures of every way down (rows) with every way back
// (columns).
void CrossTable(const std::vector<Picture> &pics, const std::vector<Way> &ways, Matrix m) {
  std::printf("| down \\ back |");
  for (const Way &w : ways) std::printf(" %s |", w.name);
  std::printf("\n|---|");
  for (size_t i = 0; i < ways.size(); ++i) std::printf("---:|");
  std::printf("\n");
  for (const Way &down : ways) {
    std::printf("| %s |", down.name);
    for (const Way &up : ways) {
      double mean = 0;
      for (const Picture &p : pics) mean += RoundTrip(p, down, up, m) / double(pics.size());
      Cell(mean);
    }
    std::printf("\n");
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<Picture> pics;
  for (int i = 1; i < argc; ++i) {
    Picture p;
    if (!Load(argv[i], p)) {
      std::fprintf(stderr, "cannot read %s (NAME=PATH=WxH, even sizes, raw R G B)\n", argv[i]);
      return 1;
    }
    pics.push_back(std::move(p));
  }
  const std::vector<Way> ways = Ways();
  std::printf("RGB to 8-bit 4:2:0 and back, PSNR in dB over R, G and B, BT.709 (HD):\n\n");
  SameWayTable(pics, ways, kHD);
  std::printf("The same at BT.601 (SD), the matrix of libyuv's full-range J functions:\n\n");
  SameWayTable(pics, ways, kSD);
  std::printf("Every way down with every way back, BT.601, mean PSNR over the pictures:\n\n");
  CrossTable(pics, ways, kSD);
  std::printf(
      "Experiments on the way down (not the library's), each followed by code 11's "
      "way back, BT.601: `rounded even` takes each chroma pair's even pixel of a rounded "
      "4:4:4 conversion, `rounded [1 2 1]` filters it across three columns first:\n\n");
  const std::vector<Way> trial = {ways[0], Experiment("rounded even", false),
                                  Experiment("rounded [1 2 1]", true)};
  SameWayTable(pics, trial, kSD);
  return 0;
}
