/* TQColorSpace: the slots of root sub-tables 0 to 7, one list per sub-table.
 *
 * Each entry is X(slot, name, return type, parameter list). Most conversions
 * come as a triple of consecutive slots: _Frame (frame to frame), _Split (frame
 * to two fields: even rows to field 1, odd rows to field 2) and _Compose (two
 * fields to a frame). Width and height are those of the whole frame in all
 * three forms. The flip flag is always the last argument.
 *
 * Planar images are passed plane by plane, Y then U then V, each plane as a
 * pointer and a signed byte pitch; a _Split takes field 1's planes, then field
 * 2's, then the source; a _Compose takes the frame's planes, then field 1's,
 * then field 2's. How many rows each buffer must hold, and how long a packed
 * 4:2:2 row of odd width is, is set out in TQColorSpace.h.
 *
 * docs/api.md lists every slot with its full C signature (generated from
 * these lists). The option arguments:
 *   matrix        0 HD, 1 SD, 3 UHD (TCS_MATRIX_*); 2 and negative values pass
 *                 the check and select no coefficients: nothing is written.
 *                 The RGB to planar 4:2:2 triples know only 0 and 1 (kept for
 *                 compatibility): for UHD convert to packed 4:2:2 and repack
 *                 with TCS_YUV16_2_YUV422_*, which is lossless.
 *   channelOrder  0: R first in memory (R,G,B / R,G,B,A, codes 1 and 4);
 *                 non-zero: B first (B,G,R / B,G,R,A, codes 0 and 3).
 *   packingOrder  0: YUYV (Y0 U Y1 V, code 6); non-zero: UYVY (U Y0 V Y1, code 7).
 *   alpha         the value of every alpha byte written for a source without
 *                 alpha (255 opaque).
 *   swap          non-zero exchanges bytes 0 and 2 (red and blue).
 *   channel       the byte of a 32-bit pixel taken, 0 to 3.
 *   bytesPerPixel the pixel size of the format-free field split and compose.
 *   format, dstFormat, srcFormat  format codes 0 to 10 (TCS_FORMAT_*).
 *   secondField   0: the first field (rows 0, 2, ...); non-zero: the second.
 *   flip          non-zero turns the picture upside down.
 */
#ifndef TQCOLORSPACE_DRIVER_SLOTS_H
#define TQCOLORSPACE_DRIVER_SLOTS_H

#include <stdint.h>

#define TCS_UNPAREN(...) __VA_ARGS__
#define TCS_DP(T, n) T *n, int64_t n##Pitch
#define TCS_SP(T, n) const T *n, int64_t n##Pitch
#define TCS_DYUV(T, n) TCS_DP(T, n##Y), TCS_DP(T, n##U), TCS_DP(T, n##V)
#define TCS_SYUV(T, n) TCS_SP(T, n##Y), TCS_SP(T, n##U), TCS_SP(T, n##V)
#define TCS_WH int32_t width, int32_t height

/* clang-format off */

