/* TQColorSpace: pixel-format and colour-space conversions for progressive and
 * interlaced video frames.
 *
 * Obtain the root API structure with TCS_GetAPIStuPtr(), optionally validate it
 * with TCS_CheckAPIStu(), then call conversions through its typed tables:
 *
 *   const TCS_APIStu *api = TCS_GetAPIStuPtr();
 *   if (api && TCS_CheckAPIStu(api) == TCS_CHECK_OK)
 *     api->pRGB24->TCS_RGB24_2_YUV16_Frame(dst, dstPitch, src, srcPitch, w, h,
 *                                          TCS_MATRIX_HD, 0, 0, 0);
 *
 * No conversion is exported by name. Conversions report misuse only through
 * the log of TQCPUBase (TCB_WriteLog) and return no status; the dispatchers of
 * the general table return 1 on success and 0 on failure.
 */
#ifndef TQCOLORSPACE_H
#define TQCOLORSPACE_H

#include <stdint.h>

#include "TQDriverSlots.h"
#include "TQExport.h"
#include "TQKernelSlots.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Format codes understood by the dispatcher (general table slots 0 to 2). */
enum {
  TCS_FORMAT_RGB32 = 0,      /* 4 bytes a pixel: B, G, R, A */
  TCS_FORMAT_RGB32_SWAP = 1, /* 4 bytes a pixel: R, G, B, A */
  TCS_FORMAT_YUVA = 2,       /* 4 bytes a pixel: Y, U, V, A */
  TCS_FORMAT_RGB24 = 3,      /* 3 bytes a pixel: B, G, R */
  TCS_FORMAT_RGB24_SWAP = 4, /* 3 bytes a pixel: R, G, B */
  TCS_FORMAT_YUV = 5,        /* 3 bytes a pixel: Y, U, V (4:4:4) */
  TCS_FORMAT_YUV16 = 6,      /* packed 4:2:2, Y0 U Y1 V */
  TCS_FORMAT_YUV16_SWAP = 7, /* packed 4:2:2, U Y0 V Y1 */
  TCS_FORMAT_YUV422 = 8,     /* planar 4:2:2 in one buffer: Y, then U, then V */
  TCS_FORMAT_YUV420 = 9,     /* planar 4:2:0 in one buffer: Y, then U, then V */
  TCS_FORMAT_ALPHA = 10      /* one 8-bit key plane */
};

/* The extended format space of the descriptor forms (general table slots 16
 * to 18): codes 0 to 10 above, and the deep-colour, semi-planar and
 * progressive layouts below. "16-bit" samples hold 10 significant bits in
 * bits 6 to 15 (value = sample >> 6). 4:2:0 layouts site their chroma per
 * field unless named _FRAME (sited on the frame: vertically centred between
 * the two rows it covers, as progressive material is). docs/formats.md gives
 * every layout byte by byte. Widths: V210 takes multiples of 6, planar 4:1:1
 * multiples of 4, the other layouts from code 11 on with chroma subsampling
 * multiples of 2, RGB48 and RGB64 any width; for any other width the
 * descriptor forms return 0 and write nothing. Reserved codes name no layout;
 * the descriptor forms refuse them. */
