#include "drivers/driver_harness.hpp"

#include <random>
#include <stdexcept>

namespace tqcs::test {

std::vector<SlotRef> AllDriverSlots() {
  std::vector<SlotRef> out = AllSlots();
  std::erase_if(out, [](const SlotRef &s) { return s.table == 0; });
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
