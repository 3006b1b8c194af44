// Conversions through the library's public tables: the dispatcher for format
// codes 0 to 10, a few driver slots for the layouts it does not route (10-bit
// input, grey, HSV) and the range operations of the general table.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <string>
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

class Engine {
 public:
  // Tries every route of the dispatcher once on a tiny frame: a route whose
  // driver logs a record (not implemented in this build) is not taken.
  explicit Engine(const TCS_APIStu *api);

  // True when the dispatcher converts code `from` to code `to` in one call.
  bool Routed(int32_t from, int32_t to) const { return routed_[from][to]; }
  // The pairs the dispatcher routes to a working driver by its table.
  static bool Planned(int32_t from, int32_t to);
  // The codes a conversion passes through, `from` and `to` included (empty
  // when there is no way).
  std::vector<int32_t> Path(int32_t from, int32_t to) const;

  // Converts a whole image. Returns an empty string, or what went wrong.
  std::string Convert(const Image &src, Image &dst, const ConvertOptions &options) const;

  // One dispatcher call between codes 0 to 10 (the frame form, or split then
  // compose when interlaced). False when the dispatcher refuses.
  bool Dispatch(const Image &src, Image &dst, int32_t matrix, bool flip, bool interlaced) const;

  // Frame to two fields and back, in one format (codes 0 to 10).
  bool SplitFields(const Image &frame, Image &field1, Image &field2) const;
  bool ComposeFields(const Image &field1, const Image &field2, Image &frame) const;

  // Full range to video range (compress) or back, in place, for YUV layouts.
  void ScaleRange(Image &image, bool compress) const;

 private:
  bool ConvertCodes(const Image &src, Image &dst, const ConvertOptions &options) const;
  const TCS_APIStu *api_;
  bool routed_[kLibraryFormats][kLibraryFormats] = {};
};

}  // namespace tqcs
