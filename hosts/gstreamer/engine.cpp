#include "engine.hpp"

#include <TQCPUBase.h>
#include <TQMemProc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>

namespace tqgst {

namespace {
thread_local Capture *tlCapture = nullptr;
}
void Capture::note(int32_t level, const std::string &text) {
  if (level != 1 && level != 3) return;
  std::lock_guard lock(mutex);
  if (reason.empty()) reason = text;
}
Capture *currentCapture() { return tlCapture; }
ScopedCapture::ScopedCapture(Capture *capture) : previous_(tlCapture) { tlCapture = capture; }
ScopedCapture::~ScopedCapture() { tlCapture = previous_; }

namespace {

bool isPlanar(int32_t code) { return code == TCS_FORMAT_YUV422 || code == TCS_FORMAT_YUV420; }

int planeCount(int32_t code) { return isPlanar(code) ? 3 : 1; }

int32_t bytesPerPixel(int32_t code) {
  switch (code) {
    case TCS_FORMAT_RGB32:
    case TCS_FORMAT_RGB32_SWAP:
    case TCS_FORMAT_YUVA:
      return 4;
    case TCS_FORMAT_RGB24:
    case TCS_FORMAT_RGB24_SWAP:
    case TCS_FORMAT_YUV:
      return 3;
    case TCS_FORMAT_YUV16:
    case TCS_FORMAT_YUV16_SWAP:
      return 2;
    default:
      return 1;
  }
}

// The chroma row that holds frame row `row` (4:2:0 halves it).
int64_t chromaRow(int32_t code, int64_t row) { return code == TCS_FORMAT_YUV420 ? row / 2 : row; }

// Rows [row, ...) of an image: each plane moved down by its own rows.
TCS_FrameDesc band(const TCS_FrameDesc &d, int32_t row) {
  TCS_FrameDesc b = d;
  for (int p = 0; p < planeCount(d.format); ++p) {
    const int64_t r = p == 0 ? row : chromaRow(d.format, row);
    b.plane[p].data += r * d.plane[p].pitch;
  }
  return b;
}

// One field of an interleaved image: every second row of each plane, first
// (0) or second (1). The chroma rows of an interleaved 4:2:0 frame alternate
// between the fields as its luma rows do.
TCS_FrameDesc field(const TCS_FrameDesc &d, int which) {
  TCS_FrameDesc f = d;
  for (int p = 0; p < planeCount(d.format); ++p) {
    f.plane[p].data += which * d.plane[p].pitch;
    f.plane[p].pitch *= 2;
  }
  return f;
}

Sampling samplingOf(int32_t code) {
  switch (code) {
    case TCS_FORMAT_YUVA:
    case TCS_FORMAT_YUV:
      return Sampling::C444;
    case TCS_FORMAT_YUV16:
    case TCS_FORMAT_YUV16_SWAP:
    case TCS_FORMAT_YUV422:
      return Sampling::C422;
    case TCS_FORMAT_YUV420:
      return Sampling::C420;
    default:
      return Sampling::Rgb;
  }
}

bool rgb32(int32_t code) { return code == TCS_FORMAT_RGB32 || code == TCS_FORMAT_RGB32_SWAP; }
// Channel-order flag of the drivers: non-zero for the B-first codes.
uint8_t bFirst(int32_t code) { return code == TCS_FORMAT_RGB32 || code == TCS_FORMAT_RGB24; }

// The library's range scaling for one packed-4:2:2 byte position (0 luma,
// 1 chroma), taken from its exported legal-range tables.
struct Scale {
  int16_t gain, offset;
};
Scale scaleOf(bool expand, int lane) {
  const int i = (expand ? 4 : 0) + lane;
  return {g_sSafe_Gain_YUYV[i], g_sSafe_Offset_YUYV[i]};
}

// Planar frames (codes 8 and 9), which the library's range operations leave
// untouched: each plane scaled with the very gain and offset the library
// applies to the same sample in packed 4:2:2, through the same TQMemProc
// routine, so the bytes are those of a round trip through packed 4:2:2.
void scalePlanar(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, bool expand, int32_t width,
                 int32_t rows) {
  const TMP_APIStu *mp = TMP_GetAPIStuPtr();
  for (int p = 0; p < 3; ++p) {
    const Scale s = scaleOf(expand, p == 0 ? 0 : 1);
    const int32_t bytes = p == 0 ? width : width / 2;
    const int64_t n = p == 0 ? rows : chromaRow(src.format, rows);
    for (int64_t r = 0; r < n; ++r)
      mp->pPixel->TMP_Scale_Run(dst.plane[p].data + r * dst.plane[p].pitch,
                                src.plane[p].data + r * src.plane[p].pitch, s.gain, s.offset,
                                bytes);
  }
}

// The pairs of format codes the library converts in all three forms, found
// once by converting a small frame of each pair: a pair it refuses (result 0
// or a log record) or leaves unwritten (kept for compatibility) is not taken.
// A pair is converted in bands of rows only where two bands gave the bytes of
// one call (a frame whose rows touch in memory is one run of pixels to the
// library, and some kernels read the next pair of pixels across a row end).
constexpr int kCodes = TCS_FORMAT_ALPHA;  // the colour codes 0 to 9
class Routes {
 public:
  Routes() {
    for (int s = 0; s < kCodes; ++s)
      for (int d = 0; d < kCodes; ++d) {
        ok_[s][d] = probe(s, d);
        bandable_[s][d] = ok_[s][d] && bandsMatch(s, d);
      }
  }
  bool bandable(int32_t s, int32_t d) const {
    return s == d || (s >= 0 && d >= 0 && s < kCodes && d < kCodes && bandable_[s][d]);
  }
  // The shortest chain of codes from s to d, lossless intermediates first.
  std::vector<int32_t> path(int32_t s, int32_t d) const {
    static constexpr int32_t kPreferred[] = {
        TCS_FORMAT_YUVA,  TCS_FORMAT_YUV422,     TCS_FORMAT_YUV16, TCS_FORMAT_YUV16_SWAP,
        TCS_FORMAT_RGB32, TCS_FORMAT_RGB32_SWAP, TCS_FORMAT_RGB24, TCS_FORMAT_RGB24_SWAP,
        TCS_FORMAT_YUV,   TCS_FORMAT_YUV420};
    std::array<int32_t, kCodes> from;
    from.fill(-1);
    from[s] = s;
    std::deque<int32_t> queue{s};
    while (!queue.empty() && from[d] < 0) {
      const int32_t a = queue.front();
      queue.pop_front();
      for (int32_t b : kPreferred)
        if (from[b] < 0 && ok_[a][b]) {
          from[b] = a;
          queue.push_back(b);
        }
    }
    std::vector<int32_t> chain;
    if (from[d] < 0) return chain;
    for (int32_t c = d; c != s; c = from[c]) chain.insert(chain.begin(), c);
    chain.insert(chain.begin(), s);
    return chain;
  }

