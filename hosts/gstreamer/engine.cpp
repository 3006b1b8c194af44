#include "engine.hpp"

#include <TQCPUBase.h>
#include <TQMemProc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <deque>
#include <span>

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

// The geometry of a code's planes: how many, the bytes of a row of `width`
// pixels in each (width * num / den), whether the chroma planes hold half the
// rows (4:2:0), the widths the code takes and whether its samples are bytes
// (the library's range operations scale bytes only).
struct Geometry {
  int32_t code;
  int planes;
  int32_t num[3], den[3];
  bool halfRows;
  int32_t widthMultiple;
  bool bytes;
};
constexpr Geometry kGeometry[] = {
    {TCS_FORMAT_RGB32, 1, {4}, {1}, false, 1, true},
    {TCS_FORMAT_RGB32_SWAP, 1, {4}, {1}, false, 1, true},
    {TCS_FORMAT_YUVA, 1, {4}, {1}, false, 1, true},
    {TCS_FORMAT_RGB24, 1, {3}, {1}, false, 1, true},
    {TCS_FORMAT_RGB24_SWAP, 1, {3}, {1}, false, 1, true},
    {TCS_FORMAT_YUV, 1, {3}, {1}, false, 1, true},
    {TCS_FORMAT_YUV16, 1, {2}, {1}, false, 2, true},
    {TCS_FORMAT_YUV16_SWAP, 1, {2}, {1}, false, 2, true},
    {TCS_FORMAT_YUV422, 3, {1, 1, 1}, {1, 2, 2}, false, 2, true},
    {TCS_FORMAT_YUV420, 3, {1, 1, 1}, {1, 2, 2}, true, 2, true},
    {TCS_FORMAT_YUV420_FRAME, 3, {1, 1, 1}, {1, 2, 2}, true, 2, true},
    {TCS_FORMAT_YUV16_10BIT, 1, {4}, {1}, false, 2, false},
    {TCS_FORMAT_YUV16_10BIT_SWAP, 1, {4}, {1}, false, 2, false},
    {TCS_FORMAT_V210, 1, {16}, {6}, false, 6, false},
    {TCS_FORMAT_YUV420_10BIT, 3, {2, 1, 1}, {1, 1, 1}, true, 2, false},
    {TCS_FORMAT_YUV420_10BIT_FRAME, 3, {2, 1, 1}, {1, 1, 1}, true, 2, false},
    {TCS_FORMAT_NV16, 2, {1, 1}, {1, 1}, false, 2, true},
    {TCS_FORMAT_NV12, 2, {1, 1}, {1, 1}, true, 2, true},
    {TCS_FORMAT_NV12_FRAME, 2, {1, 1}, {1, 1}, true, 2, true},
    {TCS_FORMAT_P210, 2, {2, 2}, {1, 1}, false, 2, false},
    {TCS_FORMAT_P010, 2, {2, 2}, {1, 1}, true, 2, false},
    {TCS_FORMAT_P010_FRAME, 2, {2, 2}, {1, 1}, true, 2, false},
    {TCS_FORMAT_RGB64, 1, {8}, {1}, false, 1, false},
    {TCS_FORMAT_RGB64_SWAP, 1, {8}, {1}, false, 1, false},
    {TCS_FORMAT_YUV422_10BIT, 3, {2, 1, 1}, {1, 1, 1}, false, 2, false},
    {TCS_FORMAT_YUV422_10BIT_LOW, 3, {2, 1, 1}, {1, 1, 1}, false, 2, false},
    {TCS_FORMAT_YUV420_10BIT_LOW, 3, {2, 1, 1}, {1, 1, 1}, true, 2, false},
    {TCS_FORMAT_YUV420_10BIT_LOW_FRAME, 3, {2, 1, 1}, {1, 1, 1}, true, 2, false},
    {kGrayCode, 1, {1}, {1}, false, 1, true},
};
const Geometry &geometry(int32_t code) {
  for (const Geometry &g : kGeometry)
    if (g.code == code) return g;
  return kGeometry[std::size(kGeometry) - 1];
}
bool is420(int32_t code) { return geometry(code).halfRows; }
int planeCount(int32_t code) { return geometry(code).planes; }
int64_t rowBytes(int32_t code, int plane, int64_t width) {
  const Geometry &g = geometry(code);
  return width * g.num[plane] / g.den[plane];
}
int64_t planeRows(int32_t code, int plane, int64_t rows) {
  return plane > 0 && is420(code) ? rows / 2 : rows;
}

