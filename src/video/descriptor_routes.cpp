#include "video/descriptor_routes.hpp"

#include <array>
#include <cstring>

#include "base/formats.hpp"
#include "base/scratch.hpp"
#include "base/state.hpp"
#include "frame/chroma_planes.hpp"
#include "kernels/chroma_progressive.hpp"
#include "video/line_chains_run.hpp"

namespace tqcs::video {
namespace {

using lines::Line;
using lines::Row;

// One side of a conversion: a frame, or two field buffers of height / 2 rows
// each, in one format.
struct Side {
  const FormatInfo *f = nullptr;
  Line line{};
  std::array<std::array<Plane, 3>, 2> buf{};
  bool fields = false;
  bool flip = false;  // a frame read or written bottom-up
};

bool Sub(const Side &s) { return s.f->chromaShiftY != 0; }
int Buffers(const Side &s) { return s.fields ? 2 : 1; }
bool Deep(const Side &s) { return s.f->sampleBytes == 2; }

// The state of one call. It runs twice: dry, adding up the scratch memory its
// steps take, then for real from one allocation of that size, so a failed
// allocation has written nothing.
struct Job {
  int32_t width = 0, height = 0;
  lines::Coefficients coef;
  bool dry = true;
  size_t used = 0;
  uint8_t *arena = nullptr;