 private:
  static TCS_FrameDesc image(std::vector<uint8_t> &bytes, int32_t code) {
    TCS_FrameDesc d{};
    d.format = code;
    uint8_t *p = bytes.data();
    if (isPlanar(code)) {
      d.plane[0] = {p, kSize};
      d.plane[1] = {p + kSize * kSize, kSize / 2};
      d.plane[2] = {p + kSize * kSize * 3 / 2, kSize / 2};
    } else {
      d.plane[0] = {p, kSize * bytesPerPixel(code)};
    }
    return d;
  }
  static bool probe(int32_t s, int32_t d) {
    const TCS_GeneralTable *g = TCS_GetAPIStuPtr()->pGeneral;
    for (int form = 0; form < 3; ++form) {
      std::vector<uint8_t> src(kSize * kSize * 4, 100), dst(kSize * kSize * 4, kCanary);
      const TCS_FrameDesc sd = image(src, s), dd = image(dst, d);
      Capture capture;
      capture.quiet = true;
      ScopedCapture scope(&capture);
      uint64_t result;
      if (form == 0) {
        result = g->TCS_ColorConvFrameEx(&dd, &sd, TCS_MATRIX_HD, kSize, kSize, 0);
      } else if (form == 1) {
        const TCS_FrameDesc f1 = field(dd, 0), f2 = field(dd, 1);
        result = g->TCS_ColorConvSplitEx(&f1, &f2, &sd, TCS_MATRIX_HD, kSize, kSize, 0);
      } else {
        const TCS_FrameDesc f1 = field(sd, 0), f2 = field(sd, 1);
        result = g->TCS_ColorConvComposeEx(&dd, &f1, &f2, TCS_MATRIX_HD, kSize, kSize, 0);
      }
      const bool written =
          std::any_of(dst.begin(), dst.end(), [](uint8_t b) { return b != kCanary; });
      if (!result || !capture.reason.empty() || !written) return false;
    }
    return true;
  }
  static bool bandsMatch(int32_t s, int32_t d) {
    const TCS_GeneralTable *g = TCS_GetAPIStuPtr()->pGeneral;
    std::vector<uint8_t> src(kSize * kSize * 4), one(src.size()), two(src.size());
    uint32_t seed = 21;
    for (uint8_t &b : src) b = uint8_t((seed = seed * 1103515245u + 12345u) >> 16);
    const TCS_FrameDesc sd = image(src, s), od = image(one, d), td = image(two, d);
    const int32_t half = kSize / 2;
    g->TCS_ColorConvFrameEx(&od, &sd, TCS_MATRIX_HD, kSize, kSize, 0);
    for (int32_t row = 0; row < kSize; row += half) {
      const TCS_FrameDesc bd = band(td, row), bs = band(sd, row);
      g->TCS_ColorConvFrameEx(&bd, &bs, TCS_MATRIX_HD, kSize, half, 0);
    }
    return one == two;
  }
  static constexpr int64_t kSize = 16;
  static constexpr uint8_t kCanary = 0xEE;
  bool ok_[kCodes][kCodes];
  bool bandable_[kCodes][kCodes];
};

const Routes &routes() {
  static const Routes table;
  return table;
}

}  // namespace

int Plan::addTemp(Layout layout) {
  const int64_t w = width_, h = height_;
  const int64_t size = isPlanar(layout.code) ? w * h * 2 : w * h * bytesPerPixel(layout.code);
  temps_.push_back({layout, std::vector<uint8_t>(static_cast<size_t>(size))});
  return 2 + static_cast<int>(temps_.size()) - 1;
}

Layout Plan::layoutOf(int image) const {
  return image == 0 ? in_ : image == 1 ? out_ : temps_[image - 2].layout;
}

// Packed 4:4:4, which the range operations leave as it is, is scaled as YUVA.
void Plan::addScale(Op op, int dst, int src) {
  if (layoutOf(src).code != TCS_FORMAT_YUV) {
    steps_.push_back({op, dst, src});
    return;
  }
  const int t = addTemp({TCS_FORMAT_YUVA, Sampling::C444});
  addConvert(t, src);
  steps_.push_back({op, t, t});
  addConvert(dst, t);
}

// Through intermediates where the library has no direct route.
bool Plan::addConvert(int dst, int src) {
  const int32_t d = layoutOf(dst).code;
  if (d == kGrayCode) {
    steps_.push_back({Op::Convert, dst, src});
    return true;
  }
  const std::vector<int32_t> chain = routes().path(layoutOf(src).code, d);
  if (chain.empty()) return false;
  for (size_t i = 1; i + 1 < chain.size(); ++i) {
    const int t = addTemp({chain[i], samplingOf(chain[i])});
    steps_.push_back({Op::Convert, t, src});
    src = t;
  }
  steps_.push_back({Op::Convert, dst, src});
  return true;
}

std::string Plan::build(const Side &in, const Side &out, int32_t width, int32_t height) {
  in_ = in.layout;
  out_ = out.layout;
  width_ = width;
  height_ = height;
  temps_.clear();
  steps_.clear();
  if (in_.sampling == Sampling::Gray) return "the library converts nothing from GRAY8";
  if (out_.sampling == Sampling::Gray && in_.sampling != Sampling::Rgb)
    return "the library converts only RGB to GRAY8";
  if ((isSubsampled(in_) || isSubsampled(out_)) && width % 2)
    return "4:2:x chroma needs an even width";
  if ((in_.sampling == Sampling::C420 || out_.sampling == Sampling::C420) && height % 4)
    return "4:2:0 needs a height that is a multiple of 4 (two fields of whole chroma rows)";
  // Steps run with the source as image 0 and the destination as image 1.
  // Between two YUV layouts of one range the samples are resampled or
  // repacked as they are: no scaling, so repacks stay lossless.
  const bool scale = !(isYuv(in_) && isYuv(out_) && in.limited == out.limited);
  int cur = 0;
  if (scale && in.limited && isYuv(in_)) {
    cur = addTemp(in_);
    addScale(Op::Expand, cur, 0);
  }
  if (!addConvert(1, cur)) return "the library has no route between these formats";
  if (scale && out.limited && isYuv(out_)) addScale(Op::Compress, 1, 1);
  return {};
}

bool Plan::runStep(const Step &step, const std::vector<TCS_FrameDesc> &images,
                   const Options &options, const Runner &runner) const {
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  const TCS_FrameDesc &dst = images[step.dst];
  const TCS_FrameDesc &src = images[step.src];
  const int32_t w = width_, h = height_;
  const bool c420 = dst.format == TCS_FORMAT_YUV420 || src.format == TCS_FORMAT_YUV420;
  // Field by field where chroma rows are filtered: the split form writes the
  // two fields of the destination, the compose form reads those of the source.
  if (step.op == Op::Convert && options.fields && c420 && dst.format != src.format) {
    if (dst.format == TCS_FORMAT_YUV420) {
      const TCS_FrameDesc f1 = field(src, 0), f2 = field(src, 1);
      return api->pGeneral->TCS_ColorConvComposeEx(&dst, &f1, &f2, options.matrix, w, h, 0) != 0;
    }
    const TCS_FrameDesc f1 = field(dst, 0), f2 = field(dst, 1);
    return api->pGeneral->TCS_ColorConvSplitEx(&f1, &f2, &src, options.matrix, w, h, 0) != 0;
  }
  // Range scaling and grey treat each pixel on its own; conversions are cut
  // into bands where that was seen to give the bytes of one call.
  const bool rowLocal = step.op != Op::Convert || dst.format == kGrayCode ||
                        (!c420 && routes().bandable(src.format, dst.format));
  const unsigned parts = rowLocal ? std::max(1u, std::min(options.nThreads, unsigned(h / 2))) : 1;
  const int32_t rowsPerPart = parts == 1 ? h : ((h + int32_t(parts) - 1) / int32_t(parts) + 1) & ~1;
  std::atomic<bool> ok{true};
  auto work = [&](unsigned part) {
    const int32_t r0 = int32_t(part) * rowsPerPart;
    const int32_t rows = std::min(h - r0, rowsPerPart);
    if (rows <= 0) return;
    const TCS_FrameDesc d = band(dst, r0), s = band(src, r0);
    uint64_t result = 1;
    if (step.op != Op::Convert) {
      const bool expand = step.op == Op::Expand;
      if (isPlanar(s.format))
        scalePlanar(d, s, expand, w, rows);
      else
        (expand ? api->pGeneral->TCS_RangeExpandFrame : api->pGeneral->TCS_RangeCompressFrame)(
            d.plane[0].data, d.plane[0].pitch, s.plane[0].data, s.plane[0].pitch, s.format, w, rows,
            0);
    } else if (d.format == kGrayCode) {
      (rgb32(s.format) ? api->pRGB32->TCS_RGB32_2_Gray_Frame : api->pRGB24->TCS_RGB24_2_Gray_Frame)(
          d.plane[0].data, d.plane[0].pitch, s.plane[0].data, s.plane[0].pitch, w, rows,
          options.matrix, bFirst(s.format), 0);
    } else {
      result = api->pGeneral->TCS_ColorConvFrameEx(&d, &s, options.matrix, w, rows, 0);
    }
    if (!result) ok = false;
  };
  if (parts == 1)
    work(0);
  else
    runner(parts, work);
  return ok;
}

bool Plan::run(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, const Options &options,
               const Runner &runner) const {
  std::vector<TCS_FrameDesc> images{src, dst};
  for (Temp &t : temps_) {
    TCS_FrameDesc d{};
    d.format = t.layout.code;
    uint8_t *base = t.bytes.data();
    if (isPlanar(t.layout.code)) {
      const int64_t cw = width_ / 2, ch = chromaRow(t.layout.code, height_);
      d.plane[0] = {base, width_};
      d.plane[1] = {base + int64_t(width_) * height_, cw};
      d.plane[2] = {d.plane[1].data + cw * ch, cw};
    } else {
      d.plane[0] = {base, int64_t(width_) * bytesPerPixel(t.layout.code)};
    }
    images.push_back(d);
  }
  for (const Step &step : steps_)
    if (!runStep(step, images, options, runner)) return false;
  return true;
}

}  // namespace tqgst
