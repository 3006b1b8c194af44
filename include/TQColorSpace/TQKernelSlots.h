/* TQColorSpace: the row-kernel table (root sub-table 8), slot by slot.
 *
 * One list drives everything that depends on the slot order: the typed view
 * below, the library's slot enumeration and its tier fill lists. Each entry is
 * X(slot, name, return type, parameter list).
 *
 * Conventions: destinations first, then sources, then the pixel count (never
 * bytes), then constants and coefficient rows. A coefficient row is eight
 * signed Q14 values from the exported tables; `t4` stands for the four rows
 * R-from-V, G-from-U, G-from-V, B-from-U. Pitches are signed byte offsets to the
 * other row. Counts below 1 (below 2 for pair kernels) write nothing.
 * docs/api.md lists every slot's signature and what each option means.
 */
#ifndef TQCOLORSPACE_KERNEL_SLOTS_H
#define TQCOLORSPACE_KERNEL_SLOTS_H

#include <stdint.h>

#define TCS_T4 const int16_t *rv, const int16_t *gu, const int16_t *gv, const int16_t *bu
#define TCS_R3 const int16_t *r1, const int16_t *r2, const int16_t *r3

/* clang-format off */
#define TCS_KERNEL_SLOTS(X) \
  X(0, GetFormatBitsPerPixel, int32_t, (int32_t format)) \
  X(1, GetFormatClass, int32_t, (int32_t format)) \
  X(2, ConvertColorValue, uint32_t, (int32_t dstFormat, int32_t matrix, uint32_t colour)) \
  X(3, YUYV_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha)) \
  X(4, YUVA_2_YUYV_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(5, UYVY_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha)) \
  X(6, YUVA_2_UYVY_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(7, RGB24_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha)) \
  X(8, RGB24_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha)) \
  X(9, RGB32_2_RGB24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(10, RGB32_2_BGR24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(11, RGB32_2_YUYV_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3)) \
  X(12, YUYV_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_T4)) \
  X(13, YUYV_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_T4)) \
  X(14, RGB32_2_UYVY_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3)) \
  X(15, UYVY_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_T4)) \
  X(16, UYVY_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_T4)) \
  X(17, RGB32_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3)) \
  X(18, YUVA_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(19, YUVA_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(20, RGB32_SwapRB_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(21, YUV422_2_YUYV_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count)) \
  X(22, YUYV_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count)) \
  X(23, YUV422_2_UYVY_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count)) \
  X(24, UYVY_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count)) \
  X(25, RGB32_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count, TCS_R3)) \
  X(26, YUV422_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4)) \
  X(27, YUV422_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4)) \
  X(28, YUV422_2_RGB24_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, TCS_T4)) \
  X(29, YUV422_2_BGR24_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, TCS_T4)) \
  X(30, RGB24_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count, TCS_R3)) \
  X(31, YUV420_2_YUV422_UV_FirstRow, void, (uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(32, YUV420_2_YUV422_UV_LastRow, void, (uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(33, YUV420_2_YUV422_UV_Row, void, (uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(34, YUV422_2_YUV420_UV_Row, void, (uint8_t *dstU, uint8_t *dstV, const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(35, YUYV_2_YUV420_UV_Row, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int64_t srcPitch, int32_t count)) \
  X(36, UYVY_2_YUV420_UV_Row, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int64_t srcPitch, int32_t count)) \
  X(37, RGB24_2_YUYV_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3)) \
  X(38, YUYV_2_RGB24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(39, YUYV_2_BGR24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(40, RGB24_2_UYVY_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3)) \
  X(41, UYVY_2_RGB24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(42, UYVY_2_BGR24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(43, YUV422_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, uint8_t alpha)) \
  X(44, YUVA_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count)) \
  X(45, YUVA_2_RGB24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(46, YUVA_2_BGR24_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4)) \
  X(47, RGB24_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_R3)) \
  X(48, YUV422_10Bit_2_YUYV_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count)) \
  X(49, YUV422_10Bit_2_UYVY_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count)) \
  X(50, YUV420_10Bit_2_YUV422_UV_Row, void, (uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(51, Y10Bit_2_Y8_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(52, YUYV_Key_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count)) \
  X(53, UYVY_Key_2_YUVA_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count)) \
  X(54, YUVA_2_YUYV_Key_Row, void, (uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count)) \
  X(55, YUVA_2_UYVY_Key_Row, void, (uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count)) \
  X(56, RGB24_Key_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count)) \
  X(57, RGB24_Key_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count)) \
  X(58, RGB32_2_YUYV_Key_Row, void, (uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count, TCS_R3)) \
  X(59, YUYV_Key_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count, TCS_T4)) \
  X(60, YUYV_Key_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count, TCS_T4)) \
  X(61, RGB32_2_UYVY_Key_Row, void, (uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count, TCS_R3)) \
  X(62, UYVY_Key_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count, TCS_T4)) \
  X(63, UYVY_Key_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count, TCS_T4)) \
  X(64, RGB48_2_YUYV16_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(65, RGB48_2_UYVY16_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(66, RGB24_2_YUYV16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(67, RGB24_2_UYVY16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(68, YUV422_16_2_YUYV16_Row, void, (uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count)) \
  X(69, YUV422_16_2_UYVY16_Row, void, (uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count)) \
  X(70, YUV420_10Bit_2_YUV422_10Bit_UV_Row, void, (uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(71, Split16To8Plus2_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(72, Join8Plus2To16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(73, Pack8To8Plus2_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(74, Pack8To8Plus2_SwapPairs_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(75, Unpack8Plus2To8_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(76, Unpack8Plus2To8_SwapPairs_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(77, YUV422_16_2_YUYV_8Plus2_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count)) \
  X(78, YUYV16_2_YUYV_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(79, YUYV16_2_UYVY_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(80, YUYV16_2_RGB64_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(81, UYVY16_2_RGB64_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(82, YUYV16_2_BGR64_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(83, UYVY16_2_BGR64_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(84, Y16_2_Y10_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(85, RGB64_2_BGR32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(86, Clear_Row_A, void, (uint8_t *dst, const uint8_t *unused, int32_t count)) \
  X(87, BGR32_2_RGB64_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(88, YUYV16_2_RGB32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(89, YUYV16_2_BGR32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(90, UYVY16_2_RGB32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(91, UYVY16_2_BGR32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(92, Clear_Row_B, void, (uint8_t *dst, const uint8_t *unused, int32_t count)) \
  X(93, YUV422_2_YUYV16_Row, void, (uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count)) \
  X(94, YUV422_2_UYVY16_Row, void, (uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count)) \
  X(95, YUYV16_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src, int32_t count)) \
  X(96, UYVY16_2_YUV422_Row, void, (uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src, int32_t count)) \
  X(97, UYVY16_2_YUV422_16_Row, void, (uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src, int32_t count)) \
  X(98, YUYV16_2_YUV422_16_Row, void, (uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src, int32_t count)) \
  X(99, RGB64_SwapRB_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(100, YUYV16_2_YUV420_Row, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV, const uint16_t *src, int64_t srcPitch, int32_t count)) \
  X(101, UYVY16_2_YUV420_Row, void, (uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV, const uint16_t *src, int64_t srcPitch, int32_t count)) \
  X(102, UYVY16_2_YUV420_16_Row, void, (uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV, const uint16_t *src, int64_t srcPitch, int32_t count)) \
  X(103, YUYV16_2_YUV420_16_Row, void, (uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV, const uint16_t *src, int64_t srcPitch, int32_t count)) \
  X(104, RGB48_2_RGB64_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(105, RGB48_2_BGR64_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(106, RGB24_2_RGB48_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(107, RGB24_2_BGR48_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(108, RGB24_2_RGB64_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(109, RGB24_2_BGR64_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(110, RGB24_Key_2_RGB64_Row, void, (uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count)) \
  X(111, RGB24_Key_2_BGR64_Row, void, (uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count)) \
  X(112, Clear_Row_C, void, (uint8_t *dst, const uint8_t *unused, int32_t count)) \
  X(113, RGB24_2_RGB48_Expand_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(114, RGB48_2_RGB30_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(115, RGB48_2_BGR24_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(116, RGB48_2_RGB32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(117, RGB48_2_BGR32_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(118, RGB48_2_RGB64_Opaque_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(119, RGB48_2_BGR64_Opaque_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(120, RGB32_2_YUYV16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(121, RGB32_2_UYVY16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(122, Y8_2_Y16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(123, Y16_2_Y10_Pairs_Row, void, (uint16_t *dst, const uint16_t *src, int32_t count)) \
  X(124, Deinterleave_Pairs_Row, void, (uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1, int32_t count)) \
  X(125, V210_2_YUYV16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(126, V210_2_UYVY16_Row, void, (uint16_t *dst, const uint8_t *src, int32_t count)) \
  X(127, YUYV16_2_V210_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(128, UYVY16_2_V210_Row, void, (uint8_t *dst, const uint16_t *src, int32_t count)) \
  X(129, YUV422_16_2_YUV420_16_UV_Row, void, (uint16_t *dstU, uint16_t *dstV, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(130, YUV420_16_2_YUV422_16_UV_FirstRow, void, (uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(131, YUV420_16_2_YUV422_16_UV_LastRow, void, (uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(132, YUV420_16_2_YUV422_16_UV_Row, void, (uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width)) \
  X(133, YUV420_2_YUV422_UV_Frame, void, (uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced, uint8_t flip)) \
  X(134, YUV420_16_2_YUV422_16_UV_Frame, void, (uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced, uint8_t flip)) \
  X(135, YUV422_2_YUV420_UV_Frame, void, (uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced, uint8_t flip)) \
  X(136, YUV422_16_2_YUV420_16_UV_Frame, void, (uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV, int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch, int32_t width, int32_t height, uint8_t interlaced, uint8_t flip)) \
  X(137, YUV422_10Bit_2_RGB64_Row, void, (uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(138, YUV422_10Bit_2_BGR64_Row, void, (uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(139, YUV422_10Bit_2_RGB32_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(140, YUV422_10Bit_2_BGR32_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(141, YUV411_2_RGB32_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(142, YUV411_2_BGR32_Row, void, (uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV, int32_t count, const int16_t *coefA, const int16_t *coefB)) \
  X(143, UV_Deinterleave_Row, void, (uint8_t *dstA, uint8_t *dstB, const uint8_t *src, int32_t count)) \
  X(144, Int32_2_Int16_Deinterleave_Row, void, (uint8_t *dst0, uint8_t *dst1, const uint8_t *src0, const uint8_t *src1, int32_t count)) \
  X(145, V210_2_YUV8_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(146, V210_2_YUV8_B_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(147, YUV8_2_V210_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(148, YUV8_2_V210_B_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(149, UV_422_2_444_Row, void, (uint8_t *dstA, uint8_t *dstB, const uint8_t *srcA, const uint8_t *srcB, int32_t count)) \
  X(150, RGB48_2_YUV422_16_Row, void, (uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src, int32_t count, const int16_t *coefY, const int16_t *coefUV)) \
  X(151, UV_Interleave_Row, void, (uint8_t *dst, const uint8_t *srcA, const uint8_t *srcB, int32_t count)) \
  X(152, RGB24_2_HSV_Row, void, (uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src, int32_t count)) \
  X(153, BGR24_2_HSV_Row, void, (uint16_t *dstH, uint8_t *dstS, uint8_t *dstV, const uint8_t *src, int32_t count)) \
  X(154, RGB24_SwapRB_Row, void, (uint8_t *dst, const uint8_t *src, int32_t count)) \
  X(155, Clear_Row_D, void, (uint8_t *dst, const uint8_t *unused, int32_t count)) \
  X(156, Clear_Row_E, void, (uint8_t *dst, const uint8_t *unused, int32_t count)) \
  X(157, RGB24_2_Gray_Row, void, (uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count)) \
  X(158, RGB24_Histogram_Row, void, (uint32_t *hist0, uint32_t *hist1, uint32_t *hist2, const uint8_t *src, int32_t count)) \
  X(159, YUV422_16_2_YUYV_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count)) \
  X(160, YUV422_16_2_UYVY_Row, void, (uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU, const uint16_t *srcV, int32_t count))
/* clang-format on */

#endif
