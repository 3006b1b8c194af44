// Every slot of sub-tables 1 to 7, in each of its forms, at many small widths
// and heights, both flips, tight and padded (odd) pitches, with every plane
// ending at an unreadable page and then starting right after one: a byte read
// or written outside the planes the caller described faults, and the canaries
// in the pitch padding must survive. The plane layouts are those the public
// header gives: a packed 4:2:2 row of odd width is 2 x width bytes, a field
// holds (height + 1) / 2 or height / 2 rows as its family says.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>

#include "drivers/driver_harness.hpp"
#include "support/guarded_planes.hpp"
#include "support/log_capture.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

// The call under way, written to stderr if it faults.
char g_current[256];
void ReportFault(int sig) {
  const char prefix[] = "\nfault in guard sweep: ";
  (void)!write(2, prefix, sizeof prefix - 1);
  (void)!write(2, g_current, strnlen(g_current, sizeof g_current));
  (void)!write(2, "\n", 1);
  signal(sig, SIG_DFL);
  raise(sig);
}

enum class L {
  kP1,
  kP3,
  kP4,
  kYUV16,
  kP422,
  kP422x16,
  kP420,
  kP420x16,
  kHSV,
  kUV422,
  kUV420,
  kHist
};

// Row bytes and rows of each plane: 4:2:2 planes use the luma rows, 4:2:0
// chroma planes the chroma rows.
std::vector<PlaneShape> Shapes(L l, int64_t w, int64_t luma, int64_t chroma) {
  const int64_t h = w / 2;
  switch (l) {
    case L::kP1:
      return {{w, luma}};
    case L::kP3:
      return {{3 * w, luma}};
    case L::kP4:
      return {{4 * w, luma}};
    case L::kYUV16:
      return {{2 * w, luma}};
    case L::kP422:
      return {{w, luma}, {h, luma}, {h, luma}};
    case L::kP422x16:
      return {{2 * w, luma}, {2 * h, luma}, {2 * h, luma}};
    case L::kP420:
      return {{w, luma}, {h, chroma}, {h, chroma}};
    case L::kP420x16:
      return {{2 * w, luma}, {2 * h, chroma}, {2 * h, chroma}};
    case L::kHSV:
      return {{2 * w, luma}, {w, luma}, {w, luma}};
    case L::kUV422:
      return {{h, luma}, {h, luma}};
    case L::kUV420:
      return {{h, chroma}, {h, chroma}};
    case L::kHist:
      return {{1024, 1}, {1024, 1}, {1024, 1}};
  }
  return {};
}

// The rows of the fields: both (height + 1) / 2 where a split copies the odd
// row into field 2; height / 2 where the odd row is dropped; otherwise field 1
// (height + 1) / 2 and field 2 height / 2.
enum class Fields { kCopyOdd, kField1Odd, kDropOdd };

struct Entry {
  L src, dst;
  std::vector<int64_t> options;  // before flip
  Fields fields = Fields::kCopyOdd;
};