// Rows [row, ...) of an image: each plane moved down by its own rows.
TCS_FrameDesc rowsFrom(const TCS_FrameDesc &d, int64_t row) {
  TCS_FrameDesc b = d;
  for (int p = 0; p < planeCount(d.format); ++p)
    b.plane[p].data += planeRows(d.format, p, row) * d.plane[p].pitch;
  return b;
}

// An image of `rows` rows in `bytes`, each plane with the pitch `pitches`
// gives (tight rows where it gives none); returns the bytes it needs.
int64_t place(TCS_FrameDesc &d, int32_t code, uint8_t *bytes, int64_t width, int64_t rows,
              const TCS_FrameDesc *pitches = nullptr) {
  d = {};
  d.format = code;
  int64_t at = 0;
  for (int p = 0; p < planeCount(code); ++p) {
    const int64_t pitch = pitches ? pitches->plane[p].pitch : rowBytes(code, p, width);
    d.plane[p] = {bytes ? bytes + at : nullptr, pitch};
    at += pitch * planeRows(code, p, rows);
  }
  return at;
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

// Frames of more than one plane, which the library's range operations leave
// untouched: each plane scaled with the very gain and offset the library
// applies to the same sample in packed 4:2:2, through the same TQMemProc
// routine, so the bytes are those of a round trip through packed 4:2:2.
void scalePlanes(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, bool expand, int32_t width,
                 int32_t rows) {
  const TMP_APIStu *mp = TMP_GetAPIStuPtr();
  for (int p = 0; p < planeCount(src.format); ++p) {
    const Scale s = scaleOf(expand, p == 0 ? 0 : 1);
    for (int64_t r = 0; r < planeRows(src.format, p, rows); ++r)
      mp->pPixel->TMP_Scale_Run(dst.plane[p].data + r * dst.plane[p].pitch,
                                src.plane[p].data + r * src.plane[p].pitch, s.gain, s.offset,
                                int32_t(rowBytes(src.format, p, width)));
  }
}

// The pairs of format codes the library converts, found once by converting a
// small frame of each pair: a pair it refuses (result 0 or a log record) or
// leaves unwritten (kept for compatibility) is not taken.
// Every code of the geometry table but grey's.
constexpr int kCodeCount = int(std::size(kGeometry)) - 1;
int indexOf(int32_t code) {
  for (int i = 0; i < kCodeCount; ++i)
    if (kGeometry[i].code == code) return i;
  return -1;
}

class Routes {
 public:
  Routes() {
    for (int s = 0; s < kCodeCount; ++s)
      for (int d = 0; d < kCodeCount; ++d) ok_[s][d] = probe(kGeometry[s].code, kGeometry[d].code);
  }
  bool converts(int32_t code) const {
    const int c = indexOf(code);
    for (int o = 0; c >= 0 && o < kCodeCount; ++o)
      if (ok_[c][o] || ok_[o][c]) return true;
    return false;
  }
  // The shortest chain of codes from s to d, lossless intermediates first:
  // of bytes between two formats of bytes, of 16-bit samples otherwise.
  std::vector<int32_t> path(int32_t s, int32_t d) const {
    static constexpr int32_t kBytes[] = {
        TCS_FORMAT_YUVA,       TCS_FORMAT_YUV422,     TCS_FORMAT_YUV16,
        TCS_FORMAT_YUV16_SWAP, TCS_FORMAT_RGB32,      TCS_FORMAT_RGB32_SWAP,
        TCS_FORMAT_RGB24,      TCS_FORMAT_RGB24_SWAP, TCS_FORMAT_YUV};
    static constexpr int32_t kDeep[] = {TCS_FORMAT_P210, TCS_FORMAT_YUV422_10BIT,
                                        TCS_FORMAT_YUV16_10BIT, TCS_FORMAT_RGB64};
    const bool bytes = geometry(s).bytes && geometry(d).bytes;
    std::array<int, kCodeCount> from;
    from.fill(-1);
    const int si = indexOf(s), di = indexOf(d);
    if (si < 0 || di < 0) return {};
    from[si] = si;
    std::deque<int> queue{si};
    while (!queue.empty() && from[di] < 0) {
      const int a = queue.front();
      queue.pop_front();
      auto visit = [&](int b) {
        if (from[b] < 0 && ok_[a][b]) {
          from[b] = a;
          queue.push_back(b);
        }
      };
      visit(di);
      const std::span<const int32_t> first(kBytes), second(kDeep);
      for (int32_t code : bytes ? first : second) visit(indexOf(code));
      for (int32_t code : bytes ? second : first) visit(indexOf(code));
    }
    std::vector<int32_t> chain;
    if (from[di] < 0) return chain;
    for (int c = di; c != si; c = from[c]) chain.insert(chain.begin(), kGeometry[c].code);
    chain.insert(chain.begin(), s);
    return chain;
  }

 private:
  static bool probe(int32_t s, int32_t d) {
    static constexpr int64_t kWidth = 24, kRows = 16;
    static constexpr uint8_t kCanary = 0xEE;
    TCS_FrameDesc sd, dd;
    std::vector<uint8_t> src(static_cast<size_t>(place(sd, s, nullptr, kWidth, kRows)), 100);
    std::vector<uint8_t> dst(static_cast<size_t>(place(dd, d, nullptr, kWidth, kRows)), kCanary);
    place(sd, s, src.data(), kWidth, kRows);
    place(dd, d, dst.data(), kWidth, kRows);
    Capture capture;
    capture.quiet = true;
    ScopedCapture scope(&capture);
    const uint64_t result = TCS_GetAPIStuPtr()->pGeneral->TCS_ColorConvFrameEx(
        &dd, &sd, TCS_MATRIX_HD, kWidth, kRows, 0);
    const bool written =
        std::any_of(dst.begin(), dst.end(), [](uint8_t b) { return b != kCanary; });
    return result && capture.reason.empty() && written;
  }
  bool ok_[kCodeCount][kCodeCount];
};

const Routes &routes() {
  static const Routes table;
  return table;
}

// Bands start on multiples of four rows where 4:2:0 is on either side (a
// group of two rows of each field), of two otherwise; a seam is converted
// again from kMargin * 2 rows above it to as many below, and the kMargin rows
// either side of it are kept.
constexpr int32_t kMargin = 8;
constexpr int32_t kMinBand = 4 * kMargin;
int32_t bandStart(int32_t rows, unsigned part, unsigned parts, bool c420) {
  if (part >= parts) return rows;
  return int32_t(int64_t(rows) * part / parts) & (c420 ? ~3 : ~1);
}

}  // namespace