enum {
  TCS_FORMAT_YUV420_FRAME = 11,       /* planar 4:2:0, 8-bit, chroma sited on the frame */
  TCS_FORMAT_YUV16_10BIT = 12,        /* packed 4:2:2, 16-bit Y0 U Y1 V */
  TCS_FORMAT_YUV16_10BIT_SWAP = 13,   /* packed 4:2:2, 16-bit U Y0 V Y1 */
  TCS_FORMAT_V210 = 14,               /* 4:2:2, three 10-bit samples a 32-bit word */
  TCS_FORMAT_YUV420_10BIT = 15,       /* planar 4:2:0, 16-bit, chroma sited per field */
  TCS_FORMAT_YUV420_10BIT_FRAME = 16, /* planar 4:2:0, 16-bit, chroma sited on the frame */
  TCS_FORMAT_NV16 = 17,               /* Y plane, interleaved U V plane, 4:2:2, 8-bit */
  TCS_FORMAT_NV12 = 18,               /* Y plane, interleaved U V plane, 4:2:0 per field */
  TCS_FORMAT_NV12_FRAME = 19,         /* as NV12, chroma sited on the frame */
  TCS_FORMAT_P210 = 20,               /* Y plane, interleaved U V plane, 4:2:2, 16-bit */
  TCS_FORMAT_P010 = 21,               /* as P210, 4:2:0 per field */
  TCS_FORMAT_P010_FRAME = 22,         /* as P010, chroma sited on the frame */
  TCS_FORMAT_YUV16_8PLUS2 = 23,       /* packed 4:2:2 Y0 U Y1 V, 10-bit, 8+2 runs */
  TCS_FORMAT_YUV411 = 1013,           /* planar 4:1:1, 8-bit (a source only) */
  TCS_FORMAT_RESERVED_1014 = 1014,
  TCS_FORMAT_RESERVED_1015 = 1015,
  TCS_FORMAT_RGB64 = 1016,      /* 8 bytes a pixel: B, G, R, A in 16-bit samples */
  TCS_FORMAT_RGB64_SWAP = 1017, /* 8 bytes a pixel: R, G, B, A in 16-bit samples */
  TCS_FORMAT_RESERVED_1018 = 1018,
  TCS_FORMAT_RESERVED_1019 = 1019,
  TCS_FORMAT_RESERVED_1020 = 1020,
  TCS_FORMAT_RGB48 = 1021,      /* 6 bytes a pixel: B, G, R in 16-bit samples */
  TCS_FORMAT_RGB48_SWAP = 1022, /* 6 bytes a pixel: R, G, B in 16-bit samples */
  TCS_FORMAT_RESERVED_1023 = 1023,
  TCS_FORMAT_RESERVED_1024 = 1024,
  TCS_FORMAT_RESERVED_1025 = 1025,
  TCS_FORMAT_RESERVED_1026 = 1026,
  TCS_FORMAT_RESERVED_1027 = 1027,
  TCS_FORMAT_RESERVED_1028 = 1028,
  TCS_FORMAT_RESERVED_1029 = 1029,
  TCS_FORMAT_RESERVED_1030 = 1030,
  TCS_FORMAT_RESERVED_1031 = 1031,
  TCS_FORMAT_RESERVED_1032 = 1032,
  TCS_FORMAT_YUV422_10BIT = 1033,          /* planar 4:2:2, 16-bit */
  TCS_FORMAT_YUV422_10BIT_LOW = 1034,      /* planar 4:2:2, 16-bit, the value in bits 0-9 */
  TCS_FORMAT_YUV420_10BIT_LOW = 1035,      /* as 1034, 4:2:0 per field */
  TCS_FORMAT_YUV420_10BIT_LOW_FRAME = 1036 /* as 1034, 4:2:0 sited on the frame */
};

/* Matrix selectors. Drivers accept every value below 4; 2 and negative values
 * pass the check but select no coefficient set, and a conversion that needs
 * one then writes nothing (as the planar 4:2:2 destinations of RGB sources do
 * for UHD: they know only HD and SD). */
enum { TCS_MATRIX_HD = 0, TCS_MATRIX_SD = 1, TCS_MATRIX_UHD = 3 };

