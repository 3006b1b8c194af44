// The descriptor forms over the extended format space against unreadable
// pages: every pair with a code outside 0 to 10, in the three forms, each plane
// a buffer of its own ending at an unreadable page and then starting right
// after one, tight and padded pitches, both flips, widths and heights each
// layout takes and some it refuses: nothing outside the rows the descriptors
// describe may be read or written.
#include <cstdio>

#include "base/formats.hpp"
#include "support/guarded_planes.hpp"
#include "video/video_harness.hpp"

namespace {

using namespace tqcs::video_test;
using tqcs::FindFormat;
using tqcs::FormatInfo;
using tqcs::test::AddRows;
using tqcs::test::g_sweepCase;
using tqcs::test::Guard;
using tqcs::test::GuardedSet;
using tqcs::test::ReportSweepFaults;
using tqcs::test::Span;

std::vector<int32_t> Codes() {
  std::vector<int32_t> codes;
  for (const FormatInfo &f : tqcs::kFormats)
    if (f.packing != tqcs::Packing::Reserved) codes.push_back(f.code);
  return codes;
}

constexpr int32_t kWidths[] = {2, 4, 6, 12, 30};
constexpr int32_t kHeights[] = {1, 2, 4, 6, 8};

class DescriptorGuardSweep : public ::testing::TestWithParam<int32_t> {};

TEST_P(DescriptorGuardSweep, NoByteOutsideTheDescribedPlanesIsTouched) {
  const int32_t s = GetParam();
  ReportSweepFaults();
  for (Guard guard : {Guard::After, Guard::Before}) {
    GuardedSet set(guard, 9, 4 * 4096);
    for (int32_t d : Codes()) {
      if (s <= 10 && d <= 10) continue;  // the dispatcher's sweep
      for (Form f : kForms)
        for (int32_t w : kWidths)
          for (int32_t h : kHeights)
            for (int padded = 0; padded < 2; ++padded)
              for (uint8_t flip = 0; flip < 2; ++flip) {
                std::snprintf(g_sweepCase, sizeof g_sweepCase,
                              "%d to %d form %d w %d h %d padded %d flip %d guard %s", s, d, int{f},
                              w, h, padded, int{flip}, guard == Guard::After ? "after" : "before");
                TCS_FrameDesc desc[3] = {};
                std::vector<size_t> outputs;
                size_t next = 0;
                for (int i = 0; i < ImageCount(f); ++i) {
                  const FormatInfo &fi = *FindFormat(IsOutput(f, i) ? d : s);
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
