// What the fuzz targets share: the library state built once, buffers sized
// exactly from the geometry the input asks for (so AddressSanitizer sees a
// single byte outside them), and the layouts of the dispatcher's images.
#pragma once

#include <TQColorSpace/TQColorSpace.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "base/state.hpp"
#include "startup/api.hpp"

namespace tqcs::fuzz {

// Loads the library state as the ELF constructor would, with the log kept off
// stderr (refusals are expected by the thousand).
inline void Load() {
  setenv("TCB_LOG_LEVEL", "9", 1);
  TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr);
  if (!g_pMemProcRoot) g_pMemProcRoot = TMP_GetAPIStuPtr();
}

inline const TCS_GeneralTable &General() { return *g_pColorSpaceAPI->pGeneral; }

// `bytes` bytes on the heap, exactly (at least one, so the pointer is never
// null); filled from the input.
class Buffer {
 public:
  Buffer(int64_t bytes, FuzzedDataProvider &in)
      : data_(
            static_cast<uint8_t *>(std::malloc(static_cast<size_t>(std::max<int64_t>(bytes, 1))))) {
    const auto seed = in.ConsumeIntegral<uint8_t>();
    for (int64_t i = 0; i < std::max<int64_t>(bytes, 1); ++i)
      data_[i] = static_cast<uint8_t>(seed + 37 * i);
  }
  ~Buffer() { std::free(data_); }
  Buffer(const Buffer &) = delete;
  Buffer &operator=(const Buffer &) = delete;
  uint8_t *data() const { return data_; }

 private:
  uint8_t *data_;
};

// Bytes a pixel of codes 0 to 10 (of a plane's sample for 8 and 9); packed
// 4:2:2 rows are 2 x width bytes.
inline int64_t RowBytes(int32_t code, int64_t w) {
  constexpr int64_t kBytes[11] = {4, 4, 4, 3, 3, 3, 2, 2, 1, 1, 1};
  return code >= 0 && code <= 10 ? kBytes[code] * w : 4 * w;
}
inline bool Planar(int32_t code) { return code == 8 || code == 9; }

struct PlaneLayout {
  int64_t offset, pitch, rowBytes, rows;
  int64_t End() const {
    return rows > 0 && rowBytes > 0 ? offset + pitch * (rows - 1) + rowBytes : offset;
  }
};

// An image of `rows` luma rows: one plane, or Y, U, V with U after the luma
// rows at half the pitch and V after U's rows (all rows for 4:2:2, half for
// 4:2:0). With `separate` every plane starts at offset 0 of a buffer of its own.
inline std::vector<PlaneLayout> Layout(int32_t code, int64_t w, int64_t rows, int64_t pitch,
                                       int64_t chromaPitch, bool separate) {
  if (!Planar(code)) return {{0, pitch, RowBytes(code, w), rows}};
  const int64_t cr = code == 8 ? rows : rows / 2;
  const int64_t u = separate ? 0 : pitch * rows, v = separate ? 0 : u + chromaPitch * cr;
  return {{0, pitch, w, rows}, {u, chromaPitch, w / 2, cr}, {v, chromaPitch, w / 2, cr}};
}

inline int64_t Extent(const std::vector<PlaneLayout> &planes) {
  int64_t end = 0;
  for (const PlaneLayout &p : planes) end = std::max(end, p.End());
  return end;
}

// Luma rows of each image of a dispatcher call: the frame's height; half of it
// in a planar field buffer; a packed field has room for the odd row in both
// fields of a split and in field 1 of a compose.
enum Form { kFrame, kSplit, kCompose };
inline bool IsField(Form f, int i) { return f == kSplit ? i < 2 : f == kCompose && i > 0; }
inline bool IsOutput(Form f, int i) { return f == kSplit ? i < 2 : i == 0; }
inline int64_t RowsOf(Form f, int i, int32_t code, int64_t h) {
  if (!IsField(f, i)) return h;
  if (Planar(code)) return h / 2;
  return f == kSplit || i == 1 ? (h + 1) / 2 : h / 2;
}

// A code as the input picks it: mostly 0 to 10, sometimes anything.
inline int32_t Code(FuzzedDataProvider &in) {
  const auto pick = in.ConsumeIntegralInRange<int32_t>(0, 12);
  return pick <= 10 ? pick : in.ConsumeIntegral<int32_t>();
}
// A matrix selector: the named sets, 2, negatives and refused values.
inline int32_t Matrix(FuzzedDataProvider &in) {
  constexpr int32_t kValues[] = {0, 1, 3, 2, -1, 4, INT32_MIN, INT32_MAX};
  return kValues[in.ConsumeIntegralInRange<size_t>(0, std::size(kValues) - 1)];
}

// One dispatcher call as the input describes it: form, codes, matrix,
// geometry and flip.
struct Call {
  Form form;
  int32_t src, dst, matrix, w, h;
  uint8_t flip;
  int Images() const { return form == kFrame ? 2 : 3; }
  int32_t CodeOf(int image) const { return IsOutput(form, image) ? dst : src; }
  int64_t Rows(int image) const { return RowsOf(form, image, CodeOf(image), h); }
};
inline Call ReadCall(FuzzedDataProvider &in) {
  Call c{};
  c.form = static_cast<Form>(in.ConsumeIntegralInRange<int>(0, 2));
  c.src = Code(in);
  c.dst = Code(in);
  c.matrix = Matrix(in);
  c.w = in.ConsumeIntegralInRange<int32_t>(1, 70);
  c.h = in.ConsumeIntegralInRange<int32_t>(1, 24);
  c.flip = in.ConsumeBool();
  return c;
}

}  // namespace tqcs::fuzz

// Every target starts from the loaded library.
extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  tqcs::fuzz::Load();
  return 0;
}
