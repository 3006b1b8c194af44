// How every slot of sub-tables 1 to 7 is called on fresh images: the option
// values each is given, and its images in the layouts the library describes
// (drivers/slot_layouts.hpp). Shared by the guard-page sweep, the threads test
// and the hash program.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "drivers/driver_harness.hpp"
#include "drivers/slot_layouts.hpp"

namespace tqcs::test::calls {

using drivers::CallImage;
using drivers::SlotLayout;

// The slot's base name: without TCS_ and the form suffix.
inline std::string BaseName(const std::string &name) {
  std::string base = name.substr(4);
  for (const char *suffix : {"_Frame", "_Split", "_Compose"})
    if (base.ends_with(suffix)) return base.substr(0, base.size() - strlen(suffix));
  return base;
}

// The options (before flip) each slot is called with, by base name.
inline const std::vector<int64_t> &OptionsOf(const SlotRef &slot) {
  static const std::map<std::string, std::vector<int64_t>> options = {
      {"RGB32_SwapRB", {}},
      {"RGB32_2_YUVA", {0, 1}},
      {"RGB32_2_YUV16", {0, 1, 1}},
      {"RGB32_2_YUV422", {1, 0}},
      {"RGB32_2_YUV420", {0, 1}},
      {"RGB32_2_Gray", {3, 1}},
      {"RGB24_SwapRB", {}},
      {"RGB24_2_YUVA", {0, 1, 77}},
      {"RGB24_2_YUV16", {1, 0, 1}},
      {"RGB24_2_YUV422", {0, 1}},
      {"RGB24_2_YUV420", {3, 0}},
      {"RGB24_2_YUV", {0, 0}},
      {"RGB24_2_HSV", {1}},
      {"RGB24_2_Gray", {0, 0}},
      {"RGB24_Histogram", {1}},
      {"YUVA_2_RGB32", {0, 1}},
      {"YUVA_2_RGB24", {1, 0}},
      {"YUVA_2_YUV16", {1}},
      {"YUVA_2_YUV422", {}},
      {"YUV16_Swap", {}},
      {"YUV16_2_RGB32", {0, 1, 0, 200}},
      {"YUV16_2_RGB24", {3, 0, 1}},
      {"YUV16_2_YUVA", {1, 9}},
      {"YUV16_2_YUV422", {0}},
      {"YUV16_2_YUV420", {1}},
      {"YUV16_2_YUV", {0}},
      {"YUV422_2_RGB32", {0, 1, 255}},
      {"YUV422_2_RGB24", {1, 0}},
      {"YUV422_2_YUVA", {55}},
      {"YUV422_2_YUV16", {1}},
      {"YUV422_10Bit_2_YUV16", {0}},
      {"YUV422_2_YUV420_UV", {}},
      {"YUV422_10Bit_2_YUV422", {}},
      {"YUV422_2_YUV420_UV_Field", {1}},
      {"YUV420_2_RGB32", {0, 1, 128}},
      {"YUV420_2_RGB24", {1, 0}},
      {"YUV420_2_YUVA", {255}},
      {"YUV420_2_YUV16", {0}},
      {"YUV420_10Bit_2_YUV16", {1}},
      {"YUV420_2_YUV", {}},
      {"YUV420_2_YUV422_UV", {}},
      {"YUV420_10Bit_2_YUV420", {}},
      {"YUV420_2_YUV422_UV_Field", {1}},
      {"YUV_2_RGB32", {0, 1, 255}},
      {"YUV_2_RGB24", {0, 1}},
      {"YUV_2_YUV16", {0}},
      {"YUV_2_YUV422", {}},
      {"YUV_2_YUV420", {}},
  };
  return options.at(BaseName(slot.name));
}

// The options of a call, the flip last where the slot has one.
inline std::vector<int64_t> OptionsWithFlip(const SlotRef &slot, int64_t flip) {
  std::vector<int64_t> options = OptionsOf(slot);
  if (slot.hasFlip) options.push_back(flip);
  return options;
}

// The layout of a slot, or null for the shared empty function.
inline const SlotLayout *LayoutOf(const SlotRef &slot) {
  return slot.pointerCount ? drivers::LayoutOfSlot(slot.table, slot.slot) : nullptr;
}

// Row bytes and rows of each plane of an image of width w.
inline std::vector<PlaneShape> Shapes(const CallImage &image, int32_t w) {
  std::vector<PlaneShape> out;
  for (int p = 0; p < image.layout.planes; ++p)
    out.push_back({image.RowBytes(p, w), image.Rows(p)});
  return out;
}

// Runs a slot that has a layout once on fresh images of w x h (sources seeded
// from `seed`, pads of three canary bytes after every row): the output
// planes' bytes, each output image followed by whether its pads are intact.
inline std::vector<uint8_t> RunOnFreshImages(const SlotRef &slot, int32_t w, int32_t h,
                                             int64_t flip, uint32_t seed = 1) {
  std::vector<Image> images;
  std::vector<bool> outputs;
  std::vector<PlaneArg> planes;
  for (const CallImage &image : LayoutOf(slot)->Images(h)) {
    images.emplace_back(Shapes(image, w), 3);
    if (!image.written) images.back().Randomize(seed++);
    outputs.push_back(image.written);
  }
  for (Image &image : images)
    for (const PlaneArg &p : image.Args()) planes.push_back(p);
  slot.call(planes, w, h, OptionsWithFlip(slot, flip));
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

}  // namespace tqcs::test::calls