bool converts(int32_t code) { return routes().converts(code); }

int Plan::addTemp(int32_t code) {
  TCS_FrameDesc d;
  temps_.emplace_back(static_cast<size_t>(place(d, code, nullptr, width_, height_)));
  place(d, code, temps_.back().data(), width_, height_);
  images_.push_back(d);
  return int(images_.size()) - 1;
}

// Packed 4:4:4, which the range operations leave as it is, is scaled as YUVA.
void Plan::addScale(Op op, int dst, int src) {
  if (codeOf(src) != TCS_FORMAT_YUV) {
    steps_.push_back({op, dst, src});
    return;
  }
  const int t = addTemp(TCS_FORMAT_YUVA);
  addConvert(t, src);
  steps_.push_back({op, t, t});
  addConvert(dst, t);
}

// Through intermediates where the library has no direct route.
bool Plan::addConvert(int dst, int src) {
  const int32_t d = codeOf(dst);
  if (d == kGrayCode) {
    steps_.push_back({Op::Gray, dst, src});
    return true;
  }
  const std::vector<int32_t> chain = routes().path(codeOf(src), d);
  if (chain.empty()) return false;
  for (size_t i = 1; i + 1 < chain.size(); ++i) {
    const int t = addTemp(chain[i]);
    steps_.push_back({Op::Convert, t, src});
    src = t;
  }
  steps_.push_back({Op::Convert, dst, src});
  return true;
}

