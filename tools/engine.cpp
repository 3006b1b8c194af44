#include "engine.hpp"

#include <TQCPUBase.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <deque>

#include "cli.hpp"

namespace tqcs {
namespace {

int64_t Pitch(const Image &image) {
  return Planes(image.format, image.width, image.height)[0].pitch;
}

// The descriptor of a frame held in `image`.
TCS_FrameDesc Desc(const Image &image) {
  TCS_FrameDesc desc{};
  const auto planes = Planes(image.format, image.width, image.height);
  for (size_t i = 0; i < planes.size(); ++i)
    desc.plane[i] = {const_cast<uint8_t *>(image.data.data()) + planes[i].offset, planes[i].pitch};
  desc.format = image.format;
  return desc;
}

// Whether two frames of one format hold the same rows (padding not compared).
bool SameRows(const Image &a, const Image &b) {
  for (const PlaneLayout &plane : Planes(a.format, a.width, a.height))
    for (int32_t row = 0; row < plane.rows; ++row) {
      const size_t at = plane.offset + static_cast<size_t>(row * plane.pitch);
      if (!std::equal(a.data.begin() + at, a.data.begin() + at + plane.rowBytes,
                      b.data.begin() + at))
        return false;
    }
  return true;
}

// Codes 0 and 3 hold B, G, R: the drivers' channel-order flag is set for them.
uint8_t BlueFirst(int32_t code) { return code == kBgra || code == kBgr24 ? 1 : 0; }

bool IsYuvSide(Format format) { return Info(format).family == Family::kYuv || format == kGray; }

// One run of samples of one kind inside an image.
struct Samples {
  uint8_t *base;
  size_t step;
  size_t count;
  bool luma;
};

std::vector<Samples> YuvSamples(Image &image) {
  const size_t pixels = static_cast<size_t>(image.width) * image.height;
  if (image.format == kYuv444Packed || image.format == kYuva) {
    // The alpha byte of YUVA is a key, not a video level: it is left as it is.
    uint8_t *p = image.data.data();
    const size_t step = Info(image.format).packedBytes;
    return {{p, step, pixels, true}, {p + 1, step, pixels, false}, {p + 2, step, pixels, false}};
  }
  std::vector<Samples> runs;
  const auto planes = Planes(image.format, image.width, image.height);
  for (size_t i = 0; i < planes.size(); ++i)
    runs.push_back({image.data.data() + planes[i].offset, 1,
                    static_cast<size_t>(planes[i].rowBytes) * planes[i].rows, i == 0});
  return runs;
}

// Planar 4:4:4 and packed YUVA, the tool's own interleave.
void Interleave444(const uint8_t *y, const uint8_t *u, const uint8_t *v, uint8_t *yuva, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    yuva[4 * i] = y[i];
    yuva[4 * i + 1] = u[i];
    yuva[4 * i + 2] = v[i];
    yuva[4 * i + 3] = 255;
  }
}

void Deinterleave444(const uint8_t *yuva, uint8_t *y, uint8_t *u, uint8_t *v, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    y[i] = yuva[4 * i];
    u[i] = yuva[4 * i + 1];
    v[i] = yuva[4 * i + 2];
  }
}

// The layouts of which `code` is a lossless repack: planar 4:2:2 holds the
// samples of packed 4:2:2, in either packing order.
std::vector<int32_t> RepackTwins(int32_t code) {
  switch (code) {
    case kYuyv:
      return {kUyvy, kYuv422p};
    case kUyvy:
      return {kYuyv, kYuv422p};
    case kYuv422p:
      return {kYuyv, kUyvy};
    default:
      return {};
  }
}

// What the tool says when the library converts no way between two codes for
// these options: it writes nothing rather than a picture the library left.
std::string Refused(Format from, Format to, const ConvertOptions &options, int32_t w, int32_t h) {
  return std::string("the library does not convert ") + Info(from).name + " to " + Info(to).name +
         " with matrix " + MatrixName(options.matrix) + " at " + std::to_string(w) + "x" +
         std::to_string(h) + (options.interlaced ? " field by field" : "");
}

}  // namespace

