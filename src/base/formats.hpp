// The format space of the descriptor forms, codes 0 to 23 and 1013 to 1036:
// one entry per code with its planes, samples, chroma subsampling and siting,
// the kernel table's answers for it (slots 0 and 1), the widths it accepts,
// the ffmpeg name of the same memory, and the kernel families that read or
// write it. Routes, the tool and docs/formats.md are made from this table.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace tqcs {

// How the samples of a frame are stored.
enum class Packing : uint8_t {
  Reserved,    // no layout: the descriptor forms refuse the code
  Packed,      // every component of a pixel (pair) in plane 0
  Planar,      // Y, U and V in planes 0, 1 and 2
  SemiPlanar,  // Y in plane 0, U and V interleaved (U first) in plane 1
  V210,        // plane 0: three 10-bit samples a little-endian 32-bit word
  EightPlus2,  // plane 0: 10-bit samples in runs of 32 high bytes + 8 low-bit bytes
  Alpha        // plane 0: one 8-bit key sample a pixel
};

// Where 4:2:0 chroma sits vertically. Formats without vertical subsampling
// have None.
enum class Siting : uint8_t {
  None,
  Field,  // per field: each field's own chroma rows, filtered within the field
  Frame   // on the frame: centred between the two frame rows a chroma row covers
};

// What kernel slot 1 (GetFormatClass) answers.
enum FormatClass : int32_t {
  kClassNone = 0,
  kClassRgb = 1,
  kClassYuv444 = 2,
  kClassYuv422Packed = 3,
  kClassYuv422Planar = 4,
  kClassYuv420Planar = 5,
  kClassAlpha = 6,
  kClassDescriptorOnly = 7
};

struct FormatInfo {
  int32_t code;
  std::string_view name;    // the public name without its TCS_FORMAT_ prefix
  std::string_view memory;  // the order of components or planes, first first
  Packing packing;
  int8_t planes;        // descriptor planes used
  int8_t sampleBytes;   // bytes of one stored sample (V210: of one 32-bit word)
  int8_t chromaShiftX;  // chroma width = width >> chromaShiftX (0: 4:4:4)
  int8_t chromaShiftY;  // chroma rows = rows >> chromaShiftY
  Siting siting;
  int8_t widthMultiple;     // the widths the descriptor forms take: multiples of this
  bool sourceOnly;          // read, never written
  int32_t bitsPerPixel;     // what kernel slot 0 answers (kept as it stands)
  int32_t formatClass;      // what kernel slot 1 answers
  std::string_view ffmpeg;  // the ffmpeg pixel format (or codec) of the same memory
  // Kernel names (`*` for any run of characters) of the families that read or
  // write the layout; every pattern names at least one slot of the kernel table.
  std::array<std::string_view, 4> kernels;
  bool lowBits = false;  // 16-bit samples hold their 10-bit value in bits 0-9, not 6-15
};

namespace formats_detail {

#define TQCS_FORMAT(name) TCS_FORMAT_##name, #name

constexpr Packing kRes = Packing::Reserved;
constexpr Siting kNo = Siting::None, kFld = Siting::Field, kFrm = Siting::Frame;

// A code that names no layout, with what slots 0 and 1 answer for it.
constexpr FormatInfo Reserved(int32_t code, std::string_view name, int32_t bits) {
  return {code,
          name,
          "",
          kRes,
          0,
          0,
          0,
          0,
          kNo,
          0,
          false,
          bits,
          bits != 0 ? kClassDescriptorOnly : kClassNone,
          "",
          {}};
}

}  // namespace formats_detail

