#include "drivers/driver_harness.hpp"

#include <random>
#include <stdexcept>

namespace tqcs::test {

std::vector<SlotRef> AllDriverSlots() {
  std::vector<SlotRef> out;
  // The functions are read from the live table only when called, so the list
  // can be built before the library state is.
  auto add = [&](int table, auto fnOf, const char *name, int slot) {
    using Shape = SlotShape<decltype(fnOf())>;
    out.push_back({name, table, slot,
                   [fnOf](const std::vector<PlaneArg> &planes, int32_t w, int32_t h,
                          const std::vector<int64_t> &options) {
                     InvokeWithPlanes(fnOf(), planes, w, h, options);
                   },
                   Shape::kPlanes, Shape::kOptions + Shape::kFrameShaped});
  };
#define TQCS_ADD(tableIndex, field)                                                  \
  [&](int n, const char *name, auto member) {                                        \
    add(                                                                             \
        tableIndex, [member] { return g_pColorSpaceAPI->field->*member; }, name, n); \
  }
  const auto rgb32 = TQCS_ADD(1, pRGB32);
  const auto rgb24 = TQCS_ADD(2, pRGB24);
  const auto yuva = TQCS_ADD(3, pYUVA);
  const auto yuv16 = TQCS_ADD(4, pYUV16);
  const auto yuv422 = TQCS_ADD(5, pYUV422);
  const auto yuv420 = TQCS_ADD(6, pYUV420);
  const auto yuv = TQCS_ADD(7, pYUV);
#define TQCS_RGB32_ENTRY(n, name, ret, params) rgb32(n, #name, &TCS_RGB32Table::name);
#define TQCS_RGB24_ENTRY(n, name, ret, params) rgb24(n, #name, &TCS_RGB24Table::name);
#define TQCS_YUVA_ENTRY(n, name, ret, params) yuva(n, #name, &TCS_YUVATable::name);
#define TQCS_YUV16_ENTRY(n, name, ret, params) yuv16(n, #name, &TCS_YUV16Table::name);
#define TQCS_YUV422_ENTRY(n, name, ret, params) yuv422(n, #name, &TCS_YUV422Table::name);
#define TQCS_YUV420_ENTRY(n, name, ret, params) yuv420(n, #name, &TCS_YUV420Table::name);
#define TQCS_YUV_ENTRY(n, name, ret, params) yuv(n, #name, &TCS_YUVTable::name);
  TCS_RGB32_SLOTS(TQCS_RGB32_ENTRY)
  TCS_RGB24_SLOTS(TQCS_RGB24_ENTRY)
  TCS_YUVA_SLOTS(TQCS_YUVA_ENTRY)
  TCS_YUV16_SLOTS(TQCS_YUV16_ENTRY)
  TCS_YUV422_SLOTS(TQCS_YUV422_ENTRY)
  TCS_YUV420_SLOTS(TQCS_YUV420_ENTRY)
  TCS_YUV_SLOTS(TQCS_YUV_ENTRY)
  return out;
}

const SlotRef &SlotNamed(const std::string &name) {
  static const std::vector<SlotRef> slots = AllDriverSlots();
  for (const SlotRef &s : slots)
    if (s.name == name) return s;
  throw std::runtime_error("no slot " + name);
}

Image::Image(std::vector<PlaneShape> shapes, int64_t pad) : shapes_(std::move(shapes)), pad_(pad) {
  for (const PlaneShape &s : shapes_)
    data_.emplace_back(
        static_cast<size_t>(std::max<int64_t>(1, (s.rowBytes + pad_) * s.rows + pad_)),
        uint8_t{0xCD});
}

void Image::Randomize(uint32_t seed) {
  std::mt19937 rng(seed);
  for (size_t i = 0; i < shapes_.size(); ++i)
    for (int64_t y = 0; y < shapes_[i].rows; ++y)
      for (int64_t x = 0; x < shapes_[i].rowBytes; ++x)
        data_[i][y * pitch(i) + x] = static_cast<uint8_t>(rng());
}

std::vector<PlaneArg> Image::Args() {
  std::vector<PlaneArg> out;
  for (size_t i = 0; i < shapes_.size(); ++i) out.push_back({data_[i].data(), pitch(i)});
  return out;
}

std::vector<uint8_t> Image::Row(size_t plane, int64_t row) const {
  const auto *p = data_[plane].data() + row * pitch(plane);
  return {p, p + shapes_[plane].rowBytes};
}

std::vector<uint8_t> Image::Pixels(size_t plane) const {
  std::vector<uint8_t> out;
  for (int64_t y = 0; y < shapes_[plane].rows; ++y) {
    const auto row = Row(plane, y);
    out.insert(out.end(), row.begin(), row.end());
  }
  return out;
}

bool Image::PadsIntact() const {
  for (size_t i = 0; i < shapes_.size(); ++i) {
    for (int64_t y = 0; y < shapes_[i].rows; ++y)
      for (int64_t x = shapes_[i].rowBytes; x < pitch(i); ++x)
        if (data_[i][y * pitch(i) + x] != 0xCD) return false;
    for (size_t x = static_cast<size_t>(shapes_[i].rows * pitch(i)); x < data_[i].size(); ++x)
      if (data_[i][x] != 0xCD) return false;
  }
  return true;
}

}  // namespace tqcs::test
