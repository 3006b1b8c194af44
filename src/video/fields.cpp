// Format-free field split and compose (slots 12 and 13): whole rows of
// width x bytes-per-pixel bytes copied between a frame and its two fields with
// TQMemProc's byte copy. They serve every packed format and every single plane
// of a planar one.
#include "base/log.hpp"
#include "base/state.hpp"
#include "video/general.hpp"

namespace tqcs::video {
namespace {

const log::Site kSplitSite{log::unit::kVideoConv, TQCS_FN_NAME(TCS_SplitFrame)};
const log::Site kComposeSite{log::unit::kVideoConv, TQCS_FN_NAME(TCS_ComposeFields)};

bool Present(const uint8_t *p, int64_t pitch) { return p && pitch > 0; }

// The flipped start of a frame is a 32-bit offset: frames where it wraps are
// refused rather than written at the wrapped address.
bool StartFits(int64_t pitch, int32_t height, uint8_t flip) {
  return !flip || Mul32(pitch, height - 1) == pitch * (height - 1);
}

// The flip of these two: the frame side starts at its last row, the offset a
// 32-bit product (frames whose last-row offset passes the signed 32-bit range
// are not supported), and walks up.
Plane FrameSide(const uint8_t *p, int64_t pitch, int32_t height, uint8_t flip) {
  if (!flip) return {Bytes(p), pitch};
  return {Offset(Bytes(p), Mul32(pitch, height - 1)), -pitch};
}

// The shared walk: row pair i joins frame rows 2i and 2i + 1 with row i of
// each field; an odd last frame row takes part in nothing.
template <bool kSplit>
void Interleave(Plane frame, Plane top, Plane bottom, int32_t width, int32_t height,
                int32_t bytesPerPixel) {
  const int64_t length = Mul32(width, bytesPerPixel);
  auto copy = [&](int64_t frameRow, const Plane &field, int64_t fieldRow) {
    uint8_t *f = frame.Row(frameRow);
    uint8_t *g = field.Row(fieldRow);
    if (kSplit)
      g_pMemProcRoot->pMem->TMP_MemCopy(g, f, length);
    else
      g_pMemProcRoot->pMem->TMP_MemCopy(f, g, length);
  };
  const int32_t pairs = height >> 1;
  for (int32_t i = 0; i < pairs; ++i) {
    copy(2 * int64_t{i}, top, i);
    copy(2 * int64_t{i} + 1, bottom, i);
  }
}

}  // namespace

// Returns 1 when the rows were copied and 0 when the arguments were refused;
// callers are not meant to rely on it.
uint64_t TCS_SplitFrame(uint8_t *field1, int64_t field1Pitch, uint8_t *field2, int64_t field2Pitch,
                        const uint8_t *src, int64_t srcPitch, int32_t width, int32_t height,
                        int32_t bytesPerPixel, uint8_t flip) {
  if (!Present(field1, field1Pitch) || !Present(field2, field2Pitch) || !Present(src, srcPitch) ||
      width <= 0 || height <= 0 || bytesPerPixel <= 0 || !StartFits(srcPitch, height, flip)) {
    log::Write(log::kInvalid, kSplitSite, log::msg::kInvalidParams);
    return 0;
  }
  Interleave<true>(FrameSide(src, srcPitch, height, flip), {field1, field1Pitch},
                   {field2, field2Pitch}, width, height, bytesPerPixel);
  return 1;
}

uint64_t TCS_ComposeFields(uint8_t *dst, int64_t dstPitch, const uint8_t *field1,
                           int64_t field1Pitch, const uint8_t *field2, int64_t field2Pitch,
                           int32_t width, int32_t height, int32_t bytesPerPixel, uint8_t flip) {
  if (!Present(field1, field1Pitch) || !Present(field2, field2Pitch) || !Present(dst, dstPitch) ||
      width <= 0 || height <= 0 || bytesPerPixel <= 0 || !StartFits(dstPitch, height, flip)) {
    log::Write(log::kInvalid, kComposeSite, log::msg::kInvalidParams);
    return 0;
  }
  Interleave<false>(FrameSide(dst, dstPitch, height, flip), {Bytes(field1), field1Pitch},
                    {Bytes(field2), field2Pitch}, width, height, bytesPerPixel);
  return 1;
}

}  // namespace tqcs::video