std::string Plan::build(const Side &in, const Side &out, int32_t width, int32_t height,
                        bool fields) {
  width_ = width;
  height_ = height;
  temps_.clear();
  steps_.clear();
  // Progressive 4:2:0 is sited on the frame where the library has that code.
  auto codeFor = [&](const Layout &l) {
    return fields || !converts(l.code) ? l.fieldCode : l.code;
  };
  images_.assign(2, TCS_FrameDesc{});
  images_[0].format = codeFor(in.layout);
  images_[1].format = codeFor(out.layout);
  if (in.layout.sampling == Sampling::Gray) return "the library converts nothing from GRAY8";
  if (out.layout.sampling == Sampling::Gray && !isByteRgb(in.layout.code))
    return "the library converts only 8-bit RGB to GRAY8";
  for (int i : {0, 1}) {
    const int32_t multiple = geometry(images_[i].format).widthMultiple;
    if (width % multiple)
      return (multiple == 2
                  ? std::string("4:2:x chroma needs an even width")
                  : "the format needs a width that is a multiple of " + std::to_string(multiple));
  }
  const bool c420 = in.layout.sampling == Sampling::C420 || out.layout.sampling == Sampling::C420;
  if (c420 && height % (fields ? 4 : 2))
    return fields ? "interlaced 4:2:0 needs a height that is a multiple of 4"
                  : "4:2:0 needs an even height";
  // Steps run with the source as image 0 and the destination as image 1.
  // Between two YUV layouts of one range the samples are resampled or
  // repacked as they are: no scaling, so repacks stay lossless.
  const bool scale = !(isYuv(in.layout) && isYuv(out.layout) && in.limited == out.limited);
  const bool deepIn = !geometry(images_[0].format).bytes,
             deepOut = !geometry(images_[1].format).bytes;
  const bool scaleIn = scale && in.limited && isYuv(in.layout);
  const bool scaleOut = scale && out.limited && isYuv(out.layout);
  // The library's range operations take bytes: video-range deep colour is
  // scaled in an 8-bit twin of its layout, which keeps all an 8-bit other
  // side can hold; between two deep sides that would lose their low bits.
  if (deepIn && deepOut && (scaleIn || scaleOut))
    return "the library scales the range of 8-bit samples only: video-range deep colour converts "
           "to another YUV format in video range or to and from 8-bit formats";
  auto byteTwin = [&](const Layout &l) {
    return l.sampling == Sampling::C420 ? codeFor({TCS_FORMAT_YUV420_FRAME, TCS_FORMAT_YUV420, {}})
                                        : TCS_FORMAT_YUV422;
  };
  int cur = 0;
  if (scaleIn && deepIn) {
    cur = addTemp(byteTwin(in.layout));
    if (!addConvert(cur, 0)) return "the library has no route between these formats";
  }
  if (scaleIn) {
    const int full = addTemp(codeOf(cur));
    addScale(Op::Expand, full, cur);
    cur = full;
  }
  int last = 1;
  if (scaleOut && deepOut) last = addTemp(byteTwin(out.layout));
  if (!addConvert(last, cur)) return "the library has no route between these formats";
  if (scaleOut) addScale(Op::Compress, last, last);
  if (last != 1 && !addConvert(1, last)) return "the library has no route between these formats";
  return {};
}

bool Plan::call(const Step &step, const TCS_FrameDesc &dst, const TCS_FrameDesc &src,
                int32_t rows) const {
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  switch (step.op) {
    case Op::Convert:
      return api->pGeneral->TCS_ColorConvFrameEx(&dst, &src, matrix, width_, rows, 0) != 0;
    case Op::Gray:
      (rgb32(src.format) ? api->pRGB32->TCS_RGB32_2_Gray_Frame
                         : api->pRGB24->TCS_RGB24_2_Gray_Frame)(
          dst.plane[0].data, dst.plane[0].pitch, src.plane[0].data, src.plane[0].pitch, width_,
          rows, matrix, bFirst(src.format), 0);
      return true;
    case Op::Expand:
    case Op::Compress:
      if (planeCount(src.format) > 1)
        scalePlanes(dst, src, step.op == Op::Expand, width_, rows);
      else
        (step.op == Op::Expand ? api->pGeneral->TCS_RangeExpandFrame
                               : api->pGeneral->TCS_RangeCompressFrame)(
            dst.plane[0].data, dst.plane[0].pitch, src.plane[0].data, src.plane[0].pitch,
            src.format, width_, rows, 0);
      return true;
  }
  return false;
}