namespace {

// The size a conversion is tried at: frames from 24x12 up behave as their
// width modulo 12 (the layouts take multiples of 1, 2, 4 or 6) and their
// height modulo 4 say; smaller ones as themselves.
Size ProbeSize(const Shape &shape) {
  return {shape.width < 24 ? shape.width : 12 + shape.width % 12,
          shape.height < 12 ? shape.height : 12 + (shape.height & 3)};
}

// True when `run(src, dst)` succeeds, logs nothing and writes every byte of a
// `to` frame: two destinations filled differently must come out alike.
template <class Run>
bool WritesEveryByte(Format from, Format to, Size size, Run run) {
  Image src(from, size.width, size.height);
  for (size_t i = 0; i < src.data.size(); ++i) src.data[i] = static_cast<uint8_t>(i * 37);
  Image zeros(to, size.width, size.height), ones(to, size.width, size.height);
  std::fill(ones.data.begin(), ones.data.end(), uint8_t{255});
  bool logged = false;
  TCB_SetLogSink(
      [](void *context, int32_t level, const char16_t *, const char16_t *, const char16_t *,
         const char16_t *) {
        if (level >= 1) *static_cast<bool *>(context) = true;
      },
      &logged);
  const bool done = run(src, zeros) && run(src, ones);
  TCB_SetLogSink(nullptr, nullptr);
  return done && !logged && SameRows(zeros, ones);
}

}  // namespace

const Engine::Table &Engine::Routes(const Shape &shape) const {
  const Size size = ProbeSize(shape);
  const std::lock_guard lock(mutex_);
  const auto [at, added] =
      routes_.try_emplace({shape.matrix, size.width, size.height, shape.interlaced});
  Table &routed = at->second;
  if (!added) return routed;
  const std::vector<int32_t> &codes = Codes();
  routed.assign(codes.size(), std::vector<bool>(codes.size()));
  for (size_t from = 0; from < codes.size(); ++from)
    for (size_t to = 0; to < codes.size(); ++to)
      routed[from][to] =
          Planned(codes[from], codes[to]) &&
          WritesEveryByte(static_cast<Format>(codes[from]), static_cast<Format>(codes[to]), size,
                          [&](const Image &src, Image &dst) {
                            return Dispatch(src, dst, shape.matrix, false, shape.interlaced);
                          });
  return routed;
}

const std::vector<int32_t> &Engine::Codes() {
  static const std::vector<int32_t> codes = [] {
    std::vector<int32_t> all;
    for (const Format format : AllFormats())
      for (const Format code : {Info(format).fieldSited, format})
        if (IsLibraryCode(code) && std::find(all.begin(), all.end(), code) == all.end())
          all.push_back(code);
    std::sort(all.begin(), all.end());
    return all;
  }();
  return codes;
}

size_t Engine::IndexOf(int32_t code) {
  const std::vector<int32_t> &codes = Codes();
  return static_cast<size_t>(std::lower_bound(codes.begin(), codes.end(), code) - codes.begin());
}

template <class Run>
bool Engine::Writes(Format from, Format to, const Shape &shape, Run run) const {
  const Size size = ProbeSize(shape);
  const std::lock_guard lock(mutex_);
  const auto [at, added] =
      direct_.try_emplace({from, to, shape.matrix, size.width, size.height}, false);
  if (added) at->second = WritesEveryByte(from, to, size, run);
  return at->second;
}