/* packed source, packed destination */
#define TCS_TRIPLE_PP(X, n, base, DT, ST, OPTS) \
  X((n), TCS_##base##_Frame, void, (TCS_DP(DT, dst), TCS_SP(ST, src), TCS_WH, TCS_UNPAREN OPTS)) \
  X((n) + 1, TCS_##base##_Split, void, (TCS_DP(DT, field1), TCS_DP(DT, field2), TCS_SP(ST, src), TCS_WH, TCS_UNPAREN OPTS)) \
  X((n) + 2, TCS_##base##_Compose, void, (TCS_DP(DT, dst), TCS_SP(ST, field1), TCS_SP(ST, field2), TCS_WH, TCS_UNPAREN OPTS))

/* packed source, planar Y, U, V destination */
#define TCS_TRIPLE_PY(X, n, base, OPTS) \
  X((n), TCS_##base##_Frame, void, (TCS_DYUV(uint8_t, dst), TCS_SP(uint8_t, src), TCS_WH, TCS_UNPAREN OPTS)) \
  X((n) + 1, TCS_##base##_Split, void, (TCS_DYUV(uint8_t, field1), TCS_DYUV(uint8_t, field2), TCS_SP(uint8_t, src), TCS_WH, TCS_UNPAREN OPTS)) \
  X((n) + 2, TCS_##base##_Compose, void, (TCS_DYUV(uint8_t, dst), TCS_SP(uint8_t, field1), TCS_SP(uint8_t, field2), TCS_WH, TCS_UNPAREN OPTS))

/* planar Y, U, V source (8-bit or 16-bit samples), packed destination */
#define TCS_TRIPLE_YP(X, n, base, ST, OPTS) \
  X((n), TCS_##base##_Frame, void, (TCS_DP(uint8_t, dst), TCS_SYUV(ST, src), TCS_WH, TCS_UNPAREN OPTS)) \
  X((n) + 1, TCS_##base##_Split, void, (TCS_DP(uint8_t, field1), TCS_DP(uint8_t, field2), TCS_SYUV(ST, src), TCS_WH, TCS_UNPAREN OPTS)) \
  X((n) + 2, TCS_##base##_Compose, void, (TCS_DP(uint8_t, dst), TCS_SYUV(ST, field1), TCS_SYUV(ST, field2), TCS_WH, TCS_UNPAREN OPTS))

/* chroma planes only: U, V to U, V */
#define TCS_TRIPLE_UV(X, n, base) \
  X((n), TCS_##base##_Frame, void, (TCS_DP(uint8_t, dstU), TCS_DP(uint8_t, dstV), TCS_SP(uint8_t, srcU), TCS_SP(uint8_t, srcV), TCS_WH, uint8_t flip)) \
  X((n) + 1, TCS_##base##_Split, void, (TCS_DP(uint8_t, field1U), TCS_DP(uint8_t, field1V), TCS_DP(uint8_t, field2U), TCS_DP(uint8_t, field2V), TCS_SP(uint8_t, srcU), TCS_SP(uint8_t, srcV), TCS_WH, uint8_t flip)) \
  X((n) + 2, TCS_##base##_Compose, void, (TCS_DP(uint8_t, dstU), TCS_DP(uint8_t, dstV), TCS_SP(uint8_t, field1U), TCS_SP(uint8_t, field1V), TCS_SP(uint8_t, field2U), TCS_SP(uint8_t, field2V), TCS_WH, uint8_t flip))

/* a slot that holds the shared empty function */
#define TCS_RESERVED(X, n, table) X((n), TCS_##table##_Reserved##n, void, (void))
#define TCS_RESERVED3(X, n, table) TCS_RESERVED(X, n, table) X((n) + 1, TCS_##table##_Reserved##n##_1, void, (void)) X((n) + 2, TCS_##table##_Reserved##n##_2, void, (void))

#define TCS_MATRIX_RGB int32_t matrix, uint8_t channelOrder

/* Sub-table 0: general video operations.
 * Range scaling (slots 14 and 15: full range to video range and back) covers
 * format codes 0, 1, 2, 3, 4, 6 and 7 (the alpha byte of 0, 1 and 2 is scaled
 * like luma); for 5 (YUV), 8 and 9 (planar) and 10 (Alpha) it writes nothing. A host scales those samples itself (luma
 * (y - 16) x 255 / 219, chroma (c - 128) x 255 / 224 + 128 to expand; the
 * inverse to compress) or repacks them into a covered code: YUV to YUVA and
 * planar 4:2:2 to YUYV are lossless through the dispatcher. */
#define TCS_GENERAL_SLOTS(X) \
  X(0, TCS_ColorConvFrame, uint64_t, (TCS_DP(uint8_t, dst), int32_t dstFormat, TCS_SP(uint8_t, src), int32_t srcFormat, int32_t matrix, TCS_WH, uint8_t flip)) \
  X(1, TCS_ColorConvSplit, uint64_t, (TCS_DP(uint8_t, field1), TCS_DP(uint8_t, field2), int32_t dstFormat, TCS_SP(uint8_t, src), int32_t srcFormat, int32_t matrix, TCS_WH, uint8_t flip)) \
  X(2, TCS_ColorConvCompose, uint64_t, (TCS_DP(uint8_t, dst), int32_t dstFormat, TCS_SP(uint8_t, field1), TCS_SP(uint8_t, field2), int32_t srcFormat, int32_t matrix, TCS_WH, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 3, Cr32_Split_Channel, uint8_t, uint8_t, (int32_t channel, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 6, Cr24_2_Cr32, uint8_t, uint8_t, (uint8_t swap, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 9, Cr32_2_Cr24, uint8_t, uint8_t, (uint8_t swap, uint8_t flip)) \
  X(12, TCS_SplitFrame, uint64_t, (TCS_DP(uint8_t, field1), TCS_DP(uint8_t, field2), TCS_SP(uint8_t, src), TCS_WH, int32_t bytesPerPixel, uint8_t flip)) \
  X(13, TCS_ComposeFields, uint64_t, (TCS_DP(uint8_t, dst), TCS_SP(uint8_t, field1), TCS_SP(uint8_t, field2), TCS_WH, int32_t bytesPerPixel, uint8_t flip)) \
  X(14, TCS_RangeCompressFrame, void, (TCS_DP(uint8_t, dst), TCS_SP(uint8_t, src), int32_t format, TCS_WH, uint8_t flip)) \
  X(15, TCS_RangeExpandFrame, void, (TCS_DP(uint8_t, dst), TCS_SP(uint8_t, src), int32_t format, TCS_WH, uint8_t flip)) \
  X(16, TCS_ColorConvFrameEx, uint64_t, (const TCS_FrameDesc *dst, const TCS_FrameDesc *src, int32_t matrix, TCS_WH, uint8_t flip)) \
  X(17, TCS_ColorConvSplitEx, uint64_t, (const TCS_FrameDesc *field1, const TCS_FrameDesc *field2, const TCS_FrameDesc *src, int32_t matrix, TCS_WH, uint8_t flip)) \
  X(18, TCS_ColorConvComposeEx, uint64_t, (const TCS_FrameDesc *dst, const TCS_FrameDesc *field1, const TCS_FrameDesc *field2, int32_t matrix, TCS_WH, uint8_t flip))

/* Sub-table 1: RGB32 source */
#define TCS_RGB32_SLOTS(X) \
  TCS_TRIPLE_PP(X, 0, RGB32_SwapRB, uint8_t, uint8_t, (uint8_t flip)) \
  TCS_TRIPLE_PP(X, 3, RGB32_2_YUVA, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 6, RGB32_2_YUV16, uint8_t, uint8_t, (int32_t matrix, uint8_t packingOrder, uint8_t channelOrder, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 9, RGB32_2_YUV422, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 12, RGB32_2_YUV420, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_RESERVED3(X, 15, RGB32) \
  TCS_TRIPLE_PP(X, 18, RGB32_2_Gray, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip))

/* Sub-table 2: RGB24 source */
#define TCS_RGB24_SLOTS(X) \
  TCS_TRIPLE_PP(X, 0, RGB24_SwapRB, uint8_t, uint8_t, (uint8_t flip)) \
  TCS_TRIPLE_PP(X, 3, RGB24_2_YUVA, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 6, RGB24_2_YUV16, uint8_t, uint8_t, (int32_t matrix, uint8_t packingOrder, uint8_t channelOrder, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 9, RGB24_2_YUV422, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 12, RGB24_2_YUV420, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 15, RGB24_2_YUV, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  X(18, TCS_RGB24_2_HSV_Frame, void, (TCS_DP(uint16_t, dstH), TCS_DP(uint8_t, dstS), TCS_DP(uint8_t, dstV), TCS_SP(uint8_t, src), TCS_WH, uint8_t channelOrder, uint8_t flip)) \
  X(19, TCS_RGB24_2_HSV_Split, void, (TCS_DP(uint16_t, field1H), TCS_DP(uint8_t, field1S), TCS_DP(uint8_t, field1V), TCS_DP(uint16_t, field2H), TCS_DP(uint8_t, field2S), TCS_DP(uint8_t, field2V), TCS_SP(uint8_t, src), TCS_WH, uint8_t channelOrder, uint8_t flip)) \
  X(20, TCS_RGB24_2_HSV_Compose, void, (TCS_DP(uint16_t, dstH), TCS_DP(uint8_t, dstS), TCS_DP(uint8_t, dstV), TCS_SP(uint8_t, field1), TCS_SP(uint8_t, field2), TCS_WH, uint8_t channelOrder, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 21, RGB24_2_Gray, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  X(24, TCS_RGB24_Histogram, void, (uint32_t *hist0, uint32_t *hist1, uint32_t *hist2, TCS_SP(uint8_t, src), TCS_WH, uint8_t channelOrder))

/* Sub-table 3: YUVA source */
#define TCS_YUVA_SLOTS(X) \
  TCS_TRIPLE_PP(X, 0, YUVA_2_RGB32, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 3, YUVA_2_RGB24, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 6, YUVA_2_YUV16, uint8_t, uint8_t, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 9, YUVA_2_YUV422, (uint8_t flip)) \
  TCS_RESERVED3(X, 12, YUVA)

/* Sub-table 4: YUV16 (packed 4:2:2) source */
#define TCS_YUV16_SLOTS(X) \
  TCS_TRIPLE_PP(X, 0, YUV16_Swap, uint8_t, uint8_t, (uint8_t flip)) \
  TCS_TRIPLE_PP(X, 3, YUV16_2_RGB32, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t packingOrder, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 6, YUV16_2_RGB24, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 9, YUV16_2_YUVA, uint8_t, uint8_t, (uint8_t packingOrder, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 12, YUV16_2_YUV422, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 15, YUV16_2_YUV420, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 18, YUV16_2_YUV, uint8_t, uint8_t, (uint8_t packingOrder, uint8_t flip))

#define TCS_TEN_BIT_PLANAR_FRAME(X, n, name) \
  X((n), name, void, (TCS_DYUV(uint8_t, dst), TCS_SYUV(uint16_t, src), TCS_WH, uint8_t flip))
#define TCS_UV_FIELD(X, n, name) \
  X((n), name, void, (TCS_DP(uint8_t, dstU), TCS_DP(uint8_t, dstV), TCS_SP(uint8_t, srcU), TCS_SP(uint8_t, srcV), TCS_WH, uint8_t secondField, uint8_t flip))

/* Sub-table 5: planar YUV 4:2:2 source */
#define TCS_YUV422_SLOTS(X) \
  TCS_TRIPLE_YP(X, 0, YUV422_2_RGB32, uint8_t, (TCS_MATRIX_RGB, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 3, YUV422_2_RGB24, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 6, YUV422_2_YUVA, uint8_t, (uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 9, YUV422_2_YUV16, uint8_t, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 12, YUV422_10Bit_2_YUV16, uint16_t, (uint8_t packingOrder, uint8_t flip)) \
  TCS_RESERVED3(X, 15, YUV422) \
  TCS_TRIPLE_UV(X, 18, YUV422_2_YUV420_UV) \
  TCS_TEN_BIT_PLANAR_FRAME(X, 21, TCS_YUV422_10Bit_2_YUV422_Frame) \
  TCS_UV_FIELD(X, 22, TCS_YUV422_2_YUV420_UV_Field)

/* Sub-table 6: planar YUV 4:2:0 source */
#define TCS_YUV420_SLOTS(X) \
  TCS_TRIPLE_YP(X, 0, YUV420_2_RGB32, uint8_t, (TCS_MATRIX_RGB, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 3, YUV420_2_RGB24, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 6, YUV420_2_YUVA, uint8_t, (uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 9, YUV420_2_YUV16, uint8_t, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 12, YUV420_10Bit_2_YUV16, uint16_t, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_YP(X, 15, YUV420_2_YUV, uint8_t, (uint8_t flip)) \
  TCS_TRIPLE_UV(X, 18, YUV420_2_YUV422_UV) \
  TCS_TEN_BIT_PLANAR_FRAME(X, 21, TCS_YUV420_10Bit_2_YUV420_Frame) \
  TCS_UV_FIELD(X, 22, TCS_YUV420_2_YUV422_UV_Field)

/* Sub-table 7: packed YUV 4:4:4 source */
#define TCS_YUV_SLOTS(X) \
  TCS_TRIPLE_PP(X, 0, YUV_2_RGB32, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t alpha, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 3, YUV_2_RGB24, uint8_t, uint8_t, (TCS_MATRIX_RGB, uint8_t flip)) \
  TCS_TRIPLE_PP(X, 6, YUV_2_YUV16, uint8_t, uint8_t, (uint8_t packingOrder, uint8_t flip)) \
  TCS_TRIPLE_PY(X, 9, YUV_2_YUV422, (uint8_t flip)) \
  TCS_TRIPLE_PY(X, 12, YUV_2_YUV420, (uint8_t flip))

/* clang-format on */

#endif