// By the slot's base name (without TCS_ and the form suffix), or its whole
// name for slots outside a triple.
const std::map<std::string, Entry> &Entries() {
  static const std::map<std::string, Entry> entries = {
      {"RGB32_SwapRB", {L::kP4, L::kP4, {}, Fields::kDropOdd}},
      {"RGB32_2_YUVA", {L::kP4, L::kP4, {0, 1}}},
      {"RGB32_2_YUV16", {L::kP4, L::kYUV16, {0, 1, 1}}},
      {"RGB32_2_YUV422", {L::kP4, L::kP422, {1, 0}}},
      {"RGB32_2_YUV420", {L::kP4, L::kP420, {0, 1}, Fields::kField1Odd}},
      {"RGB32_2_Gray", {L::kP4, L::kP1, {3, 1}}},
      {"RGB24_SwapRB", {L::kP3, L::kP3, {}, Fields::kDropOdd}},
      {"RGB24_2_YUVA", {L::kP3, L::kP4, {0, 1, 77}}},
      {"RGB24_2_YUV16", {L::kP3, L::kYUV16, {1, 0, 1}}},
      {"RGB24_2_YUV422", {L::kP3, L::kP422, {0, 1}}},
      {"RGB24_2_YUV420", {L::kP3, L::kP420, {3, 0}, Fields::kField1Odd}},
      {"RGB24_2_YUV", {L::kP3, L::kP3, {0, 0}}},
      {"RGB24_2_HSV", {L::kP3, L::kHSV, {1}}},
      {"RGB24_2_Gray", {L::kP3, L::kP1, {0, 0}}},
      {"RGB24_Histogram", {L::kP3, L::kHist, {1}}},
      {"YUVA_2_RGB32", {L::kP4, L::kP4, {0, 1}}},
      {"YUVA_2_RGB24", {L::kP4, L::kP3, {1, 0}}},
      {"YUVA_2_YUV16", {L::kP4, L::kYUV16, {1}}},
      {"YUVA_2_YUV422", {L::kP4, L::kP422, {}}},
      {"YUV16_Swap", {L::kYUV16, L::kYUV16, {}, Fields::kField1Odd}},
      {"YUV16_2_RGB32", {L::kYUV16, L::kP4, {0, 1, 0, 200}}},
      {"YUV16_2_RGB24", {L::kYUV16, L::kP3, {3, 0, 1}}},
      {"YUV16_2_YUVA", {L::kYUV16, L::kP4, {1, 9}}},
      {"YUV16_2_YUV422", {L::kYUV16, L::kP422, {0}}},
      {"YUV16_2_YUV420", {L::kYUV16, L::kP420, {1}, Fields::kField1Odd}},
      {"YUV16_2_YUV", {L::kYUV16, L::kP3, {0}}},
      {"YUV422_2_RGB32", {L::kP422, L::kP4, {0, 1, 255}}},
      {"YUV422_2_RGB24", {L::kP422, L::kP3, {1, 0}}},
      {"YUV422_2_YUVA", {L::kP422, L::kP4, {55}}},
      {"YUV422_2_YUV16", {L::kP422, L::kYUV16, {1}}},
      {"YUV422_10Bit_2_YUV16", {L::kP422x16, L::kYUV16, {0}}},
      {"YUV422_2_YUV420_UV", {L::kUV422, L::kUV420, {}, Fields::kField1Odd}},
      {"YUV422_10Bit_2_YUV422", {L::kP422x16, L::kP422, {}}},
      {"YUV422_2_YUV420_UV_Field", {L::kUV422, L::kUV420, {1}}},
      {"YUV420_2_RGB32", {L::kP420, L::kP4, {0, 1, 128}, Fields::kField1Odd}},
      {"YUV420_2_RGB24", {L::kP420, L::kP3, {1, 0}, Fields::kField1Odd}},
      {"YUV420_2_YUVA", {L::kP420, L::kP4, {255}, Fields::kField1Odd}},
      {"YUV420_2_YUV16", {L::kP420, L::kYUV16, {0}, Fields::kField1Odd}},
      {"YUV420_10Bit_2_YUV16", {L::kP420x16, L::kYUV16, {1}, Fields::kField1Odd}},
      {"YUV420_2_YUV", {L::kP420, L::kP3, {}, Fields::kField1Odd}},
      {"YUV420_2_YUV422_UV", {L::kUV420, L::kUV422, {}, Fields::kField1Odd}},
      {"YUV420_10Bit_2_YUV420", {L::kP420x16, L::kP420, {}}},
      {"YUV420_2_YUV422_UV_Field", {L::kUV420, L::kUV422, {1}}},
      {"YUV_2_RGB32", {L::kP3, L::kP4, {0, 1, 255}}},
      {"YUV_2_RGB24", {L::kP3, L::kP3, {0, 1}}},
      {"YUV_2_YUV16", {L::kP3, L::kYUV16, {0}}},
      {"YUV_2_YUV422", {L::kP3, L::kP422, {}}},
      {"YUV_2_YUV420", {L::kP3, L::kP420, {}}},
  };
  return entries;
}

enum Form { kFrame, kSplit, kCompose };

// A slot's form and base name.
std::pair<Form, std::string> FormOf(const std::string &name) {
  std::string base = name.substr(4);  // without TCS_
  for (auto [suffix, form] :
       {std::pair{"_Frame", kFrame}, {"_Split", kSplit}, {"_Compose", kCompose}})
    if (base.ends_with(suffix)) return {form, base.substr(0, base.size() - strlen(suffix))};
  return {kFrame, base};
}