void Engine::RgbToGrayOrHsv(const Image &from, Image &dst, int32_t matrix, bool flip) const {
  const int32_t w = from.width, h = from.height;
  const uint8_t order = BlueFirst(from.format), turn = flip ? 1 : 0;
  if (dst.format == kHsv) {
    const auto planes = Planes(kHsv, w, h);
    api_->pRGB24->TCS_RGB24_2_HSV_Frame(reinterpret_cast<uint16_t *>(dst.Plane(0)), planes[0].pitch,
                                        dst.Plane(1), w, dst.Plane(2), w, from.data.data(),
                                        Pitch(from), w, h, order, turn);
  } else if (Info(from.format).packedBytes == 4) {
    api_->pRGB32->TCS_RGB32_2_Gray_Frame(dst.data.data(), w, from.data.data(), Pitch(from), w, h,
                                         matrix, order, turn);
  } else {
    api_->pRGB24->TCS_RGB24_2_Gray_Frame(dst.data.data(), w, from.data.data(), Pitch(from), w, h,
                                         matrix, order, turn);
  }
}

int32_t DefaultMatrix(int32_t width, int32_t height) {
  return width >= 1280 || height >= 720 ? TCS_MATRIX_HD : TCS_MATRIX_SD;
}

bool Engine::Planned(int32_t from, int32_t to) {
  // The dispatcher's empty-stub routes and the packed 4:4:4 drivers that are
  // not implemented are left out: those pairs go in two steps.
  if (from >= kLibraryFormats || to >= kLibraryFormats) return true;
  if (from == kAlpha) return to == kAlpha;
  if (from == kYuv444Packed) return to == kYuva || to == kYuv444Packed || to == kAlpha;
  if (to == kYuv444Packed)
    return from == kYuva || from == kYuyv || from == kUyvy || from == kYuv420p;
  return !(from == kYuva && to == kYuv420p);
}

// The order in which a path tries the codes between its ends: between the
// dispatcher's codes YUV layouts first, so that no step leaves YUV
// needlessly; with an extended code at either end, layouts that lose least
// first (full vertical chroma before 4:2:0, 10 bits before 8).
std::vector<int32_t> StepOrder(bool extended) {
  static constexpr int32_t kDispatcher[] = {2, 6, 8, 9, 5, 0, 1, 3, 4, 7, 10};
  if (!extended) return {std::begin(kDispatcher), std::end(kDispatcher)};
  std::vector<int32_t> order = Engine::Codes();
  std::stable_sort(order.begin(), order.end(), [](int32_t a, int32_t b) {
    const ToolFormat &x = Info(static_cast<Format>(a)), &y = Info(static_cast<Format>(b));
    return std::pair(x.shiftY, !x.deep) < std::pair(y.shiftY, !y.deep);
  });
  return order;
}

std::vector<int32_t> Engine::Path(int32_t from, int32_t to, const Shape &shape) const {
  const Table &routed = Routes(shape);
  const size_t a = IndexOf(from), b = IndexOf(to);
  const auto step = [&](int32_t x, int32_t y) { return routed[IndexOf(x)][IndexOf(y)]; };
  if (from == to) return {from};
  if (routed[a][b]) return {from, to};
  if (Routes(Shape{})[a][b]) {
    // The library converts the pair, only not for these options.
    // RGB32 goes to packed 4:2:2 with other rounding than to planar 4:2:2;
    // its RGB24 form (alpha dropped, which 4:2:2 does not hold) goes alike.
    const int32_t narrow = from == kBgra ? kBgr24 : from == kRgba ? kRgb24 : from;
    for (const int32_t twin : RepackTwins(to)) {
      if (narrow == from && step(from, twin) && step(twin, to)) return {from, twin, to};
      if (narrow != from && step(from, narrow) && step(narrow, twin) && step(twin, to))
        return {from, narrow, twin, to};
    }
    return {};
  }
  // Breadth first, in the order of StepOrder.
  const std::vector<int32_t> order = StepOrder(from >= kLibraryFormats || to >= kLibraryFormats);
  std::map<int32_t, int32_t> previous{{from, from}};
  std::deque<int32_t> queue{from};
  while (!queue.empty() && !previous.contains(to)) {
    const int32_t at = queue.front();
    queue.pop_front();
    for (int32_t next : order)
      if (!previous.contains(next) && step(at, next)) {
        previous[next] = at;
        queue.push_back(next);
      }
  }
  if (!previous.contains(to)) return {};
  std::vector<int32_t> path{to};
  while (path.back() != from) path.push_back(previous[path.back()]);
  std::reverse(path.begin(), path.end());
  return path;
}