bool Plan::runBands(const Step &step, const TCS_FrameDesc &dst, const TCS_FrameDesc &src,
                    int32_t rows, unsigned parts, Cut cut, const Runner &runner) const {
  const bool c420 = is420(dst.format) || is420(src.format);
  std::atomic<bool> ok{true};
  runner(parts, [&](unsigned part) {
    const int32_t r0 = bandStart(rows, part, parts, c420),
                  r1 = bandStart(rows, part + 1, parts, c420);
    if (!call(step, rowsFrom(dst, r0), rowsFrom(src, r0), r1 - r0)) ok = false;
  });
  if (cut != Cut::Seams || parts < 2) return ok;
  // Each seam again, into scratch rows of the destination's pitches.
  TCS_FrameDesc window;
  const int64_t bytes = place(window, dst.format, nullptr, width_, 4 * kMargin, &dst);
  if (seams_.size() < static_cast<size_t>(bytes) * (parts - 1))
    seams_.resize(static_cast<size_t>(bytes) * (parts - 1));
  runner(parts - 1, [&](unsigned seam) {
    const int32_t at = bandStart(rows, seam + 1, parts, c420);
    TCS_FrameDesc w;
    place(w, dst.format, seams_.data() + bytes * seam, width_, 4 * kMargin, &dst);
    if (!call(step, w, rowsFrom(src, at - 2 * kMargin), 4 * kMargin)) ok = false;
    const TCS_FrameDesc kept = rowsFrom(w, kMargin), to = rowsFrom(dst, at - kMargin);
    for (int p = 0; p < planeCount(dst.format); ++p)
      for (int64_t r = 0; r < planeRows(dst.format, p, 2 * kMargin); ++r)
        std::memcpy(to.plane[p].data + r * to.plane[p].pitch,
                    kept.plane[p].data + r * kept.plane[p].pitch,
                    static_cast<size_t>(rowBytes(dst.format, p, width_)));
  });
  return ok;
}

// Converts a frame of noise on the frames' own pitches in one call and in two
// bands, then in two bands with the seam again: the first way that gives
// the bytes of one call is the step's.
Plan::Cut Plan::probeCut(const Step &step, const TCS_FrameDesc &dst,
                         const TCS_FrameDesc &src) const {
  for (const TCS_FrameDesc *d : {&dst, &src})
    for (int p = 0; p < planeCount(d->format); ++p)
      if (d->plane[p].pitch < rowBytes(d->format, p, width_)) return Cut::Whole;
  constexpr int32_t kRows = 2 * kMinBand;
  TCS_FrameDesc s, one, two;
  std::vector<uint8_t> in(static_cast<size_t>(place(s, src.format, nullptr, width_, kRows, &src)));
  uint32_t seed = 21;
  for (uint8_t &b : in) b = uint8_t((seed = seed * 1103515245u + 12345u) >> 16);
  place(s, src.format, in.data(), width_, kRows, &src);
  std::vector<uint8_t> a(static_cast<size_t>(place(one, dst.format, nullptr, width_, kRows, &dst)));
  place(one, dst.format, a.data(), width_, kRows, &dst);
  Capture capture;
  capture.quiet = true;
  ScopedCapture scope(&capture);
  if (!call(step, one, s, kRows) || !capture.reason.empty()) return Cut::Whole;
  const Runner inTurn = [](unsigned parts, const std::function<void(unsigned)> &work) {
    for (unsigned i = 0; i < parts; ++i) work(i);
  };
  // Steps that write over their source keep to plain bands.
  const Cut tries[] = {Cut::Bands, step.dst == step.src ? Cut::Whole : Cut::Seams};
  for (Cut cut : tries) {
    if (cut == Cut::Whole) break;
    std::vector<uint8_t> b(a.size());
    place(two, dst.format, b.data(), width_, kRows, &dst);
    if (runBands(step, two, s, kRows, 2, cut, inTurn) && b == a) return cut;
  }
  return Cut::Whole;
}

bool Plan::run(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, unsigned parts,
               const Runner &runner) const {
  // The frames' planes with the codes the plan chose for them.
  for (int i : {0, 1}) {
    const int32_t code = images_[i].format;
    images_[i] = i == 0 ? src : dst;
    images_[i].format = code;
  }
  for (const Step &step : steps_) {
    const TCS_FrameDesc &d = images_[step.dst], &s = images_[step.src];
    const unsigned n = std::min<unsigned>(parts, unsigned(height_ / kMinBand));
    if (n > 1 && step.cut == Cut::Unknown) step.cut = probeCut(step, d, s);
    const bool cut = n > 1 && step.cut != Cut::Whole;
    if (!(cut ? runBands(step, d, s, height_, n, step.cut, runner) : call(step, d, s, height_)))
      return false;
  }
  return true;
}

}  // namespace tqgst
