// Pixel formats as the tool names them: the library's codes 0 to 10 keep their
// numbers, the layouts the tool adds (10-bit planar input, planar 4:4:4, grey,
// HSV) follow them. Names follow ffmpeg's -pix_fmt where it has the same memory
// layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tqcs {

enum Format : int32_t {
  kBgra = 0,          // B, G, R, A
  kRgba = 1,          // R, G, B, A
  kYuva = 2,          // Y, U, V, A
  kBgr24 = 3,         // B, G, R
  kRgb24 = 4,         // R, G, B
  kYuv444Packed = 5,  // Y, U, V
  kYuyv = 6,          // Y0 U Y1 V
  kUyvy = 7,          // U Y0 V Y1
  kYuv422p = 8,       // Y plane, U plane, V plane
  kYuv420p = 9,
  kAlpha = 10,      // one key plane
  kYuv422p10 = 11,  // 16-bit little-endian samples holding 0 to 1023 (as ffmpeg's)
  kYuv420p10 = 12,
  kYuv444p = 13,  // planar 4:4:4: not a library format, deinterleaved in the tool
  kGray = 14,
  kHsv = 15,  // H plane of 16-bit degrees, then S plane, then V plane
  kFormatCount = 16
};

constexpr int32_t kLibraryFormats = 11;  // codes 0 to 10

enum class Family { kRgb, kYuv, kKey };
enum class Range { kFull, kLimited };

struct FormatInfo {
  const char *name;
  const char *description;
  Family family;
  bool readable;
  bool writable;
  int32_t packedBytes;  // bytes a pixel of a one-plane format, 0 for planar
  int32_t sampleBytes;  // bytes a sample (2 for the 10-bit layouts)
  int32_t shiftX;       // chroma subsampling of the planar layouts
  int32_t shiftY;
};

const FormatInfo &Info(Format format);
std::optional<Format> FormatByName(std::string_view name);
// "bgra, rgba, ..." for help texts and error messages.
std::string FormatNames(bool readable, bool writable);

bool HasAlpha(Format format);

// One plane of a frame held in one tight buffer.
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

// A frame in one tight buffer.
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
