// Every --from/--to/--matrix/--in-range/--out-range combination tqcs accepts,
// run through the tool's engine on a smooth pattern and compared with a model
// of its own: textbook luma weights, range formulas and sample layouts written
// out here, not taken from the library or the tool. A conversion is either
// refused (the tool then writes nothing) or close to the model; a frame the
// library left untouched, or converted with another matrix, is neither.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "engine.hpp"

namespace tqcs {
namespace {

constexpr int32_t kW = 16, kH = 12;

// A pixel in a format's own terms: R, G, B, A for RGB; Y, U, V, A for YUV
// (8-bit levels); the sample for grey and the key plane; H (degrees), S, V.
using Px = std::array<double, 4>;
using Picture = std::vector<Px>;

struct Weights {
  double kr, kb;
};
Weights WeightsOf(int32_t matrix) {
  switch (matrix) {
    case TCS_MATRIX_SD:
      return {0.299, 0.114};
    case TCS_MATRIX_UHD:
      return {0.2627, 0.0593};
    default:
      return {0.2126, 0.0722};
  }
}

// Full-range Y, U, V of R, G, B (and back), then to and from video range.
Px ToYuv(const Px &rgb, int32_t matrix, Range range) {
  const auto [kr, kb] = WeightsOf(matrix);
  const double y = kr * rgb[0] + (1 - kr - kb) * rgb[1] + kb * rgb[2];
  Px yuv{y, (rgb[2] - y) / (2 * (1 - kb)), (rgb[0] - y) / (2 * (1 - kr)), rgb[3]};
  const bool limited = range == Range::kLimited;
  yuv[0] = limited ? 16 + yuv[0] * 219 / 255 : yuv[0];
  for (int c : {1, 2}) yuv[c] = 128 + (limited ? yuv[c] * 224 / 255 : yuv[c]);
  return yuv;
}

Px ToRgb(Px yuv, int32_t matrix, Range range) {
  const auto [kr, kb] = WeightsOf(matrix);
  const bool limited = range == Range::kLimited;
  const double y = limited ? (yuv[0] - 16) * 255 / 219 : yuv[0];
  const double u = (yuv[1] - 128) * (limited ? 255.0 / 224 : 1);
  const double v = (yuv[2] - 128) * (limited ? 255.0 / 224 : 1);
  const double r = y + 2 * (1 - kr) * v, b = y + 2 * (1 - kb) * u;
  return {r, (y - kr * r - kb * b) / (1 - kr - kb), b, yuv[3]};
}

Px ToHsv(const Px &rgb) {
  const double hi = std::max({rgb[0], rgb[1], rgb[2]}), lo = std::min({rgb[0], rgb[1], rgb[2]});
  const double d = hi - lo;
  double h = 0;
  if (d > 0 && hi == rgb[0]) h = std::fmod(60 * (rgb[1] - rgb[2]) / d + 360, 360);
  if (d > 0 && hi == rgb[1]) h = 60 * (rgb[2] - rgb[0]) / d + 120;
  if (d > 0 && hi == rgb[2]) h = 60 * (rgb[0] - rgb[1]) / d + 240;
  return {h, hi > 0 ? 255 * d / hi : 0, hi, 0};
}

// The memory of each layout the model reads and writes, by the tool's name
// (ffmpeg's where it has one): where component c of pixel (x, y) lives.
enum class Kind { kPacked, kPair, kPlanar, kSemiPlanar, kKey, kHsv };
struct Layout {
  const char *name;
  Kind kind;
  int32_t sampleBytes;
  bool lowBits;                 // 10-bit samples in bits 0-9 (else 6-15)
  int32_t sx, sy;               // chroma subsampling
  std::array<int8_t, 4> order;  // kPacked: the position of R, G, B, A (Y, U, V, A); kPair: of
                                // Y0, U, V in a pair
};
constexpr int8_t kNo = -1;
constexpr Layout kLayouts[] = {{"bgra", Kind::kPacked, 1, false, 0, 0, {2, 1, 0, 3}},
                               {"rgba", Kind::kPacked, 1, false, 0, 0, {0, 1, 2, 3}},
                               {"yuva", Kind::kPacked, 1, false, 0, 0, {0, 1, 2, 3}},
                               {"bgr24", Kind::kPacked, 1, false, 0, 0, {2, 1, 0, kNo}},
                               {"rgb24", Kind::kPacked, 1, false, 0, 0, {0, 1, 2, kNo}},
                               {"yuv444packed", Kind::kPacked, 1, false, 0, 0, {0, 1, 2, kNo}},
                               {"bgra64le", Kind::kPacked, 2, false, 0, 0, {2, 1, 0, 3}},
                               {"rgba64le", Kind::kPacked, 2, false, 0, 0, {0, 1, 2, 3}},
                               {"bgr48le", Kind::kPacked, 2, false, 0, 0, {2, 1, 0, kNo}},
                               {"rgb48le", Kind::kPacked, 2, false, 0, 0, {0, 1, 2, kNo}},
                               {"yuyv422", Kind::kPair, 1, false, 1, 0, {0, 1, 3, kNo}},
                               {"uyvy422", Kind::kPair, 1, false, 1, 0, {1, 0, 2, kNo}},
                               {"y210le", Kind::kPair, 2, false, 1, 0, {0, 1, 3, kNo}},
                               {"yuv16_10bit_swap", Kind::kPair, 2, false, 1, 0, {1, 0, 2, kNo}},
                               {"yuv422p", Kind::kPlanar, 1, false, 1, 0, {}},
                               {"yuv420p", Kind::kPlanar, 1, false, 1, 1, {}},
                               {"yuv444p", Kind::kPlanar, 1, false, 0, 0, {}},
                               {"yuv411p", Kind::kPlanar, 1, false, 2, 0, {}},
                               {"yuv422p16le", Kind::kPlanar, 2, false, 1, 0, {}},
                               {"yuv420p16le", Kind::kPlanar, 2, false, 1, 1, {}},
                               {"yuv422p10le", Kind::kPlanar, 2, true, 1, 0, {}},
                               {"yuv420p10le", Kind::kPlanar, 2, true, 1, 1, {}},
                               {"nv16", Kind::kSemiPlanar, 1, false, 1, 0, {}},
                               {"nv12", Kind::kSemiPlanar, 1, false, 1, 1, {}},
                               {"p210le", Kind::kSemiPlanar, 2, false, 1, 0, {}},
                               {"p010le", Kind::kSemiPlanar, 2, false, 1, 1, {}},
                               {"alpha", Kind::kKey, 1, false, 0, 0, {}},
                               {"gray", Kind::kKey, 1, false, 0, 0, {}},
                               {"hsv", Kind::kHsv, 1, false, 0, 0, {}}};

// The model's layout of a format; null for the layouts of packed words (v210
// and the 8+2 runs), which the model leaves to the ffmpeg interop test.
const Layout *LayoutOf(Format f) {
  for (const Layout &layout : kLayouts)
    if (std::string_view(layout.name) == Info(f).name) return &layout;
  return nullptr;
}

// The sample of component c of pixel (x, y), counted in samples from the
// start of the frame, or -1 when the layout has no such component.
int64_t At(Format f, int32_t c, int64_t x, int64_t y) {
  const Layout &l = *LayoutOf(f);
  const int64_t pixel = y * kW + x, plane = int64_t{kW} * kH;
  const int64_t cw = kW >> l.sx, crow = (y >> l.sy) * cw, cx = x >> l.sx;
  switch (l.kind) {
    case Kind::kPacked: {
      const int64_t n = l.order[3] == kNo ? 3 : 4;
      return l.order[c] == kNo ? -1 : pixel * n + l.order[c];
    }
    case Kind::kPair:
      return c == 3 ? -1
                    : 2 * y * kW + (c == 0 ? 4 * (x / 2) + 2 * (x % 2) + l.order[0]
                                           : 4 * (x / 2) + l.order[c]);
    case Kind::kKey:
      return c == 0 ? pixel : -1;
    case Kind::kHsv:  // H as two bytes a pixel, then S, then V
      return c == 3 ? -1 : c == 0 ? 2 * pixel : plane * (1 + c) + pixel;
    case Kind::kSemiPlanar:
      return c == 3 ? -1 : c == 0 ? pixel : plane + 2 * (crow + cx) + (c - 1);
    case Kind::kPlanar:
      break;
  }
  if (c == 3) return -1;
  if (c == 0) return pixel;
  return plane + (c - 1) * cw * (kH >> l.sy) + crow + cx;
}

double Get(const Image &image, int32_t c, int32_t x, int32_t y, double absent) {
  const int64_t at = At(image.format, c, x, y);
  if (at < 0) return absent;
  const Layout &l = *LayoutOf(image.format);
  if (l.kind == Kind::kHsv && c == 0) return image.data[at] | image.data[at + 1] << 8;
  if (l.sampleBytes == 1) return image.data[at];
  const int sample = image.data[2 * at] | image.data[2 * at + 1] << 8;
  return (l.lowBits ? sample : sample >> 6) / 4.0;  // in 8-bit levels
}

// The pattern in format `f`: saturated enough that the matrices give levels
// several steps apart, with R, G and B rising alike along a row (chroma
// constant along it) and chroma changing by about a level a row, so chroma
// shared or interpolated between neighbours is each pixel's own within a step.
Image Encode(Format f, int32_t matrix, Range range) {
  Image image(f, kW, kH);
  for (int32_t y = 0; y < kH; ++y)
    for (int32_t x = 0; x < kW; ++x) {
      const Px rgb{170.0 + 4 * x + y, 40.0 + 4 * x + 3 * y, 60.0 + 4 * x + 2 * y, 250.0 - 9 * x};
      const Px yuv = ToYuv(rgb, matrix, range);
      const Px &own = Info(f).family == Family::kRgb ? rgb : f == kAlpha ? Px{rgb[3]} : yuv;
      for (int32_t c = 0; c < 4; ++c) {
        const int64_t at = At(f, c, x, y);
        if (at < 0) continue;
        const Layout &l = *LayoutOf(f);
        if (l.sampleBytes == 1) {
          image.data[at] = static_cast<uint8_t>(std::lround(std::clamp(own[c], 0.0, 255.0)));
          continue;
        }
        const long level = std::lround(std::clamp(own[c] * 4, 0.0, 1023.0));
        const long sample = l.lowBits ? level : level << 6;
        image.data[2 * at] = static_cast<uint8_t>(sample);
        image.data[2 * at + 1] = static_cast<uint8_t>(sample >> 8);
      }
    }
  return image;
}

// What pixel (x, y) of `image` shows, as full-range R, G, B, A.
Px Shown(const Image &image, int32_t x, int32_t y, int32_t matrix, Range range) {
  Px own{};
  for (int32_t c = 0; c < 4; ++c) own[c] = Get(image, c, x, y, c == 3 ? 255 : 128);
  if (image.format == kAlpha) return {255, 255, 255, own[0]};
  if (Info(image.format).family == Family::kRgb) return own;
  return ToRgb(own, matrix, range);
}

// The model's `to` pixel for a shown colour.
Px Expected(Format to, const Px &rgb, int32_t matrix, Range range) {
  if (Info(to).family == Family::kRgb) return rgb;
  if (to == kAlpha) return {rgb[3]};
  if (to == kHsv) return ToHsv(rgb);
  return ToYuv(rgb, matrix, range);
}

struct Case {
  Format from, to;
  int32_t matrix;
  Range in, out;
};

std::string Name(const Case &c) {
  const auto range = [](Range r) { return r == Range::kFull ? "full" : "limited"; };
  return std::string(Info(c.from).name) + " to " + Info(c.to).name + ", matrix " +
         std::to_string(c.matrix) + ", " + range(c.in) + " to " + range(c.out);
}

// The ranges the engine applies: YUV sides (and grey) only; RGB is full.
bool YuvSide(Format f) { return Info(f).family == Family::kYuv || f == kGray; }

TEST(EveryCombination, IsRefusedOrMatchesTheModel) {
  const Engine engine(TCS_GetAPIStuPtr());
  int converted = 0;
  std::vector<std::string> refused;
  for (const Format from : AllFormats())
    for (const Format to : AllFormats())
      for (int32_t matrix : {TCS_MATRIX_SD, TCS_MATRIX_HD, TCS_MATRIX_UHD})
        for (Range in : {Range::kFull, Range::kLimited})
          for (Range out : {Range::kFull, Range::kLimited}) {
            const Case c{from, to, matrix, in, out};
            if (!Info(c.from).readable || !Info(c.to).writable || !LayoutOf(from) || !LayoutOf(to))
              continue;
            const Range srcRange = YuvSide(c.from) ? in : Range::kFull;
            const Range dstRange = YuvSide(c.to) ? out : Range::kFull;
            const Image src = Encode(c.from, matrix, srcRange);
            Image dst(c.to, kW, kH);
            ConvertOptions options;
            options.matrix = matrix;
            options.srcRange = srcRange;
            options.dstRange = dstRange;
            if (!engine.Convert(src, dst, options).empty()) {
              refused.push_back(Name(c));
              continue;
            }
            ++converted;
            double worst = 0, sum = 0;
            int samples = 0;
            for (int32_t y = 0; y < kH; ++y)
              for (int32_t x = 0; x < kW; ++x) {
                const Px rgb = Shown(src, x, y, matrix, srcRange);
                const Px want = Expected(c.to, rgb, matrix, dstRange);
                for (int32_t ch = 0; ch < 4; ++ch) {
                  if (At(c.to, ch, x, y) < 0) continue;
                  const bool hue = c.to == kHsv && ch == 0;  // degrees, round the circle
                  double d = std::abs(Get(dst, ch, x, y, 0) -
                                      (hue ? want[ch] : std::clamp(want[ch], 0.0, 255.0)));
                  if (hue) d = want[1] > 16 ? std::min(d, 360 - d) : 0;
                  worst = std::max(worst, d);
                  sum += d;
                  ++samples;
                }
              }
            EXPECT_LE(worst, 7) << Name(c);
            EXPECT_LE(sum / samples, 1.5) << Name(c);
          }
  // Only a key plane has nothing to convert to a picture.
  for (const std::string &name : refused)
    EXPECT_EQ(name.rfind("alpha to ", 0), 0u) << name << " was refused";
  EXPECT_GT(converted, 2000);
}

// RGB48 to 10-bit 4:2:2 and back against the float model, in ten-bit levels,
// on the pattern whose chroma is constant along each row (so 4:2:2 costs
// nothing): Y, U and V are rounded once (half a level, a little more with
// the Q14 coefficients: 0.75); back, that half level of Y plus up to 1.86
// times half a level of chroma (HD Cb to B) is 1.43 of RGB levels.
TEST(DeepMatrix, RgbTo10Bit422AndBackWithinTheFloatModel) {
  const Engine engine(TCS_GetAPIStuPtr());
  const Format rgb = *FormatByName("rgb48le");
  for (const char *name : {"yuv422p10le", "yuv422p16le", "y210le", "p210le"})
    for (int32_t matrix : {TCS_MATRIX_SD, TCS_MATRIX_HD, TCS_MATRIX_UHD}) {
      const Format yuv = *FormatByName(name);
      const Image src = Encode(rgb, matrix, Range::kFull);
      Image there(yuv, kW, kH), back(rgb, kW, kH);
      ConvertOptions options;
      options.matrix = matrix;
      ASSERT_EQ(engine.Convert(src, there, options), "") << name;
      ASSERT_EQ(engine.Convert(there, back, options), "") << name;
      double toYuv = 0, toRgb = 0;
      for (int32_t y = 0; y < kH; ++y)
        for (int32_t x = 0; x < kW; ++x) {
          const Px want = ToYuv(Shown(src, x, y, matrix, Range::kFull), matrix, Range::kFull);
          for (int32_t c = 0; c < 3; ++c) {
            toYuv = std::max(toYuv, 4 * std::abs(Get(there, c, x, y, 0) - want[c]));
            toRgb = std::max(toRgb, 4 * std::abs(Get(back, c, x, y, 0) - Get(src, c, x, y, 0)));
          }
        }
      EXPECT_LE(toYuv, 0.75) << name << ", matrix " << matrix;
      EXPECT_LE(toRgb, 1.43) << name << ", matrix " << matrix;
    }
}

// The library has no range operation for 10-bit samples: the tool scales
// them at ten bits, luma 0-1023 to 64-940 and chroma 512 +- 512 to 512 +- 448,
// to the nearest level, in every 16-bit YUV layout (bits 0-9 or 6-15).
TEST(DeepRange, ScalesTenBitSamplesAtTenBits) {
  const Engine engine(TCS_GetAPIStuPtr());
  int layouts = 0;
  for (const Format f : AllFormats()) {
    const Layout *l = LayoutOf(f);
    if (l == nullptr || l->sampleBytes != 2 || Info(f).family != Family::kYuv) continue;
    ++layouts;
    const Image src = Encode(f, TCS_MATRIX_HD, Range::kFull);
    Image dst(f, kW, kH);
    ConvertOptions options;
    options.dstRange = Range::kLimited;
    ASSERT_EQ(engine.Convert(src, dst, options), "") << Info(f).name;
    for (int32_t y = 0; y < kH; ++y)
      for (int32_t x = 0; x < kW; ++x)
        for (int32_t c = 0; c < 3; ++c) {
          const double v = 4 * Get(src, c, x, y, 0);
          const double want = c == 0 ? 64 + v * 876 / 1023 : 512 + (v - 512) * 896 / 1023;
          ASSERT_EQ(4 * Get(dst, c, x, y, 0), std::round(want))
              << Info(f).name << " component " << c << " at " << x << "," << y;
        }
  }
  EXPECT_EQ(layouts, 8);  // y210le and its swap, 16-bit and low-bit planar, p210le, p010le
}

// The route the tool takes for RGB to planar 4:2:2 with UHD, where the
// library converts nothing, gives the direct conversion's bytes with the
// matrices where the library does convert directly.
TEST(RepackRoute, EqualsTheDirectConversion) {
  const Engine engine(TCS_GetAPIStuPtr());
  for (Format from : {kBgra, kRgba, kBgr24, kRgb24}) {
    const std::vector<int32_t> path = engine.Path(from, kYuv422p, {TCS_MATRIX_UHD, kW, kH});
    ASSERT_GE(path.size(), 3u) << Info(from).name;
    for (int32_t matrix : {TCS_MATRIX_SD, TCS_MATRIX_HD}) {
      Image step = Encode(from, matrix, Range::kFull), direct(kYuv422p, kW, kH);
      ASSERT_TRUE(engine.Dispatch(step, direct, matrix, false, false));
      for (size_t i = 1; i < path.size(); ++i) {
        Image next(static_cast<Format>(path[i]), kW, kH);
        ASSERT_TRUE(engine.Dispatch(step, next, matrix, false, false));
        step = std::move(next);
      }
      EXPECT_EQ(direct.data, step.data) << Info(from).name << ", matrix " << matrix;
    }
  }
}

// What the README and the header say of the library's range operations, as a
// host calls them: codes 0 to 4, 6 and 7 are scaled, 5, 8, 9 and 10 are left
// as they were; YUV to YUVA and planar 4:2:2 to YUYV, the repacks a host uses
// for those, come back byte for byte.
TEST(RangeOperations, CoverTheCodesTheDocumentationNames) {
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  const Engine engine(api);
  for (int32_t code = 0; code < kLibraryFormats; ++code) {
    const Image src = Encode(static_cast<Format>(code), TCS_MATRIX_HD, Range::kFull);
    Image dst = src;
    const int64_t pitch = code == kYuv422p || code == kYuv420p
                              ? kW
                              : int64_t{kW} * Info(static_cast<Format>(code)).packedBytes;
    api->pGeneral->TCS_RangeCompressFrame(dst.data.data(), pitch, src.data.data(), pitch, code, kW,
                                          kH, 0);
    const bool covered =
        code != kYuv444Packed && code != kYuv422p && code != kYuv420p && code != kAlpha;
    EXPECT_EQ(dst.data != src.data, covered) << "code " << code;
  }
  for (const auto &[code, packed] : {std::pair{kYuv444Packed, kYuva}, {kYuv422p, kYuyv}}) {
    const Image src = Encode(code, TCS_MATRIX_HD, Range::kFull);
    Image there(packed, kW, kH), back(code, kW, kH);
    ASSERT_TRUE(engine.Dispatch(src, there, TCS_MATRIX_HD, false, false));
    ASSERT_TRUE(engine.Dispatch(there, back, TCS_MATRIX_HD, false, false));
    EXPECT_EQ(back.data, src.data) << Info(code).name;
  }
}

}  // namespace
}  // namespace tqcs
