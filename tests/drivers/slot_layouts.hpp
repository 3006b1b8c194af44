// The plane layouts of every slot of sub-tables 1 to 7, by base name, as the
// public header describes them, and the images of each form: shared by the
// guard-page sweep and the threads test.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "drivers/driver_harness.hpp"

namespace tqcs::test::layouts {

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
inline std::vector<PlaneShape> Shapes(L l, int64_t w, int64_t luma, int64_t chroma) {
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
inline const std::map<std::string, Entry> &Entries() {
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
inline std::pair<Form, std::string> FormOf(const std::string &name) {
  std::string base = name.substr(4);  // without TCS_
  for (auto [suffix, form] :
       {std::pair{"_Frame", kFrame}, {"_Split", kSplit}, {"_Compose", kCompose}})
    if (base.ends_with(suffix)) return {form, base.substr(0, base.size() - strlen(suffix))};
  return {kFrame, base};
}

inline int64_t FieldLuma(Fields rule, Form form, int i, int64_t h) {
  if (rule == Fields::kDropOdd) return h / 2;
  if (rule == Fields::kCopyOdd && form == kSplit) return (h + 1) / 2;
  return i == 0 ? (h + 1) / 2 : h / 2;
}

// The images of a call in argument order, each as (layout, luma rows, chroma
// rows, written). A split's fields are images of their own (4:2:0 chroma for
// half their rows); a compose reads the frame's chroma rows alternately from
// its fields.
struct ImagePlan {
  L layout;
  int64_t luma, chroma;
  bool output;
};
inline std::vector<ImagePlan> ImagesOf(const Entry &e, Form form, int64_t h) {
  auto field = [&](L l, int i, bool output) {
    const int64_t luma = FieldLuma(e.fields, form, i, h);
    const int64_t chroma = form == kSplit ? luma / 2 : (i == 0 ? (h / 2 + 1) / 2 : h / 4);
    return ImagePlan{l, luma, chroma, output};
  };
  const ImagePlan dst{e.dst, h, h / 2, true}, src{e.src, h, h / 2, false};
  if (form == kFrame) return {dst, src};
  if (form == kSplit) return {field(e.dst, 0, true), field(e.dst, 1, true), src};
  return {dst, field(e.src, 0, false), field(e.src, 1, false)};
}

// The layout of a slot, or null for the shared empty function and slots
// without one.
inline const Entry *LayoutOf(const SlotRef &slot) {
  if (slot.pointerCount == 0) return nullptr;
  const auto found = Entries().find(FormOf(slot.name).second);
  return found == Entries().end() ? nullptr : &found->second;
}

// Runs a slot that has a layout once on fresh images of w x h (sources seeded
// from `seed`, pads of three canary bytes after every row): the output
// planes' bytes, each output image followed by whether its pads are intact.
inline std::vector<uint8_t> RunOnFreshImages(const SlotRef &slot, int32_t w, int32_t h,
                                             int64_t flip, uint32_t seed = 1) {
  const Entry &e = *LayoutOf(slot);
  std::vector<Image> images;
  std::vector<bool> outputs;
  std::vector<PlaneArg> planes;
  for (const ImagePlan &plan : ImagesOf(e, FormOf(slot.name).first, h)) {
    images.emplace_back(Shapes(plan.layout, w, plan.luma, plan.chroma), 3);
    if (!plan.output) images.back().Randomize(seed++);
    outputs.push_back(plan.output);
  }
  for (Image &image : images)
    for (const PlaneArg &p : image.Args()) planes.push_back(p);
  std::vector<int64_t> options = e.options;
  if (e.dst != L::kHist) options.push_back(flip);  // the histogram has no flip
  slot.call(planes, w, h, options);
  std::vector<uint8_t> out;
  for (size_t i = 0; i < images.size(); ++i) {
    if (!outputs[i]) continue;
    for (size_t p = 0; p < images[i].planes(); ++p) {
      const auto pixels = images[i].Pixels(p);
      out.insert(out.end(), pixels.begin(), pixels.end());
    }
    out.push_back(images[i].PadsIntact());
  }
  return out;
}

}  // namespace tqcs::test::layouts