// clang-format off
inline constexpr std::array<FormatInfo, 48> kFormats = [] {
  using namespace formats_detail;
  using P = Packing;
  // code and name, memory, packing, planes, sample bytes, chroma shifts x and y, siting,
  // width multiple, source only, slot 0's bits, slot 1's class, ffmpeg, kernel families
  return std::array<FormatInfo, 48>{{
      {TQCS_FORMAT(RGB32), "B G R A", P::Packed, 1, 1, 0, 0, kNo, 1, false, 32, kClassRgb, "bgra",
       {"RGB32_*", "BGR32_*", "*_2_RGB32_Row", "*_2_BGR32_Row"}},
      {TQCS_FORMAT(RGB32_SWAP), "R G B A", P::Packed, 1, 1, 0, 0, kNo, 1, false, 32, kClassRgb,
       "rgba", {"RGB32_*", "BGR32_*", "*_2_RGB32_Row", "*_2_BGR32_Row"}},
      {TQCS_FORMAT(YUVA), "Y U V A", P::Packed, 1, 1, 0, 0, kNo, 1, false, 32, kClassYuv444, "",
       {"YUVA_2_*", "*_2_YUVA_Row"}},
      {TQCS_FORMAT(RGB24), "B G R", P::Packed, 1, 1, 0, 0, kNo, 1, false, 24, kClassRgb, "bgr24",
       {"RGB24_*", "BGR24_*", "*_2_RGB24_Row", "*_2_BGR24_Row"}},
      {TQCS_FORMAT(RGB24_SWAP), "R G B", P::Packed, 1, 1, 0, 0, kNo, 1, false, 24, kClassRgb,
       "rgb24", {"RGB24_*", "BGR24_*", "*_2_RGB24_Row", "*_2_BGR24_Row"}},
      {TQCS_FORMAT(YUV), "Y U V", P::Packed, 1, 1, 0, 0, kNo, 1, false, 24, kClassYuv444, "", {}},
      {TQCS_FORMAT(YUV16), "Y0 U Y1 V", P::Packed, 1, 1, 1, 0, kNo, 1, false, 16,
       kClassYuv422Packed, "yuyv422", {"YUYV_2_*", "*_2_YUYV_Row"}},
      {TQCS_FORMAT(YUV16_SWAP), "U Y0 V Y1", P::Packed, 1, 1, 1, 0, kNo, 1, false, 16,
       kClassYuv422Packed, "uyvy422", {"UYVY_2_*", "*_2_UYVY_Row"}},
      {TQCS_FORMAT(YUV422), "Y | U | V", P::Planar, 3, 1, 1, 0, kNo, 1, false, 8,
       kClassYuv422Planar, "yuv422p", {"YUV422_2_*", "*_2_YUV422_Row"}},
      {TQCS_FORMAT(YUV420), "Y | U | V", P::Planar, 3, 1, 1, 1, kFld, 1, false, 8,
       kClassYuv420Planar, "yuv420p", {"YUV420_2_*", "*_2_YUV420_UV_Row", "*_2_YUV420_Row"}},
      {TQCS_FORMAT(ALPHA), "A", P::Alpha, 1, 1, 0, 0, kNo, 1, false, 8, kClassAlpha, "gray",
       {"*_Key_*"}},
      // Frame-sited 4:2:0 reaches the slots through its own chroma routines
      // (kernels/chroma_progressive.hpp) and the 4:2:2 kernels.
      {TQCS_FORMAT(YUV420_FRAME), "Y | U | V", P::Planar, 3, 1, 1, 1, kFrm, 2, false, 0, kClassNone,
       "yuv420p", {}},
      {TQCS_FORMAT(YUV16_10BIT), "Y0 U Y1 V", P::Packed, 1, 2, 1, 0, kNo, 2, false, 32,
       kClassDescriptorOnly, "y210le", {"YUYV16_*", "*_2_YUYV16_Row"}},
      {TQCS_FORMAT(YUV16_10BIT_SWAP), "U Y0 V Y1", P::Packed, 1, 2, 1, 0, kNo, 2, false, 32,
       kClassDescriptorOnly, "", {"UYVY16_*", "*_2_UYVY16_Row"}},
      {TQCS_FORMAT(V210), "U0 Y0 V0 | Y1 U1 Y2 | V1 Y3 U2 | Y4 V2 Y5", P::V210, 1, 4, 1, 0, kNo, 6,
       false, 0, kClassNone, "v210", {"V210_2_*", "*_2_V210*"}},
      {TQCS_FORMAT(YUV420_10BIT), "Y | U | V", P::Planar, 3, 2, 1, 1, kFld, 2, false, 0, kClassNone,
       "yuv420p16le", {"YUV420_16_2_*", "YUV420_10Bit_2_*", "*_2_YUV420_16_*"}},
      {TQCS_FORMAT(YUV420_10BIT_FRAME), "Y | U | V", P::Planar, 3, 2, 1, 1, kFrm, 2, false, 0,
       kClassNone, "yuv420p16le", {}},
      {TQCS_FORMAT(NV16), "Y | U V", P::SemiPlanar, 2, 1, 1, 0, kNo, 2, false, 0, kClassNone,
       "nv16", {"UV_Interleave_Row", "UV_Deinterleave_Row"}},
      {TQCS_FORMAT(NV12), "Y | U V", P::SemiPlanar, 2, 1, 1, 1, kFld, 2, false, 0, kClassNone,
       "nv12", {"UV_Interleave_Row", "UV_Deinterleave_Row"}},
      {TQCS_FORMAT(NV12_FRAME), "Y | U V", P::SemiPlanar, 2, 1, 1, 1, kFrm, 2, false, 0, kClassNone,
       "nv12", {"UV_Interleave_Row", "UV_Deinterleave_Row"}},
      // No kernel interleaves 16-bit samples yet: listed for the names and the
      // tool, without a kernel family.
      {TQCS_FORMAT(P210), "Y | U V", P::SemiPlanar, 2, 2, 1, 0, kNo, 2, false, 0, kClassNone,
       "p210le", {}},
      {TQCS_FORMAT(P010), "Y | U V", P::SemiPlanar, 2, 2, 1, 1, kFld, 2, false, 0, kClassNone,
       "p010le", {}},
      {TQCS_FORMAT(P010_FRAME), "Y | U V", P::SemiPlanar, 2, 2, 1, 1, kFrm, 2, false, 0, kClassNone,
       "p010le", {}},
      {TQCS_FORMAT(YUV16_8PLUS2), "Y0 U Y1 V", P::EightPlus2, 1, 1, 1, 0, kNo, 2, false, 0,
       kClassNone, "", {"*8Plus2*"}},
      {TQCS_FORMAT(YUV411), "Y | U | V", P::Planar, 3, 1, 2, 0, kNo, 4, true, 0, kClassNone,
       "yuv411p", {"YUV411_2_*"}},
      Reserved(TQCS_FORMAT(RESERVED_1014), 32),
      Reserved(TQCS_FORMAT(RESERVED_1015), 32),
      {TQCS_FORMAT(RGB64), "B G R A", P::Packed, 1, 2, 0, 0, kNo, 1, false, 64,
       kClassDescriptorOnly, "bgra64le", {"RGB64_*", "*_2_RGB64*", "*_2_BGR64*"}},
      {TQCS_FORMAT(RGB64_SWAP), "R G B A", P::Packed, 1, 2, 0, 0, kNo, 1, false, 64,
       kClassDescriptorOnly, "rgba64le", {"RGB64_*", "*_2_RGB64*", "*_2_BGR64*"}},
      Reserved(TQCS_FORMAT(RESERVED_1018), 64),
      Reserved(TQCS_FORMAT(RESERVED_1019), 64),
      Reserved(TQCS_FORMAT(RESERVED_1020), 64),
      {TQCS_FORMAT(RGB48), "B G R", P::Packed, 1, 2, 0, 0, kNo, 1, false, 48, kClassDescriptorOnly,
       "bgr48le", {"RGB48_*", "*_2_RGB48*", "*_2_BGR48*"}},
      {TQCS_FORMAT(RGB48_SWAP), "R G B", P::Packed, 1, 2, 0, 0, kNo, 1, false, 48,
       kClassDescriptorOnly, "rgb48le", {"RGB48_*", "*_2_RGB48*", "*_2_BGR48*"}},
      Reserved(TQCS_FORMAT(RESERVED_1023), 48),
      Reserved(TQCS_FORMAT(RESERVED_1024), 0),
      Reserved(TQCS_FORMAT(RESERVED_1025), 0),
      Reserved(TQCS_FORMAT(RESERVED_1026), 0),
      Reserved(TQCS_FORMAT(RESERVED_1027), 0),
      Reserved(TQCS_FORMAT(RESERVED_1028), 0),
      Reserved(TQCS_FORMAT(RESERVED_1029), 0),
      Reserved(TQCS_FORMAT(RESERVED_1030), 0),
      Reserved(TQCS_FORMAT(RESERVED_1031), 0),
      Reserved(TQCS_FORMAT(RESERVED_1032), 0),
      {TQCS_FORMAT(YUV422_10BIT), "Y | U | V", P::Planar, 3, 2, 1, 0, kNo, 2, false, 16,
       kClassDescriptorOnly, "yuv422p16le", {"YUV422_16_2_*", "YUV422_10Bit_2_*",
      "*_2_YUV422_16_*"}},
      // The 10-bit value in the low bits of each sample: moved to and from the
      // top bits around the kernels.
      {TQCS_FORMAT(YUV422_10BIT_LOW), "Y | U | V", P::Planar, 3, 2, 1, 0, kNo, 2, false, 0,
       kClassNone, "yuv422p10le", {"Y16_2_Y10_Row"}, true},
      {TQCS_FORMAT(YUV420_10BIT_LOW), "Y | U | V", P::Planar, 3, 2, 1, 1, kFld, 2, false, 0,
       kClassNone, "yuv420p10le", {"Y16_2_Y10_Row"}, true},
      {TQCS_FORMAT(YUV420_10BIT_LOW_FRAME), "Y | U | V", P::Planar, 3, 2, 1, 1, kFrm, 2, false, 0,
       kClassNone, "yuv420p10le", {"Y16_2_Y10_Row"}, true},
  }};
}();
// clang-format on

