// Format-free field split and compose (slots 12 and 13): whole rows of
// width x bytes-per-pixel bytes copied between a frame and its two fields with
// TQMemProc's byte copy. They serve every packed format and every single plane
// of a planar one.
#include "base/log.hpp"
#include "base/state.hpp"
#include "frame/views.hpp"
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

// The frame side, started at its last row under flip. StartFits has refused
// the frames whose last-row offset passes the signed 32-bit range.
Plane FrameSide(const uint8_t *p, int64_t pitch, int32_t height, uint8_t flip) {
  const Plane plane{Bytes(p), pitch};
  return flip ? frame::UpsideDown(plane, height) : plane;
}

// Row pair i joins frame rows 2i and 2i + 1 with row i of each field; an odd
// last frame row takes part in nothing.
template <Form F>
void Interleave(Plane whole, Plane top, Plane bottom, int32_t width, int32_t height,
                int32_t bytesPerPixel) {
  const int64_t length = Mul32(width, bytesPerPixel);
  frame::WalkFields<F>(Planes<1>{whole}, Planes<1>{top}, Planes<1>{bottom},
                       frame::FieldWalkRows(height, false),
                       [&](uint8_t *const *d, uint8_t *const *s) {
                         g_pMemProcRoot->pMem->TMP_MemCopy(d[0], s[0], length);
                       });
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
  Interleave<Form::kSplit>(FrameSide(src, srcPitch, height, flip), {field1, field1Pitch},
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
  Interleave<Form::kCompose>(FrameSide(dst, dstPitch, height, flip), {Bytes(field1), field1Pitch},
                             {Bytes(field2), field2Pitch}, width, height, bytesPerPixel);
  return 1;
}

}  // namespace tqcs::video