bool Engine::Dispatch(const Image &src, Image &dst, int32_t matrix, bool flip,
                      bool interlaced) const {
  const TCS_GeneralTable &g = *api_->pGeneral;
  const int32_t w = src.width, h = src.height;
  const bool fieldsFit = h % 2 == 0 && (Info(src.format).shiftY == 0 || h % 4 == 0) &&
                         (Info(dst.format).shiftY == 0 || h % 4 == 0);
  // The code forms take codes 0 to 10 in one buffer each, the descriptor forms any code.
  const bool codes = src.format < kLibraryFormats && dst.format < kLibraryFormats;
  const TCS_FrameDesc from = Desc(src);
  if (!interlaced || !fieldsFit) {
    const TCS_FrameDesc to = Desc(dst);
    return (codes ? g.TCS_ColorConvFrame(dst.data.data(), Pitch(dst), dst.format, src.data.data(),
                                         Pitch(src), src.format, matrix, w, h, flip)
                  : g.TCS_ColorConvFrameEx(&to, &from, matrix, w, h, flip)) == TCS_RESULT_OK;
  }
  // Field by field: the split form converts each field of the source into its
  // own buffer, then the fields are interleaved into the destination frame.
  Image field1(dst.format, w, h / 2), field2(dst.format, w, h / 2);
  const TCS_FrameDesc to1 = Desc(field1), to2 = Desc(field2);
  const int64_t fieldPitch = Pitch(field1);
  return (codes ? g.TCS_ColorConvSplit(field1.data.data(), fieldPitch, field2.data.data(),
                                       fieldPitch, dst.format, src.data.data(), Pitch(src),
                                       src.format, matrix, w, h, flip)
                : g.TCS_ColorConvSplitEx(&to1, &to2, &from, matrix, w, h, flip)) == TCS_RESULT_OK &&
         ComposeFields(field1, field2, dst);
}

// Runs `copy(frame plane, field 1 plane, field 2 plane, layout)` on every plane;
// the field operations are format-free, so each plane goes as bytes.
template <class Copy>
bool EachPlane(const Image &frame, const Image &field1, const Image &field2, Copy copy) {
  const auto planes = Planes(frame.format, frame.width, frame.height);
  const auto fieldPlanes = Planes(field1.format, field1.width, field1.height);
  for (size_t i = 0; i < planes.size(); ++i) {
    const auto at = [&](const Image &image, const PlaneLayout &plane) {
      return const_cast<uint8_t *>(image.data.data()) + plane.offset;
    };
    if (copy(at(frame, planes[i]), at(field1, fieldPlanes[i]), at(field2, fieldPlanes[i]),
             fieldPlanes[i].pitch, planes[i]) != TCS_RESULT_OK)
      return false;
  }
  return true;
}

bool Engine::SplitFields(const Image &frame, Image &field1, Image &field2) const {
  return EachPlane(frame, field1, field2,
                   [&](uint8_t *f, uint8_t *f1, uint8_t *f2, int64_t pitch, const PlaneLayout &p) {
                     return api_->pGeneral->TCS_SplitFrame(f1, pitch, f2, pitch, f, p.pitch,
                                                           p.rowBytes, p.rows, 1, 0);
                   });
}

bool Engine::ComposeFields(const Image &field1, const Image &field2, Image &frame) const {
  return EachPlane(frame, field1, field2,
                   [&](uint8_t *f, uint8_t *f1, uint8_t *f2, int64_t pitch, const PlaneLayout &p) {
                     return api_->pGeneral->TCS_ComposeFields(f, p.pitch, f1, pitch, f2, pitch,
                                                              p.rowBytes, p.rows, 1, 0);
                   });
}