/* What the caller's buffers must hold. Nothing outside these rows is read or
 * written, whatever the arguments.
 *
 * Row lengths: width x bytes a pixel. A packed 4:2:2 row (YUYV or UYVY) is
 * 2 x width bytes: with an odd width its last pixel is a half pair holding that
 * pixel's Y and U (in YUYV order Y, U; in UYVY order U, Y); its V is not
 * stored. Planar chroma rows hold width / 2 samples.
 *
 * Frames hold `height` rows (4:2:0 chroma planes height / 2). Field buffers of
 * the _Split and _Compose forms, with H the frame height:
 *   - a split writes (H + 1) / 2 rows into each field where an odd last frame
 *     row is converted into field 1 and copied into field 2; otherwise field 1
 *     gets at most (H + 1) / 2 rows and field 2 H / 2;
 *   - a compose reads at most (H + 1) / 2 rows of field 1 and H / 2 of field 2;
 *   - the red/blue swap triples and the format-free field split and compose
 *     leave an odd last frame row out: fields of H / 2 rows;
 *   - a 4:2:0 field image of r rows has r / 2 chroma rows; the fields of a
 *     4:2:0 frame being composed hold its chroma rows alternately.
 * The dispatcher's field buffers of codes 8 and 9 are laid out for H / 2 rows
 * (U after H / 2 luma rows): with an odd height their conversions run on
 * H - 1 frame rows (the last H - 1 under flip), so the odd last row is left
 * out, as the same-code field copies leave it out. Its packed field buffers
 * (codes 0 to 7, 10) follow the driver rules above.
 *
 * A whole frame goes through one kernel call only when its pixel count fits a
 * signed 32-bit count; larger frames are converted row by row. */

/* Results of TCS_CheckAPIStu. */
enum { TCS_CHECK_OK = 1, TCS_CHECK_NULL_SLOT = 10, TCS_CHECK_NULL_TABLE = -1 };

/* Results of the dispatchers. */
enum { TCS_RESULT_FAILED = 0, TCS_RESULT_OK = 1 };

/* Reasons passed to the module entry point. */
enum {
  TCS_REASON_PROCESS_DETACH = 0,
  TCS_REASON_PROCESS_ATTACH = 1,
  TCS_REASON_THREAD_ATTACH = 2,
  TCS_REASON_THREAD_DETACH = 3
};

/* Slot counts of the nine sub-tables, as TCS_CheckAPIStu validates them. */
enum {
  TCS_GENERAL_SLOT_COUNT = 19,
  TCS_RGB32_SLOT_COUNT = 21,
  TCS_RGB24_SLOT_COUNT = 25,
  TCS_YUVA_SLOT_COUNT = 15,
  TCS_YUV16_SLOT_COUNT = 21,
  TCS_YUV422_SLOT_COUNT = 23,
  TCS_YUV420_SLOT_COUNT = 23,
  TCS_YUV_SLOT_COUNT = 15,
  TCS_KERNEL_SLOT_COUNT = 161
};

/* A frame for the descriptor-based conversions (general table slots 16 to 18):
 * up to four planes, each a pointer to row 0 and a byte pitch, then the format
 * code. Packed formats use plane 0 only; planar formats use planes 0, 1 and 2
 * for Y, U and V, semi-planar ones 0 for Y and 1 for the U V pairs; planes
 * need not share one buffer. docs/formats.md gives every layout and which
 * codes convert to which.
 *
 * Between codes 0 to 10 the forms route as TCS_ColorConvFrame, _Split and
 * _Compose do. Any pair with another code converts row by row through the
 * kernels that join the two layouts, and returns 0 without writing anything
 * when: either code has no layout (the reserved ones), the destination is
 * 4:1:1 (a source only), no chain of kernels joins the two (YUVA, packed
 * 4:4:4 and the key plane meet codes 0 to 10 only; 4:1:1 converts to RGB
 * only), the chain converts between YUV and RGB and the matrix selector names
 * no set (0 HD, 1 SD, 3 UHD), a plane is null or its pitch is below its row's
 * bytes (pitches are positive), the width is not a multiple of each layout's
 * (V210: 6 pixels; 4:2:2 and 4:2:0: 2; 4:1:1: 4), a 4:2:0 frame has an odd
 * height, a field form's height is odd (or not a multiple of 4 where a 4:2:0
 * code is involved: each field holds whole chroma pairs), the two fields'
 * codes differ, or scratch memory cannot be had. Field buffers hold
 * height / 2 rows. Flip reads (split) or writes (frame, compose) the frame
 * bottom-up. 10-bit values become 8-bit ones by truncation (v >> 2). */