#undef TQCS_FORMAT

// The entry of a code, or null for a code outside the space.
constexpr const FormatInfo *FindFormat(int32_t code) {
  for (const FormatInfo &f : kFormats)
    if (f.code == code) return &f;
  return nullptr;
}

// Whether kernel name `name` matches `pattern`, where `*` stands for any run
// of characters.
constexpr bool MatchesKernel(std::string_view pattern, std::string_view name) {
  if (pattern.empty()) return name.empty();
  if (pattern[0] == '*') {
    for (size_t skip = 0; skip <= name.size(); ++skip)
      if (MatchesKernel(pattern.substr(1), name.substr(skip))) return true;
    return false;
  }
  return !name.empty() && pattern[0] == name[0] && MatchesKernel(pattern.substr(1), name.substr(1));
}

// Bytes of one row of plane `plane` (0 the first) for `width` pixels, for a
// width the layout accepts.
constexpr int64_t PlaneRowBytes(const FormatInfo &f, int plane, int64_t width) {
  const int64_t chroma = width >> f.chromaShiftX;
  switch (f.packing) {
    case Packing::Reserved:
      return 0;
    case Packing::Alpha:
      return width;
    case Packing::V210:
      return width / 6 * 16;
    case Packing::EightPlus2: {
      const int64_t samples = 2 * width;
      return samples + (samples + 3) / 4;
    }
    case Packing::Packed: {
      // Pixels of 4:4:4 layouts; two samples a pixel for 4:2:2 pairs.
      const int64_t samplesPerPixel =
          f.chromaShiftX != 0 ? 2 : f.bitsPerPixel / (8 * f.sampleBytes);
      return width * samplesPerPixel * f.sampleBytes;
    }
    case Packing::Planar:
      return (plane == 0 ? width : chroma) * f.sampleBytes;
    case Packing::SemiPlanar:
      return (plane == 0 ? width : 2 * chroma) * f.sampleBytes;
  }
  return 0;
}

// Rows of plane `plane` for a frame of `height` rows.
constexpr int64_t PlaneRows(const FormatInfo &f, int plane, int64_t height) {
  return plane == 0 || f.packing == Packing::Packed ? height : height >> f.chromaShiftY;
}

}  // namespace tqcs