  uint8_t *Take(size_t bytes) {
    uint8_t *p = dry ? nullptr : arena + used;
    used += (bytes + 63) & ~size_t{63};
    return p;
  }
  int64_t Rows(const Side &s) const { return s.fields ? height / 2 : height; }
};

// The chroma row of luma row r in an image of `rows` rows: its pair's row; in
// an interlaced frame the row of its own field, where the last two rows of a
// height 4n + 2 pair up as a progressive frame's do.
int64_t ChromaRowOf(int64_t r, int64_t rows, bool interlaced) {
  if (!interlaced || r >= (rows & ~int64_t{3})) return r >> 1;
  return ((r >> 2) << 1) | (r & 1);
}

// The rows of frame row y of a side: row y of the frame (counted from the
// bottom under flip), or row y / 2 of field buffer y & 1.
Row RowsAt(const Job &j, const Side &s, int64_t y) {
  const int b = s.fields ? static_cast<int>(y & 1) : 0;
  const int64_t rows = j.Rows(s);
  const int64_t r = s.fields ? y >> 1 : s.flip ? rows - 1 - y : y;
  const bool interlaced = !s.fields && s.f->siting == Siting::Field;
  Row row{};
  for (int k = 0; k < s.f->planes; ++k)
    row[k] = s.buf[b][k].Row(k > 0 && Sub(s) ? ChromaRowOf(r, rows, interlaced) : r);
  return row;
}

// Every frame row through the chain of the two layouts.
void Walk(Job &j, const Side &dst, const Side &src) {
  const lines::Chain &chain = *lines::ChainOf(src.line, dst.line);
  uint8_t *scratch = j.Take(lines::ChainScratchBytes(chain, j.width));
  if (j.dry) return;
  const auto run = lines::PrepareChain(chain, src.line, j.width, scratch);
  for (int64_t y = 0; y < j.height; ++y)
    lines::RunChain(run, RowsAt(j, dst, y), RowsAt(j, src, y), j.coef);
}

// A side in format `code` laid out like `like`, its planes in scratch memory.
// With `lumaOf`, plane 0 is that side's instead.
Side ScratchSide(Job &j, const Side &like, int32_t code, const Side *lumaOf = nullptr) {
  Side s = like;
  s.f = FindFormat(code);
  s.line = *lines::LineOf(code);
  for (int b = 0; b < Buffers(s); ++b)
    for (int k = 0; k < s.f->planes; ++k) {
      if (k == 0 && lumaOf) {
        s.buf[b][0] = lumaOf->buf[b][0];
        continue;
      }
      const int64_t pitch = (PlaneRowBytes(*s.f, k, j.width) + 63) & ~int64_t{63};
      const int64_t rows = PlaneRows(*s.f, k, j.Rows(s));
      s.buf[b][k] = {j.Take(static_cast<size_t>(pitch * rows)), pitch};
    }
  return s;
}

// The planar 4:2:0 or 4:2:2 format of a side's depth and siting, in which its
// chroma is resampled.
int32_t Canonical(const Side &s, bool sub) {
  constexpr int32_t k422[2] = {TCS_FORMAT_YUV422, TCS_FORMAT_YUV422_10BIT};
  constexpr int32_t k420Field[2] = {TCS_FORMAT_YUV420, TCS_FORMAT_YUV420_10BIT};
  constexpr int32_t k420Frame[2] = {TCS_FORMAT_YUV420_FRAME, TCS_FORMAT_YUV420_10BIT_FRAME};
  const int deep = Deep(s);
  if (!sub) return k422[deep];
  return s.f->siting == Siting::Field ? k420Field[deep] : k420Frame[deep];
}

// The frame-sited routines of one sample size.
template <class T>
struct CentredSet {
  CentredDownFn<T> down;
  CentredUpFn<T> first, last, interior;
};
template <class T>
CentredSet<T> CentredOf(const ProgressiveChroma &pc) {
  if constexpr (sizeof(T) == 1)
    return {pc.YUV422_2_YUV420_UV_Centred_Row, pc.YUV420_2_YUV422_UV_Centred_FirstRow,
            pc.YUV420_2_YUV422_UV_Centred_LastRow, pc.YUV420_2_YUV422_UV_Centred_Row};
  else
    return {pc.YUV422_16_2_YUV420_16_UV_Centred_Row, pc.YUV420_16_2_YUV422_16_UV_Centred_FirstRow,
            pc.YUV420_16_2_YUV422_16_UV_Centred_LastRow, pc.YUV420_16_2_YUV422_16_UV_Centred_Row};
}

// Chroma row c of `chromaRows` in frame-sited planes (`narrow`: planes 1 and
// 2) and its two rows in 4:2:2 planes (`wide`: planes 1 and 2 at the first of
// the two rows, the pitch leading to the second), through the routines
// start-up chose. A plane of one chroma row has no neighbour on either side.
template <class T>
void CentredRow(bool up, int64_t c, int64_t chromaRows, const Plane *wide, const Plane *narrow,
                int32_t width) {
  const CentredSet<T> set = CentredOf<T>(*g_pProgressiveChroma);
  auto at = [](const Plane &pl, int64_t r) { return reinterpret_cast<T *>(pl.Row(r)); };
  const int32_t half = width / 2;
  if (!up) {
    set.down(at(narrow[1], c), at(narrow[2], c), at(wide[1], 0), wide[1].pitch, at(wide[2], 0),
             wide[2].pitch, half);
    return;
  }
  const auto row = c == 0 ? set.first : c == chromaRows - 1 ? set.last : set.interior;
  const bool alone = chromaRows == 1;
  row(at(wide[1], 0), wide[1].pitch, at(wide[2], 0), wide[2].pitch, at(narrow[1], c),
      alone ? 0 : narrow[1].pitch, at(narrow[2], c), alone ? 0 : narrow[2].pitch, half);
}

void CentredRow(bool deep, bool up, int64_t c, int64_t chromaRows, const Plane *wide,
                const Plane *narrow, int32_t width) {
  deep ? CentredRow<uint16_t>(up, c, chromaRows, wide, narrow, width)
       : CentredRow<uint8_t>(up, c, chromaRows, wide, narrow, width);
}

// Frame-sited chroma of whole planes, row by row.
void ResampleCentred(bool deep, bool up, const Plane *wide, const Plane *narrow, int64_t rows,
                     int32_t width) {
  for (int64_t c = 0; c < rows / 2; ++c) {
    const Plane at[3] = {
        {}, {wide[1].Row(2 * c), wide[1].pitch}, {wide[2].Row(2 * c), wide[2].pitch}};
    CentredRow(deep, up, c, rows / 2, at, narrow, width);
  }
}

// The chroma of every image of a side between its 4:2:0 planes (`narrow`) and
// 4:2:2 planes (`wide`), physical rows, no flip. A field-sited frame is walked
// field by field, a field buffer as a frame of one field; frame-sited chroma
// is centred.
void Resample(const Job &j, bool up, const Side &wide, const Side &narrow) {
  if (j.dry) return;
  const bool centred = narrow.f->siting == Siting::Frame;
  const uint8_t interlaced = !narrow.fields && !centred;
  const auto rows = static_cast<int32_t>(j.Rows(narrow));
  for (int b = 0; b < Buffers(narrow); ++b) {
    const Plane *w = wide.buf[b].data(), *n = narrow.buf[b].data();
    if (centred) {
      ResampleCentred(Deep(narrow), up, w, n, rows, j.width);
      continue;
    }
    auto u16 = [](const Plane &pl) { return reinterpret_cast<uint16_t *>(pl.p); };
    if (up && Deep(narrow))
      frame::YUV420_16_2_YUV422_16_UV_Frame(u16(w[1]), w[1].pitch, u16(w[2]), w[2].pitch, u16(n[1]),
                                            n[1].pitch, u16(n[2]), n[2].pitch, j.width, rows,
                                            interlaced, 0);
    else if (up)
      frame::YUV420_2_YUV422_UV_Frame(w[1].p, w[1].pitch, w[2].p, w[2].pitch, n[1].p, n[1].pitch,
                                      n[2].p, n[2].pitch, j.width, rows, interlaced, 0);
    else if (Deep(narrow))
      frame::YUV422_16_2_YUV420_16_UV_Frame(u16(n[1]), n[1].pitch, u16(n[2]), n[2].pitch, u16(w[1]),
                                            w[1].pitch, u16(w[2]), w[2].pitch, j.width, rows,
                                            interlaced, 0);
    else
      frame::YUV422_2_YUV420_UV_Frame(n[1].p, n[1].pitch, n[2].p, n[2].pitch, w[1].p, w[1].pitch,
                                      w[2].p, w[2].pitch, j.width, rows, interlaced, 0);
  }
}

// Whether two 4:2:0 sides share their chroma rows, so that chroma converts row
// for row: a frame and a frame (or fields and fields) sited alike, unless a
// flipped field-sited frame of height 4n + 2 reorders its last pair; a frame
// against fields when both are sited per field.
bool ChromaRowForRow(const Job &j, const Side &dst, const Side &src) {
  if (!Sub(dst) || !Sub(src)) return false;
  const bool field = dst.f->siting == Siting::Field && src.f->siting == Siting::Field;
  if (dst.fields != src.fields) return field;
  const bool flipped = dst.flip || src.flip;
  return dst.f->siting == src.f->siting && !(field && flipped && (j.height & 2));
}

// Frames of one depth between the planar 4:2:0 and 4:2:2 layouts, neither
// flipped: the chroma planes resampled straight into the destination's, the
// luma rows copied.
bool ResampleOnly(Job &j, const Side &dst, const Side &src) {
  if (dst.fields || src.fields || dst.flip || src.flip || Sub(dst) == Sub(src)) return false;
  const Side &narrow = Sub(src) ? src : dst, &wide = Sub(src) ? dst : src;
  if (narrow.f->code != Canonical(narrow, true) || wide.f->code != Canonical(narrow, false))
    return false;
  if (j.dry) return true;
  Resample(j, Sub(src), wide, narrow);
  const auto bytes = static_cast<size_t>(PlaneRowBytes(*dst.f, 0, j.width));
  for (int64_t y = 0; y < j.height; ++y)
    std::memcpy(dst.buf[0][0].Row(y), src.buf[0][0].Row(y), bytes);
  return true;
}

// Frame-sited planar 4:2:0 (`narrow`, a frame read or written top-down)
// against a frame of full chroma height, two rows at a time: the pair's chroma
// widened into two scratch rows before the rows convert, or merged from them
// after, so chroma is resampled while it is in cache.
bool InPairs(const Side &narrow, const Side &other) {
  return narrow.f->siting == Siting::Frame && narrow.f->code == Canonical(narrow, true) &&
         !narrow.fields && !narrow.flip && !other.fields && !Sub(other);
}

void WalkInPairs(Job &j, const Side &dst, const Side &src) {
  const bool up = Sub(src);
  const Side &narrow = up ? src : dst;
  const lines::Chain &chain = *lines::ChainOf(src.line, dst.line);
  const int64_t pitch = (PlaneRowBytes(*narrow.f, 1, j.width) + 63) & ~int64_t{63};
  uint8_t *chroma = j.Take(static_cast<size_t>(4 * pitch));
  uint8_t *scratch = j.Take(lines::ChainScratchBytes(chain, j.width));
  if (j.dry) return;
  const auto run = lines::PrepareChain(chain, src.line, j.width, scratch);
  const Plane wide[3] = {{}, {chroma, pitch}, {chroma + 2 * pitch, pitch}};
  const int64_t chromaRows = j.height / 2;
  for (int64_t c = 0; c < chromaRows; ++c) {
    if (up) CentredRow(Deep(narrow), true, c, chromaRows, wide, narrow.buf[0].data(), j.width);
    for (int64_t y = 2 * c; y < 2 * c + 2; ++y) {
      const Row pair = {narrow.buf[0][0].Row(y), wide[1].Row(y & 1), wide[2].Row(y & 1)};
      lines::RunChain(run, up ? RowsAt(j, dst, y) : pair, up ? pair : RowsAt(j, src, y), j.coef);
    }
    if (!up) CentredRow(Deep(narrow), false, c, chromaRows, wide, narrow.buf[0].data(), j.width);
  }
}

// The conversion of one side to the other. A 4:2:0 side whose chroma rows do
// not match the other side's goes through its planar form at full chroma
// height (scratch planes); the rest is the row walk.
void Convert(Job &j, const Side &dst, const Side &src) {
  if (ResampleOnly(j, dst, src)) return;
  if (Sub(src) && !ChromaRowForRow(j, dst, src)) {
    Side narrow = src;
    if (src.f->code != Canonical(src, true)) {
      narrow = ScratchSide(j, src, Canonical(src, true));
      Side a = narrow, b = src;
      a.flip = b.flip = false;
      Walk(j, a, b);
    }
    if (InPairs(narrow, dst)) return WalkInPairs(j, dst, narrow);
    const Side wide = ScratchSide(j, narrow, Canonical(src, false), &narrow);
    Resample(j, true, wide, narrow);
    Convert(j, dst, wide);
    return;
  }
  if (Sub(dst) && !ChromaRowForRow(j, dst, src)) {
    const bool planar = dst.f->code == Canonical(dst, true);
    const Side narrow = planar ? dst : ScratchSide(j, dst, Canonical(dst, true));
    if (InPairs(narrow, src)) {
      WalkInPairs(j, narrow, src);
    } else {
      const Side wide = ScratchSide(j, narrow, Canonical(dst, false), &narrow);
      Convert(j, wide, src);
      Resample(j, false, wide, narrow);
    }
    if (!planar) {
      Side a = dst, b = narrow;
      a.flip = b.flip = false;
      Walk(j, a, b);
    }
    return;
  }
  Walk(j, dst, src);
}

// A side from descriptors, or none when a plane it needs is missing or its
// pitch is below the row's bytes.
std::optional<Side> SideOf(const TCS_FrameDesc *const *descs, int count, int32_t width) {
  Side s;
  s.f = FindFormat(descs[0]->format);
  s.line = *lines::LineOf(descs[0]->format);
  s.fields = count == 2;
  for (int b = 0; b < count; ++b)
    for (int k = 0; k < s.f->planes; ++k) {
      const TCS_Plane &pl = descs[b]->plane[k];
      if (!pl.data || pl.pitch < PlaneRowBytes(*s.f, k, width)) return std::nullopt;
      s.buf[b][k] = {pl.data, pl.pitch};
    }
  return s;
}

}  // namespace

uint64_t ConvertDescriptors(Form form, const TCS_FrameDesc *const images[3], int32_t matrix,
                            int32_t width, int32_t height, uint8_t flip) {
  const int count = form == Form::kFrame ? 2 : 3;
  for (int i = 0; i < count; ++i)
    if (!images[i]) return 0;
  // Split: field 1, field 2, source; compose: destination, field 1, field 2.
  const int firstSrc = form == Form::kSplit ? 2 : 1;
  const int srcCount = form == Form::kCompose ? 2 : 1;
  const int dstCount = form == Form::kSplit ? 2 : 1;
  const TCS_FrameDesc *const *dstDescs = images, *const *srcDescs = images + firstSrc;
  if (dstDescs[dstCount - 1]->format != dstDescs[0]->format ||
      srcDescs[srcCount - 1]->format != srcDescs[0]->format)
    return 0;
  const int32_t srcCode = srcDescs[0]->format, dstCode = dstDescs[0]->format;
  const auto &chain = lines::ChainOfCodes(srcCode, dstCode);
  if (!chain || matrix >= 4 || width < 1 || height < 1) return 0;

  Job j;
  j.width = width;
  j.height = height;
  if (chain->matrix && !lines::CoefficientsOf(matrix, j.coef)) return 0;
  const FormatInfo &sf = *FindFormat(srcCode), &df = *FindFormat(dstCode);
  const bool sub = sf.chromaShiftY || df.chromaShiftY;
  if (width % sf.widthMultiple || width % df.widthMultiple) return 0;
  if (form == Form::kFrame ? sub && (height & 1) : (height & (sub ? 3 : 1))) return 0;
  auto dst = SideOf(dstDescs, dstCount, width), src = SideOf(srcDescs, srcCount, width);
  if (!dst || !src) return 0;
  (form == Form::kSplit ? src : dst)->flip = flip != 0;

  Convert(j, *dst, *src);
  ScratchBuffer arena;
  if (j.used) {
    arena = MakeScratch(j.used);
    if (!arena) return 0;
  }
  j.dry = false;
  j.used = 0;
  j.arena = arena.get();
  Convert(j, *dst, *src);
  return 1;
}

}  // namespace tqcs::video
