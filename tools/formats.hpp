// Pixel formats as the tool names them. A format is a library format code
// (0 to 10 for the dispatcher, the extended codes for the descriptor forms),
// or one of the few layouts the tool makes itself (planar 4:4:4, grey, HSV),
// numbered after the library's space. The library's layouts and their names
// come from its format table: each is called by ffmpeg's -pix_fmt name of the
// same memory where ffmpeg has one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tqcs {

enum Format : int32_t {
  kBgra = 0,           // B, G, R, A
  kRgba = 1,           // R, G, B, A
  kYuva = 2,           // Y, U, V, A
  kBgr24 = 3,          // B, G, R
  kRgb24 = 4,          // R, G, B
  kYuv444Packed = 5,   // Y, U, V
  kYuyv = 6,           // Y0 U Y1 V
  kUyvy = 7,           // U Y0 V Y1
  kYuv422p = 8,        // Y plane, U plane, V plane
  kYuv420p = 9,        // chroma sited per field
  kAlpha = 10,         // one key plane
  kYuv420pFrame = 11,  // chroma sited on the frame
  // Layouts of the tool's own: not library codes.
  kYuv444p = 2000,  // planar 4:4:4, through packed YUVA
  kGray = 2001,
  kHsv = 2002,  // H plane of 16-bit degrees, then S plane, then V plane
};

constexpr int32_t kLibraryFormats = 11;  // the dispatcher's codes 0 to 10
constexpr bool IsLibraryCode(int32_t format) { return format >= 0 && format < kYuv444p; }

enum class Family { kRgb, kYuv, kKey };
enum class Range { kFull, kLimited };

struct ToolFormat {
  Format format;      // the code; for 4:2:0 the one with chroma sited on the frame
  Format fieldSited;  // the code of the same memory with chroma sited per field (else format)
  const char *name;
  std::string description;
  Family family;
  bool readable;
  bool writable;
  int32_t packedBytes;  // bytes a pixel of a one-plane layout (half a 4:2:2 pair), else 0
  int32_t sampleBytes;  // bytes a sample (2 for 16-bit samples, 4 for v210 words)
  int32_t shiftX;       // chroma subsampling
  int32_t shiftY;
  int32_t widthMultiple;  // the widths the library takes
  bool deep;              // 10 significant bits a sample
  bool lowBits;           // the 10 bits in bits 0-9 of 16 (else in bits 6-15)
  bool chromaFirst;       // packed 4:2:2 from a chroma sample: U Y0 V Y1
};

// The entry of a format (either code of a 4:2:0 name).
const ToolFormat &Info(Format format);
// One format a name, in the library's code order, then the tool's own.
const std::vector<Format> &AllFormats();
std::optional<Format> FormatByName(std::string_view name);
// "bgra, rgba, ..." for help texts and error messages.
std::string FormatNames(bool readable, bool writable);
// The code of a format's memory for the material: chroma sited per field for
// interlaced material, on the frame for progressive material at the sizes the
// frame-sited code takes (even width and height; the library's 4:2:0 of other
// sizes is sited per field).
Format Sited(Format format, bool interlaced, int32_t width, int32_t height);

bool HasAlpha(Format format);

// One plane of a frame held in one buffer: `rowBytes` of each row are the
// layout's, the rest of a pitch is padding (v210 rows are padded to groups of
// 48 pixels, as ffmpeg stores them).
struct PlaneLayout {
  size_t offset;
  int64_t pitch;
  int32_t rowBytes;
  int32_t rows;
};
std::vector<PlaneLayout> Planes(Format format, int32_t width, int32_t height);
size_t FrameBytes(Format format, int32_t width, int32_t height);

// Empty when the tool can hold frames of this size, else what is wrong with it.
std::string CheckSize(int32_t width, int32_t height);

// A frame in one buffer.
struct Image {
  Format format = kBgra;
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> data;

  Image() = default;
  Image(Format f, int32_t w, int32_t h)
      : format(f), width(w), height(h), data(FrameBytes(f, w, h)) {}
  uint8_t *Plane(int index) { return data.data() + Planes(format, width, height)[index].offset; }
  const uint8_t *Plane(int index) const {
    return data.data() + Planes(format, width, height)[index].offset;
  }
};

// "1920x1080" to width and height; nullopt when malformed or not positive.
struct Size {
  int32_t width;
  int32_t height;
};
std::optional<Size> ParseSize(std::string_view text);

}  // namespace tqcs