// Full range to video range (compress) or back for 10-bit samples: luma
// 0-1023 to 64-940, chroma 512 +- 512 to 512 +- 448, rounded to the nearest
// and clamped, as the library's 8-bit operations scale at 8 bits. The library
// has no 10-bit range operation; layouts of packed words (v210, the 8+2 runs)
// are scaled as planar 4:2:2, their lossless repack.
void Engine::ScaleDeep(Image &image, bool compress) const {
  const ToolFormat &info = Info(image.format);
  if (info.sampleBytes != 2) {
    Image planar(static_cast<Format>(TCS_FORMAT_YUV422_10BIT), image.width, image.height);
    Dispatch(image, planar, TCS_MATRIX_HD, false, false);
    ScaleDeep(planar, compress);
    Dispatch(planar, image, TCS_MATRIX_HD, false, false);
    return;
  }
  const auto scale = [compress](double v, bool luma) {
    const double centre = luma ? 0 : 512, floor = luma ? 64 : 512;
    const double ratio = (luma ? 876.0 : 896.0) / 1023;
    const double out = compress ? floor + (v - centre) * ratio : centre + (v - floor) / ratio;
    return static_cast<uint16_t>(std::clamp(std::lround(out), 0L, 1023L));
  };
  const auto planes = Planes(image.format, image.width, image.height);
  for (size_t p = 0; p < planes.size(); ++p) {
    uint8_t *base = image.data.data() + planes[p].offset;
    const size_t count = static_cast<size_t>(planes[p].pitch) * planes[p].rows / 2;
    for (size_t i = 0; i < count; ++i) {
      const bool luma = planes.size() == 1 ? (i % 2 == 0) != info.chromaFirst : p == 0;
      uint16_t sample;
      std::memcpy(&sample, base + 2 * i, 2);
      const uint16_t v = scale(info.lowBits ? sample & 1023 : sample >> 6, luma);
      sample = static_cast<uint16_t>(info.lowBits ? v : v << 6);
      std::memcpy(base + 2 * i, &sample, 2);
    }
  }
}

void Engine::ScaleRange(Image &image, bool compress) const {
  if (Info(image.format).deep) return ScaleDeep(image, compress);
  const auto scale =
      compress ? api_->pGeneral->TCS_RangeCompressFrame : api_->pGeneral->TCS_RangeExpandFrame;
  if (image.format == kYuyv || image.format == kUyvy) {
    const Image source = image;
    scale(image.data.data(), Pitch(image), source.data.data(), Pitch(source), image.format,
          image.width, image.height, 0);
    return;
  }
  // The library scales packed layouts only: gather luma into bytes 0 and 2 and
  // chroma into bytes 1 and 3 of a packed 4:2:2 row, scale it, scatter back.
  std::vector<Samples> runs = YuvSamples(image);
  size_t luma = 0, chroma = 0;
  for (const Samples &run : runs) (run.luma ? luma : chroma) += run.count;
  const size_t pairs = (std::max(luma, chroma) + 1) / 2;
  std::vector<uint8_t> packed(4 * pairs, 128), scaled(4 * pairs);
  const auto walk = [&](auto &&move) {
    size_t at[2] = {0, 0};  // next chroma, next luma position
    for (const Samples &run : runs)
      for (size_t i = 0; i < run.count; ++i, ++at[run.luma]) {
        const size_t n = at[run.luma];
        move(run.base[i * run.step], 4 * (n / 2) + 2 * (n % 2) + (run.luma ? 0 : 1));
      }
  };
  walk([&](uint8_t &sample, size_t pos) { packed[pos] = sample; });
  const int32_t width = static_cast<int32_t>(2 * pairs);
  scale(scaled.data(), 4 * static_cast<int64_t>(pairs), packed.data(),
        4 * static_cast<int64_t>(pairs), kYuyv, width, 1, 0);
  walk([&](uint8_t &sample, size_t pos) { sample = scaled[pos]; });
}

