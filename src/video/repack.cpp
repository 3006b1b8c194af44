// Format-blind pixel repacking (slots 3 to 11): one byte channel of 32-bit
// pixels to an 8-bit plane, 3-byte pixels widened to 4 with a constant fourth
// byte, 4-byte pixels narrowed to 3, the last two optionally exchanging the
// first and third byte. The pixel work is done by kernel slots 7 to 10 and by
// TQMemProc's channel extraction; these functions only walk rows.
#include "base/log.hpp"
#include "base/state.hpp"
#include "frame/views.hpp"
#include "video/general.hpp"

namespace tqcs::video {
namespace {

bool Present(const Plane &pl) { return pl.p && pl.pitch > 0; }

void Refuse(const char16_t *function) {
  log::Write(log::kInvalid, {log::unit::kVideoColor, function}, log::msg::kInvalidParams);
}

// Row operations (destination row, source row, pixel count). Each reads the
// kernel table afresh at every call.
auto ChannelRow(int32_t channel) {
  return [channel](uint8_t *d, const uint8_t *s, int32_t n) {
    g_pMemProcRoot->pMem->TMP_ExtractChannel_Row(d, s, n, channel);
  };
}
auto WidenRow(uint8_t swap, uint8_t alpha) {
  const auto kernel =
      swap ? &TCS_KernelTable::RGB24_2_BGR32_Row : &TCS_KernelTable::RGB24_2_RGB32_Row;
  return [=](uint8_t *d, const uint8_t *s, int32_t n) { (Kernels().*kernel)(d, s, n, alpha); };
}
auto NarrowRow(uint8_t swap) {
  const auto kernel =
      swap ? &TCS_KernelTable::RGB32_2_BGR24_Row : &TCS_KernelTable::RGB32_2_RGB24_Row;
  return [=](uint8_t *d, const uint8_t *s, int32_t n) { (Kernels().*kernel)(d, s, n); };
}

// The frame form of both repackers. The flip turns one side upside down (the
// widener its destination, the narrower its source: the same picture either
// way); contiguous rows on both sides go through one kernel call.
template <class Row>
void RepackFrame(const char16_t *function, Plane dst, int32_t dstBytes, Plane src, int32_t srcBytes,
                 int32_t width, int32_t height, bool flipDestination, uint8_t flip,
                 const Row &row) {
  if (!Present(dst) || !Present(src) || width <= 0 || height <= 0) return Refuse(function);
  Plane &turned = flipDestination ? dst : src;
  if (flip) turned = frame::UpsideDown(turned, height);
  const bool contiguous =
      dst.pitch == int64_t{dstBytes} * width && src.pitch == int64_t{srcBytes} * width;
  frame::WalkFrame(Planes<1>{dst}, Planes<1>{src}, width, height,
                   contiguous && frame::FitsOneCall(width, height),
                   [&](uint8_t *const *d, uint8_t *const *s, int32_t n) { row(d[0], s[0], n); });
}

// The six field forms: the frame (the side the flip turns) walked against the
// fields, an odd last frame row with row height / 2 of field 1; a split then
// copies that converted row into field 2, so both fields hold
// (height + 1) / 2 rows (unlike TCS_SplitFrame, which drops it).
template <Form F, class Row>
void RepackFields(const char16_t *function, Plane whole, Plane field1, Plane field2,
                  int32_t dstBytes, int32_t width, int32_t height, bool optionsPass, uint8_t flip,
                  const Row &row) {
  if (!Present(whole) || !Present(field1) || !Present(field2) || width <= 0 || height <= 0 ||
      !optionsPass)
    return Refuse(function);
  if (flip) whole = frame::UpsideDown(whole, height);
  frame::WalkFields<F>(Planes<1>{whole}, Planes<1>{field1}, Planes<1>{field2}, height,
                       [&](uint8_t *const *d, uint8_t *const *s) { row(d[0], s[0], width); });
  if ((height & 1) && F == Form::kSplit) {
    const int32_t pairs = height >> 1;
    g_pMemProcRoot->pMem->TMP_MemCopy(field2.Row(pairs), field1.Row(pairs), Mul32(dstBytes, width));
  }
}

bool ChannelInRange(int32_t channel) { return channel >= 0 && channel <= 3; }

}  // namespace

// Slots 3 to 5: one channel of 32-bit pixels to an 8-bit plane. The frame form
// checks nothing itself: TQMemProc's whole-plane extraction does.
void TCS_Cr32_Split_Channel_Frame(uint8_t *dst, int64_t dstPitch, const uint8_t *src,
                                  int64_t srcPitch, int32_t width, int32_t height, int32_t channel,
                                  uint8_t flip) {
  g_pMemProcRoot->pMem->TMP_ExtractChannel_Plane(dst, dstPitch, src, srcPitch, int64_t{width},
                                                 channel, height, flip);
}

void TCS_Cr32_Split_Channel_Split(uint8_t *field1, int64_t field1Pitch, uint8_t *field2,
                                  int64_t field2Pitch, const uint8_t *src, int64_t srcPitch,
                                  int32_t width, int32_t height, int32_t channel, uint8_t flip) {
  RepackFields<Form::kSplit>(TQCS_FN_NAME(TCS_Cr32_Split_Channel_Split), {Bytes(src), srcPitch},
                             {field1, field1Pitch}, {field2, field2Pitch}, 1, width, height,
                             ChannelInRange(channel), flip, ChannelRow(channel));
}

void TCS_Cr32_Split_Channel_Compose(uint8_t *dst, int64_t dstPitch, const uint8_t *field1,
                                    int64_t field1Pitch, const uint8_t *field2, int64_t field2Pitch,
                                    int32_t width, int32_t height, int32_t channel, uint8_t flip) {
  RepackFields<Form::kCompose>(TQCS_FN_NAME(TCS_Cr32_Split_Channel_Compose), {dst, dstPitch},
                               {Bytes(field1), field1Pitch}, {Bytes(field2), field2Pitch}, 1, width,
                               height, ChannelInRange(channel), flip, ChannelRow(channel));
}

// Slots 6 to 8: 3 bytes to 4, the fourth byte the alpha value.
void TCS_Cr24_2_Cr32_Frame(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                           int32_t width, int32_t height, uint8_t swap, uint8_t alpha,
                           uint8_t flip) {
  RepackFrame(TQCS_FN_NAME(TCS_Cr24_2_Cr32_Frame), {dst, dstPitch}, 4, {Bytes(src), srcPitch}, 3,
              width, height, true, flip, WidenRow(swap, alpha));
}

void TCS_Cr24_2_Cr32_Split(uint8_t *field1, int64_t field1Pitch, uint8_t *field2,
                           int64_t field2Pitch, const uint8_t *src, int64_t srcPitch, int32_t width,
                           int32_t height, uint8_t swap, uint8_t alpha, uint8_t flip) {
  RepackFields<Form::kSplit>(TQCS_FN_NAME(TCS_Cr24_2_Cr32_Split), {Bytes(src), srcPitch},
                             {field1, field1Pitch}, {field2, field2Pitch}, 4, width, height, true,
                             flip, WidenRow(swap, alpha));
}

void TCS_Cr24_2_Cr32_Compose(uint8_t *dst, int64_t dstPitch, const uint8_t *field1,
                             int64_t field1Pitch, const uint8_t *field2, int64_t field2Pitch,
                             int32_t width, int32_t height, uint8_t swap, uint8_t alpha,
                             uint8_t flip) {
  RepackFields<Form::kCompose>(TQCS_FN_NAME(TCS_Cr24_2_Cr32_Compose), {dst, dstPitch},
                               {Bytes(field1), field1Pitch}, {Bytes(field2), field2Pitch}, 4, width,
                               height, true, flip, WidenRow(swap, alpha));
}

// Slots 9 to 11: 4 bytes to 3, the fourth byte dropped.
void TCS_Cr32_2_Cr24_Frame(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                           int32_t width, int32_t height, uint8_t swap, uint8_t flip) {
  RepackFrame(TQCS_FN_NAME(TCS_Cr32_2_Cr24_Frame), {dst, dstPitch}, 3, {Bytes(src), srcPitch}, 4,
              width, height, false, flip, NarrowRow(swap));
}

void TCS_Cr32_2_Cr24_Split(uint8_t *field1, int64_t field1Pitch, uint8_t *field2,
                           int64_t field2Pitch, const uint8_t *src, int64_t srcPitch, int32_t width,
                           int32_t height, uint8_t swap, uint8_t flip) {
  RepackFields<Form::kSplit>(TQCS_FN_NAME(TCS_Cr32_2_Cr24_Split), {Bytes(src), srcPitch},
                             {field1, field1Pitch}, {field2, field2Pitch}, 3, width, height, true,
                             flip, NarrowRow(swap));
}

void TCS_Cr32_2_Cr24_Compose(uint8_t *dst, int64_t dstPitch, const uint8_t *field1,
                             int64_t field1Pitch, const uint8_t *field2, int64_t field2Pitch,
                             int32_t width, int32_t height, uint8_t swap, uint8_t flip) {
  RepackFields<Form::kCompose>(TQCS_FN_NAME(TCS_Cr32_2_Cr24_Compose), {dst, dstPitch},
                               {Bytes(field1), field1Pitch}, {Bytes(field2), field2Pitch}, 3, width,
                               height, true, flip, NarrowRow(swap));
}

}  // namespace tqcs::video