typedef struct TCS_Plane {
  uint8_t *data;
  int64_t pitch;
} TCS_Plane;

typedef struct TCS_FrameDesc {
  TCS_Plane plane[4];
  int32_t format;
} TCS_FrameDesc;

/* One typed member per slot, in slot order. */
#define TCS_SLOT_MEMBER(n, name, ret, params) ret(*name) params;

typedef struct TCS_GeneralTable {
  TCS_GENERAL_SLOTS(TCS_SLOT_MEMBER)
} TCS_GeneralTable;
typedef struct TCS_RGB32Table {
  TCS_RGB32_SLOTS(TCS_SLOT_MEMBER)
} TCS_RGB32Table;
typedef struct TCS_RGB24Table {
  TCS_RGB24_SLOTS(TCS_SLOT_MEMBER)
} TCS_RGB24Table;
typedef struct TCS_YUVATable {
  TCS_YUVA_SLOTS(TCS_SLOT_MEMBER)
} TCS_YUVATable;
typedef struct TCS_YUV16Table {
  TCS_YUV16_SLOTS(TCS_SLOT_MEMBER)
} TCS_YUV16Table;
typedef struct TCS_YUV422Table {
  TCS_YUV422_SLOTS(TCS_SLOT_MEMBER)
} TCS_YUV422Table;
typedef struct TCS_YUV420Table {
  TCS_YUV420_SLOTS(TCS_SLOT_MEMBER)
} TCS_YUV420Table;
typedef struct TCS_YUVTable {
  TCS_YUV_SLOTS(TCS_SLOT_MEMBER)
} TCS_YUVTable;
typedef struct TCS_KernelTable {
  TCS_KERNEL_SLOTS(TCS_SLOT_MEMBER)
} TCS_KernelTable;

/* The root API structure: nine pointers to sub-tables, in this order. */
typedef struct TCS_APIStu {
  TCS_GeneralTable *pGeneral; /* 0: dispatcher, fields, repacking, range */
  TCS_RGB32Table *pRGB32;     /* 1 */
  TCS_RGB24Table *pRGB24;     /* 2 */
  TCS_YUVATable *pYUVA;       /* 3 */
  TCS_YUV16Table *pYUV16;     /* 4 */
  TCS_YUV422Table *pYUV422;   /* 5 */
  TCS_YUV420Table *pYUV420;   /* 6 */
  TCS_YUVTable *pYUV;         /* 7 */
  TCS_KernelTable *pKernel;   /* 8: row kernels */
} TCS_APIStu;

/* The address of the root structure; null until start-up has begun. */
TCS_API extern TCS_APIStu *g_pColorSpaceAPI;

/* Returns g_pColorSpaceAPI. */
TCS_API TCS_APIStu *TCS_GetAPIStuPtr(void);

/* Validates any structure of the root's shape: -1 when the root or one of the
 * sub-table pointers 0 to 7 is null, 10 when a validated slot is null, else 1. */
TCS_API int32_t TCS_CheckAPIStu(const TCS_APIStu *api);

/* The module entry point. The loader's notifications reach it with reason 1
 * when the library is loaded and 0 when it is unloaded (on Windows through
 * DllMain, whose notification codes are these reasons); a host may call it
 * again (the build runs once). Returns 1 on success, 0 on failure. On Windows
 * a failure makes the loader refuse the DLL. An ELF load cannot be refused:
 * when start-up fails the library stays loaded, logs "DLL Loading Failed",
 * g_pColorSpaceAPI points at the partly filled structure and TCS_CheckAPIStu
 * on it does not return 1. */
TCS_API int32_t TCS_DllMain(void *module, uint32_t reason, void *reserved);

#ifdef __cplusplus
}
#endif

#include "TQColorTables.h"

#endif