bool Engine::ConvertCodes(const Image &src, Image &dst, const ConvertOptions &options) const {
  const std::vector<int32_t> path =
      Path(src.format, dst.format, {options.matrix, src.width, src.height, options.interlaced});
  if (path.empty()) return false;
  if (path.size() == 1 && !options.flip) {
    dst.data = src.data;
    return true;
  }
  if (path.size() == 1) return Dispatch(src, dst, options.matrix, true, options.interlaced);
  // The flip is applied by the first step only.
  Image current;
  const Image *from = &src;
  for (size_t i = 1; i < path.size(); ++i) {
    const bool flip = options.flip && i == 1;
    if (i + 1 == path.size()) return Dispatch(*from, dst, options.matrix, flip, options.interlaced);
    Image next(static_cast<Format>(path[i]), src.width, src.height);
    if (!Dispatch(*from, next, options.matrix, flip, options.interlaced)) return false;
    current = std::move(next);
    from = &current;
  }
  return true;
}

std::string Engine::Convert(const Image &input, Image &dst, const ConvertOptions &options) const {
  const int32_t w = input.width, h = input.height;
  if (dst.width != w || dst.height != h || dst.data.size() != FrameBytes(dst.format, w, h))
    dst = Image(dst.format, w, h);
  if (!Info(input.format).readable) return std::string(Info(input.format).name) + " is output only";
  if (!Info(dst.format).writable) return std::string(Info(dst.format).name) + " is input only";
  if (std::string problem = CheckSize(w, h); !problem.empty()) return problem;
  const Shape shape{options.matrix, w, h, options.interlaced};

  // Bring the source to a library code.
  Image src;
  const size_t pixels = static_cast<size_t>(w) * h;
  switch (input.format) {
    case kYuv444p:
      src = Image(kYuva, w, h);
      Interleave444(input.Plane(0), input.Plane(1), input.Plane(2), src.data.data(), pixels);
      break;
    case kGray: {
      src = Image(kYuva, w, h);
      const std::vector<uint8_t> neutral(pixels, 128);
      Interleave444(input.data.data(), neutral.data(), neutral.data(), src.data.data(), pixels);
      break;
    }
    default:
      src = input;
  }

  // Grey is luma both ways: grey output is computed from RGB at full range and
  // compressed like any luma when the output is limited.
  const bool srcYuv = IsYuvSide(input.format), dstYuv = IsYuvSide(dst.format);
  const bool scale = !(srcYuv && dstYuv && options.srcRange == options.dstRange);
  if (scale && srcYuv && options.srcRange == Range::kLimited) ScaleRange(src, false);

  ConvertOptions step = options;
  switch (dst.format) {
    case kYuv444p: {
      Image yuva(kYuva, w, h);
      if (!ConvertCodes(src, yuva, step)) return Refused(input.format, kYuva, options, w, h);
      Deinterleave444(yuva.data.data(), dst.Plane(0), dst.Plane(1), dst.Plane(2), pixels);
      break;
    }
    case kGray:
    case kHsv: {
      // Grey comes from 8-bit RGB of either width, HSV from 24-bit RGB.
      const bool direct = src.format == kBgr24 || src.format == kRgb24 ||
                          (dst.format == kGray && (src.format == kBgra || src.format == kRgba));
      Image rgb;
      if (!direct) {
        rgb = Image(kBgr24, w, h);
        if (!ConvertCodes(src, rgb, step)) return Refused(src.format, kBgr24, options, w, h);
        step.flip = false;
      }
      const Image &from = direct ? src : rgb;
      const auto run = [&](const Image &in, Image &out) {
        RgbToGrayOrHsv(in, out, options.matrix, false);
        return true;
      };
      if (!Writes(from.format, dst.format, shape, run))
        return Refused(from.format, dst.format, options, w, h);
      RgbToGrayOrHsv(from, dst, options.matrix, step.flip);
      break;
    }
    default:
      if (!ConvertCodes(src, dst, step)) return Refused(src.format, dst.format, options, w, h);
  }
  if (scale && dstYuv && options.dstRange == Range::kLimited) ScaleRange(dst, true);
  return {};
}

}  // namespace tqcs
