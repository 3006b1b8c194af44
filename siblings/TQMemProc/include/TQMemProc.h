/* TQMemProc: memory-processing routines shared by the TQ libraries (copies,
 * fills, channel extraction, range scaling), reached through a root structure
 * of sub-tables. Only the slots that other libraries call are filled; the
 * others are null. The routines come in code paths (portable, SSE2, SSSE3,
 * AVX2) that give identical bytes; the most capable one the processor has is
 * chosen once at load, or the one the environment variable TMP_CPU_PATH names
 * ("portable", "sse2", "ssse3" or "avx2", capped at what the processor has). */
#ifndef TQMEMPROC_H
#define TQMEMPROC_H

#include <stdint.h>

#if defined(_WIN32) && defined(TQMEMPROC_BUILDING)
#define TMP_API __declspec(dllexport)
#elif defined(_WIN32)
#define TMP_API __declspec(dllimport)
#elif defined(TQMEMPROC_BUILDING)
#define TMP_API __attribute__((visibility("default")))
#else
#define TMP_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*TMP_Fn)(void);

/* Sub-table 0: copies and channel extraction. */
typedef struct TMP_MemTable {
  /* 0: byte copy */
  void (*TMP_MemCopy)(uint8_t *dst, const uint8_t *src, int64_t bytes);
  TMP_Fn reserved1[4];
  /* 5: plane copy, row by row; a non-zero flip writes the destination bottom-up */
  void (*TMP_PlaneCopy)(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                        int32_t bytesPerRow, int32_t rows, uint8_t flip);
  /* 6: one byte (channel 0 to 3) of every 4-byte pixel of a row */
  void (*TMP_ExtractChannel_Row)(uint8_t *dst, const uint8_t *src, int32_t count, int32_t channel);
  /* 7: the same over a plane; flip writes the destination bottom-up */
  void (*TMP_ExtractChannel_Plane)(uint8_t *dst, int64_t dstPitch, const uint8_t *src,
                                   int64_t srcPitch, int64_t width, int32_t channel, int32_t height,
                                   uint8_t flip);
  TMP_Fn reserved8;
  /* 9: packed 4:2:2 byte-order swap YUYV <-> UYVY over a frame; flip writes the
   * destination bottom-up */
  void (*TMP_YUV16_Swap_Frame)(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                               int64_t width, int32_t height, uint8_t flip);
  /* 10: the same over one row of `count` pixels */
  void (*TMP_YUV16_Swap_Row)(uint8_t *dst, const uint8_t *src, int32_t count);
} TMP_MemTable;

/* Sub-table 2: fills. */
typedef struct TMP_FillTable {
  TMP_Fn reserved0[3];
  /* 3: fill `rows` rows of `bytesPerRow` bytes with `value` */
  void (*TMP_PlaneFill)(uint8_t *dst, int64_t dstPitch, int32_t bytesPerRow, uint8_t value,
                        int32_t rows);
} TMP_FillTable;

/* Sub-table 6: pixel arithmetic. Scaling computes per byte
 * clamp(0, 255, round(in * gain / 16384 + offset / 32)). */
typedef struct TMP_PixelTable {
  TMP_Fn reserved0[5];
  /* 5: packed 4:2:2 rows of `width` bytes; coefficients cycle every 4 bytes */
  void (*TMP_Scale_YUV16)(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                          const int16_t *gain, const int16_t *offset, int32_t width, int32_t height,
                          uint8_t flip);
  TMP_Fn reserved6;
  /* 7: 32-bit pixels, `width` pixels a row; one coefficient per byte position */
  void (*TMP_Scale_32)(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                       const int16_t *gain, const int16_t *offset, int32_t width, int32_t height,
                       uint8_t flip);
  TMP_Fn reserved8[3];
  /* 11: drop the fourth byte of every 4-byte pixel */
  void (*TMP_RGB32_2_RGB24_Row)(uint8_t *dst, const uint8_t *src, int32_t count);
  TMP_Fn reserved12[25];
  /* 37: one run of bytes with one gain and offset */
  void (*TMP_Scale_Run)(uint8_t *dst, const uint8_t *src, int16_t gain, int16_t offset,
                        int32_t bytes);
} TMP_PixelTable;

typedef struct TMP_APIStu {
  TMP_MemTable *pMem;     /* 0 */
  void *p1;               /* 1 */
  TMP_FillTable *pFill;   /* 2 */
  void *p3;               /* 3 */
  void *p4;               /* 4 */
  void *p5;               /* 5 */
  TMP_PixelTable *pPixel; /* 6 */
} TMP_APIStu;

TMP_API extern TMP_APIStu *g_pMemProcAPI;
TMP_API TMP_APIStu *TMP_GetAPIStuPtr(void);

/* Test only: the root structure of the code path `path` names (as
 * TMP_CPU_PATH), or null if the name is unknown or the processor lacks the
 * path. Hosts use TMP_GetAPIStuPtr. */
TMP_API TMP_APIStu *TMP_GetAPIStuForPath(const char *path);

#ifdef __cplusplus
}
#endif

#endif
