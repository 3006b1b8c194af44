// Conversions through the library's public tables: the dispatcher for format
// codes 0 to 10, its descriptor forms for the extended codes (deep colour,
// semi-planar, 4:2:0 sited on the frame), a few driver slots for the layouts
// neither routes (grey, HSV) and the range operations of the general table.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <array>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "formats.hpp"

namespace tqcs {

struct ConvertOptions {
  int32_t matrix = TCS_MATRIX_HD;
  bool flip = false;
  bool interlaced = false;  // convert field by field (4:2:0 chroma stays in its field)
  Range srcRange = Range::kFull;
  Range dstRange = Range::kFull;
};

// The matrix the tool picks when none is given: HD from 1280x720 up, else SD.
int32_t DefaultMatrix(int32_t width, int32_t height);

// What decides whether the library converts a pair of codes: the matrix, the
// frame size (odd widths, the height modulo 4, tiny frames) and field by field.
struct Shape {
  int32_t matrix = TCS_MATRIX_HD;
  int32_t width = 8;
  int32_t height = 8;
  bool interlaced = false;
};

class Engine {
 public:
  explicit Engine(const TCS_APIStu *api) : api_(api) {}

  // True when one dispatcher call converts code `from` to code `to` for frames
  // of this shape: it reports success, logs nothing and writes every byte of
  // the destination (tried once per shape on a small frame of the same kind).
  bool Routed(int32_t from, int32_t to, const Shape &shape = {}) const {
    return Routes(shape)[IndexOf(from)][IndexOf(to)];
  }
  // Every library code the tool's formats stand for, in code order.
  static const std::vector<int32_t> &Codes();
  // The pairs the dispatcher routes to a working driver by its table.
  static bool Planned(int32_t from, int32_t to);
  // The codes a conversion passes through, `from` and `to` included (empty
  // when there is no way). A pair the library converts in one call, only not
  // for this shape, goes through an exact equivalent or not at all: the
  // conversion to a layout of which the destination is a lossless repack,
  // then the repack.
  std::vector<int32_t> Path(int32_t from, int32_t to, const Shape &shape = {}) const;

  // Converts a whole image. Returns an empty string, or what went wrong.
  std::string Convert(const Image &src, Image &dst, const ConvertOptions &options) const;

  // One dispatcher call: the code forms between codes 0 to 10, the descriptor
  // forms otherwise (the frame form, or split then compose when interlaced).
  // False when the dispatcher refuses.
  bool Dispatch(const Image &src, Image &dst, int32_t matrix, bool flip, bool interlaced) const;

  // Frame to two fields and back, in one format.
  bool SplitFields(const Image &frame, Image &field1, Image &field2) const;
  bool ComposeFields(const Image &field1, const Image &field2, Image &frame) const;

  // Full range to video range (compress) or back, in place, for YUV layouts.
  void ScaleRange(Image &image, bool compress) const;

 private:
  using Table = std::vector<std::vector<bool>>;  // by the positions of Codes()
  static size_t IndexOf(int32_t code);
  const Table &Routes(const Shape &shape) const;
  // Whether `run(src, dst)`, a driver call outside the dispatcher, writes every
  // byte of a `to` frame made from a `from` frame of this shape (tried once).
  template <class Run>
  bool Writes(Format from, Format to, const Shape &shape, Run run) const;
  void ScaleDeep(Image &image, bool compress) const;
  void RgbToGrayOrHsv(const Image &from, Image &dst, int32_t matrix, bool flip) const;
  bool ConvertCodes(const Image &src, Image &dst, const ConvertOptions &options) const;
  const TCS_APIStu *api_;
  mutable std::mutex mutex_;
  mutable std::map<std::tuple<int32_t, int32_t, int32_t, bool>, Table> routes_;
  mutable std::map<std::tuple<int32_t, int32_t, int32_t, int32_t, int32_t>, bool> direct_;
};

}  // namespace tqcs