int64_t FieldLuma(Fields rule, Form form, int i, int64_t h) {
  if (rule == Fields::kDropOdd) return h / 2;
  if (rule == Fields::kCopyOdd && form == kSplit) return (h + 1) / 2;
  return i == 0 ? (h + 1) / 2 : h / 2;
}

// The images of a call in argument order, each as (layout, luma rows, chroma
// rows, written). A split's fields are images of their own (4:2:0 chroma for
// half their rows); a compose reads the frame's chroma rows alternately from
// its fields.
struct ImageSpec {
  L layout;
  int64_t luma, chroma;
  bool output;
};
std::vector<ImageSpec> ImagesOf(const Entry &e, Form form, int64_t h) {
  auto field = [&](L l, int i, bool output) {
    const int64_t luma = FieldLuma(e.fields, form, i, h);
    const int64_t chroma = form == kSplit ? luma / 2 : (i == 0 ? (h / 2 + 1) / 2 : h / 4);
    return ImageSpec{l, luma, chroma, output};
  };
  const ImageSpec dst{e.dst, h, h / 2, true}, src{e.src, h, h / 2, false};
  if (form == kFrame) return {dst, src};
  if (form == kSplit) return {field(e.dst, 0, true), field(e.dst, 1, true), src};
  return {dst, field(e.src, 0, false), field(e.src, 1, false)};
}

constexpr int32_t kWidths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                               13, 14, 15, 16, 17, 23, 24, 31, 32, 33, 40};
constexpr size_t kBuffers = 9, kCapacity = 4 * 4096;

class GuardSweep : public ::testing::TestWithParam<SlotRef> {};

TEST_P(GuardSweep, NoByteOutsideThePlanesIsTouched) {
  const SlotRef &slot = GetParam();
  if (slot.pointerCount == 0) {  // the shared empty function
    slot.call({}, 0, 0, {});
    return;
  }
  const auto [form, base] = FormOf(slot.name);
  const auto found = Entries().find(base);
  ASSERT_NE(found, Entries().end()) << slot.name << " has no layout in the sweep";
  const Entry &e = found->second;
  const bool histogram = e.dst == L::kHist;
  signal(SIGSEGV, ReportFault);
  signal(SIGBUS, ReportFault);
  LogCapture log;  // refusals and "Not Implemented" stay off stderr
  for (Guard guard : {Guard::After, Guard::Before}) {
    GuardedSet set(guard, kBuffers, kCapacity);
    for (int32_t w : kWidths)
      for (int32_t h = 1; h <= 9; ++h)
        for (int padded = 0; padded < 2; ++padded)
          for (int64_t flip = 0; flip < 2; ++flip) {
            std::snprintf(g_current, sizeof g_current, "%s w %d h %d padded %d flip %d guard %s",
                          slot.name.c_str(), w, h, padded, static_cast<int>(flip),
                          guard == Guard::After ? "after" : "before");
            std::vector<PlaneArg> planes;
            std::vector<size_t> outputs;
            for (const ImageSpec &image : ImagesOf(e, form, h)) {
              for (const PlaneShape &shape : Shapes(image.layout, w, image.luma, image.chroma)) {
                const size_t k = planes.size();
                const int64_t pitch =
                    std::max<int64_t>(shape.rowBytes, 1) + (padded ? 3 + 2 * int64_t(k) : 0);
                std::vector<Span> spans;
                AddRows(spans, 0, pitch, shape.rowBytes, shape.rows);
                planes.push_back({set.Place(k, spans, w * 131 + h * 7 + uint32_t(k)), pitch});
                if (image.output) outputs.push_back(k);
              }
            }
            // The histogram takes three arrays and one source pitch: the
            // harness hands out pitches in order, so the source's goes first.
            if (histogram) planes[0].pitch = planes[3].pitch;
            std::vector<int64_t> options = e.options;
            if (!histogram) options.push_back(flip);
            slot.call(planes, w, h, options);
            for (size_t k : outputs)
              if (!histogram && !set.CanariesIntact(k)) {
                ADD_FAILURE() << g_current << ": plane " << k << " written outside its rows";
                return;
              }
            log.clear();
          }
  }
}

std::vector<SlotRef> Slots() { return AllDriverSlots(); }

INSTANTIATE_TEST_SUITE_P(EverySlot, GuardSweep, ::testing::ValuesIn(Slots()),
                         [](const auto &info) { return info.param.name; });

}  // namespace
}  // namespace tqcs::test
