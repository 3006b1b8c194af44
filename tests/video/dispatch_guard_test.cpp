// Every code pair of the dispatcher in its three forms, through the buffers of
// slots 0 to 2 (planar planes derived inside one buffer) and through the
// descriptor forms (every plane a buffer of its own), with each buffer ending
// at an unreadable page and then starting right after one, tight and padded
// pitches, both flips: nothing outside the rows the header describes may be
// read or written, and the canaries between rows and planes must survive.
// Then every pair of the descriptor forms' extended space likewise, each
// plane a buffer of its own, at widths and heights each layout takes and some
// it refuses.

#include <cstdio>
#include <cstring>

#include "base/formats.hpp"
#include "support/guarded_planes.hpp"
#include "video/routes.hpp"
#include "video/video_harness.hpp"

namespace {

using namespace tqcs::video_test;
using tqcs::test::AddRows;
using tqcs::test::g_sweepCase;
using tqcs::test::Guard;
using tqcs::test::GuardedSet;
using tqcs::test::ReportSweepFaults;
using tqcs::test::Span;

using tqcs::video::Planar;
int64_t RowBytes(int code, int64_t w) { return tqcs::video::kBytesPerPixel[code] * w; }

// Luma rows of each image: the frame's height; half of it in a planar field
// buffer; a packed field has room for the odd row ((height + 1) / 2 rows) in
// both fields of a split and in field 1 of a compose.
int64_t RowsOf(Form f, int i, int code, int64_t h) {
  if (!IsField(f, i)) return h;
  if (Planar(code)) return h / 2;
  return f == kSplit || i == 1 ? (h + 1) / 2 : h / 2;
}

struct Plane {
  int64_t offset, pitch, rowBytes, rows;
};

// The planes of an image of `rows` luma rows with luma pitch `pitch`: U after
// the luma rows at half the pitch, V after U's rows.
std::vector<Plane> PlanesOf(int code, int64_t w, int64_t rows, int64_t pitch) {
  if (!Planar(code)) return {{0, pitch, RowBytes(code, w), rows}};
  const int64_t cp = pitch >> 1, cr = code == 8 ? rows : rows >> 1, u = pitch * rows;
  return {{0, pitch, w, rows}, {u, cp, w / 2, cr}, {u + cp * cr, cp, w / 2, cr}};
}

constexpr int32_t kWidths[] = {1, 2, 3, 5, 8, 17, 40};
constexpr int32_t kHeights[] = {1, 2, 3, 5, 6, 7, 9};

class DispatchGuardSweep : public ::testing::TestWithParam<int> {};

TEST_P(DispatchGuardSweep, NoByteOutsideTheDescribedBuffersIsTouched) {
  const int s = GetParam();
  ReportSweepFaults();
  LogCapture log;
  for (Guard guard : {Guard::After, Guard::Before}) {
    GuardedSet set(guard, 9, 4 * 4096);
    for (int d = 0; d < 11; ++d)
      for (Form f : kForms)
        for (bool descriptors : {false, true})
          for (int32_t w : kWidths)
            for (int32_t h : kHeights)
              for (int padded = 0; padded < 2; ++padded)
                for (uint8_t flip = 0; flip < 2; ++flip) {
                  std::snprintf(g_sweepCase, sizeof g_sweepCase,
                                "%d to %d form %d%s w %d h %d padded %d flip %d guard %s", s, d,
                                int{f}, descriptors ? " (descriptors)" : "", w, h, padded,
                                int{flip}, guard == Guard::After ? "after" : "before");
                  std::vector<TCS_FrameDesc> desc(3);
                  std::vector<size_t> outputs;
                  size_t next = 0;
                  for (int i = 0; i < ImageCount(f); ++i) {
                    const int code = IsOutput(f, i) ? d : s;
                    const int64_t pitch =
                        std::max<int64_t>(RowBytes(code, w), 1) + (padded ? 3 + 2 * int64_t{i} : 0);
                    const auto planes = PlanesOf(code, w, RowsOf(f, i, code, h), pitch);
                    desc[i].format = code;
                    if (!descriptors) {
                      std::vector<Span> spans;
                      for (const Plane &p : planes)
                        AddRows(spans, p.offset, p.pitch, p.rowBytes, p.rows);
                      if (IsOutput(f, i)) outputs.push_back(next);
                      desc[i].plane[0] = {set.Place(next++, spans, s * 977 + w + h), pitch};
                      continue;
                    }
                    for (size_t k = 0; k < planes.size(); ++k) {
                      const Plane &p = planes[k];
                      const int64_t planePitch = std::max<int64_t>(p.pitch, 1);
                      std::vector<Span> spans;
                      AddRows(spans, 0, planePitch, p.rowBytes, p.rows);
                      if (IsOutput(f, i)) outputs.push_back(next);
                      desc[i].plane[k] = {set.Place(next++, spans, d * 31 + w + h), planePitch};
                    }
                  }
                  const TCS_GeneralTable &g = General();
                  const auto &x = desc;
                  if (descriptors) {
                    if (f == kFrame) g.TCS_ColorConvFrameEx(&x[0], &x[1], 0, w, h, flip);
                    if (f == kSplit) g.TCS_ColorConvSplitEx(&x[0], &x[1], &x[2], 0, w, h, flip);
                    if (f == kCompose) g.TCS_ColorConvComposeEx(&x[0], &x[1], &x[2], 0, w, h, flip);
                  } else {
                    auto p = [&](int i) { return x[i].plane[0]; };
                    if (f == kFrame)
                      g.TCS_ColorConvFrame(p(0).data, p(0).pitch, d, p(1).data, p(1).pitch, s, 0, w,
                                           h, flip);
                    if (f == kSplit)
                      g.TCS_ColorConvSplit(p(0).data, p(0).pitch, p(1).data, p(1).pitch, d,
                                           p(2).data, p(2).pitch, s, 1, w, h, flip);
                    if (f == kCompose)
                      g.TCS_ColorConvCompose(p(0).data, p(0).pitch, d, p(1).data, p(1).pitch,
                                             p(2).data, p(2).pitch, s, 3, w, h, flip);
                  }
                  for (size_t k : outputs)
                    if (!set.CanariesIntact(k)) {
                      ADD_FAILURE()
                          << g_sweepCase << ": buffer " << k << " written outside its rows";
                      return;
                    }
                  log.clear();
                }
  }
}

INSTANTIATE_TEST_SUITE_P(EverySourceCode, DispatchGuardSweep, ::testing::Range(0, 11));

std::vector<int32_t> Codes() {
  std::vector<int32_t> codes;
  for (const tqcs::FormatInfo &f : tqcs::kFormats)
    if (f.packing != tqcs::Packing::Reserved) codes.push_back(f.code);
  return codes;
}

constexpr int32_t kExtendedWidths[] = {2, 4, 6, 12, 30};
constexpr int32_t kExtendedHeights[] = {1, 2, 4, 6, 8};

class DescriptorGuardSweep : public ::testing::TestWithParam<int32_t> {};

TEST_P(DescriptorGuardSweep, NoByteOutsideTheDescribedPlanesIsTouched) {
  const int32_t s = GetParam();
  ReportSweepFaults();
  for (Guard guard : {Guard::After, Guard::Before}) {
    GuardedSet set(guard, 9, 4 * 4096);
    for (int32_t d : Codes()) {
      if (s <= 10 && d <= 10) continue;  // the dispatcher's sweep
      for (Form f : kForms)
        for (int32_t w : kExtendedWidths)
          for (int32_t h : kExtendedHeights)
            for (int padded = 0; padded < 2; ++padded)
              for (uint8_t flip = 0; flip < 2; ++flip) {
                std::snprintf(g_sweepCase, sizeof g_sweepCase,
                              "%d to %d form %d w %d h %d padded %d flip %d guard %s", s, d, int{f},
                              w, h, padded, int{flip}, guard == Guard::After ? "after" : "before");
                TCS_FrameDesc desc[3] = {};
                std::vector<size_t> outputs;
                size_t next = 0;
                for (int i = 0; i < ImageCount(f); ++i) {
                  const tqcs::FormatInfo &fi = *tqcs::FindFormat(IsOutput(f, i) ? d : s);
                  const int64_t rows = IsField(f, i) ? h / 2 : h;
                  desc[i].format = fi.code;
                  for (int k = 0; k < fi.planes; ++k) {
                    const int64_t bytes = tqcs::PlaneRowBytes(fi, k, w);
                    const int64_t pitch = std::max<int64_t>(bytes, 1) + (padded ? 2 + i + k : 0);
                    std::vector<Span> spans;
                    AddRows(spans, 0, pitch, bytes, tqcs::PlaneRows(fi, k, rows));
                    if (IsOutput(f, i)) outputs.push_back(next);
                    desc[i].plane[k] = {set.Place(next++, spans, d * 31 + w + h), pitch};
                  }
                }
                const TCS_GeneralTable &g = General();
                if (f == kFrame) g.TCS_ColorConvFrameEx(&desc[0], &desc[1], 1, w, h, flip);
                if (f == kSplit)
                  g.TCS_ColorConvSplitEx(&desc[0], &desc[1], &desc[2], 0, w, h, flip);
                if (f == kCompose)
                  g.TCS_ColorConvComposeEx(&desc[0], &desc[1], &desc[2], 3, w, h, flip);
                for (size_t k : outputs)
                  if (!set.CanariesIntact(k)) {
                    ADD_FAILURE() << g_sweepCase << ": buffer " << k << " written outside its rows";
                    return;
                  }
              }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EverySourceCode, DescriptorGuardSweep, ::testing::ValuesIn(Codes()));

}  // namespace
