#include "formats.hpp"

#include <charconv>
#include <limits>

namespace tqcs {
namespace {

constexpr FormatInfo kFormats[kFormatCount] = {
    {"bgra", "B,G,R,A bytes (library code 0)", Family::kRgb, true, true, 4, 1, 0, 0},
    {"rgba", "R,G,B,A bytes (code 1)", Family::kRgb, true, true, 4, 1, 0, 0},
    {"yuva", "Y,U,V,A bytes, 4:4:4:4 (code 2)", Family::kYuv, true, true, 4, 1, 0, 0},
    {"bgr24", "B,G,R bytes (code 3)", Family::kRgb, true, true, 3, 1, 0, 0},
    {"rgb24", "R,G,B bytes (code 4)", Family::kRgb, true, true, 3, 1, 0, 0},
    {"yuv444packed", "Y,U,V bytes, 4:4:4 (code 5)", Family::kYuv, true, true, 3, 1, 0, 0},
    {"yuyv422", "packed 4:2:2, Y0 U Y1 V (code 6)", Family::kYuv, true, true, 2, 1, 0, 0},
    {"uyvy422", "packed 4:2:2, U Y0 V Y1 (code 7)", Family::kYuv, true, true, 2, 1, 0, 0},
    {"yuv422p", "planar 4:2:2 (code 8)", Family::kYuv, true, true, 0, 1, 1, 0},
    {"yuv420p", "planar 4:2:0 (code 9)", Family::kYuv, true, true, 0, 1, 1, 1},
    {"alpha", "one 8-bit key plane (code 10)", Family::kKey, true, true, 1, 1, 0, 0},
    {"yuv422p10le", "planar 4:2:2, 10 bits in the low bits of 16 (input)", Family::kYuv, true,
     false, 0, 2, 1, 0},
    {"yuv420p10le", "planar 4:2:0, 10 bits in the low bits of 16 (input)", Family::kYuv, true,
     false, 0, 2, 1, 1},
    {"yuv444p", "planar 4:4:4 (through packed YUVA)", Family::kYuv, true, true, 0, 1, 0, 0},
    {"gray", "8-bit luma of RGB (output; input as neutral grey)", Family::kKey, true, true, 1, 1, 0,
     0},
    {"hsv", "H plane (16-bit degrees), S plane, V plane (output)", Family::kKey, false, true, 0, 1,
     0, 0},
};

struct Alias {
  std::string_view name;
  Format format;
};
constexpr Alias kAliases[] = {
    {"bgr32", kBgra},          {"rgb32", kRgba}, {"yuv", kYuv444Packed}, {"yuyv", kYuyv},
    {"yuy2", kYuyv},           {"uyvy", kUyvy},  {"key", kAlpha},        {"yuv422p10", kYuv422p10},
    {"yuv420p10", kYuv420p10}, {"grey", kGray}};

}  // namespace

const FormatInfo &Info(Format format) { return kFormats[format]; }

std::optional<Format> FormatByName(std::string_view name) {
  for (int32_t i = 0; i < kFormatCount; ++i)
    if (name == kFormats[i].name) return static_cast<Format>(i);
  for (const Alias &alias : kAliases)
    if (name == alias.name) return alias.format;
  return std::nullopt;
}

std::string FormatNames(bool readable, bool writable) {
  std::string names;
  for (const FormatInfo &info : kFormats) {
    if ((readable && !info.readable) || (writable && !info.writable)) continue;
    if (!names.empty()) names += ", ";
    names += info.name;
  }
  return names;
}

bool HasAlpha(Format format) { return format == kBgra || format == kRgba || format == kYuva; }

std::vector<PlaneLayout> Planes(Format format, int32_t width, int32_t height) {
  const FormatInfo &info = Info(format);
  const int64_t w = width, h = height;
  if (info.packedBytes != 0) {
    const int32_t row = static_cast<int32_t>(w * info.packedBytes);
    return {{0, row, row, height}};
  }
  if (format == kHsv) {
    const size_t plane = static_cast<size_t>(w * h);
    return {{0, 2 * w, static_cast<int32_t>(2 * w), height},
            {2 * plane, w, width, height},
            {3 * plane, w, width, height}};
  }
  const int32_t lumaRow = static_cast<int32_t>(w * info.sampleBytes);
  const int32_t chromaRow = static_cast<int32_t>((w >> info.shiftX) * info.sampleBytes);
  const int32_t chromaRows = height >> info.shiftY;
  const size_t luma = static_cast<size_t>(lumaRow) * height;
  const size_t chroma = static_cast<size_t>(chromaRow) * chromaRows;
  return {{0, lumaRow, lumaRow, height},
          {luma, chromaRow, chromaRow, chromaRows},
          {luma + chroma, chromaRow, chromaRow, chromaRows}};
}

size_t FrameBytes(Format format, int32_t width, int32_t height) {
  size_t bytes = 0;
  for (const PlaneLayout &plane : Planes(format, width, height))
    bytes += static_cast<size_t>(plane.rowBytes) * plane.rows;
  return bytes;
}

std::string CheckSize(int32_t width, int32_t height) {
  // Odd widths and heights are the library's to convert or not: the engine
  // tries each conversion at the frame's shape.
  if (width <= 0 || height <= 0) return "the size must be positive";
  if (static_cast<int64_t>(width) * height * 4 > std::numeric_limits<int32_t>::max())
    return "the frame is too large";
  return {};
}

std::optional<Size> ParseSize(std::string_view text) {
  const size_t x = text.find('x');
  if (x == std::string_view::npos) return std::nullopt;
  Size size{};
  const auto parse = [](std::string_view part, int32_t &value) {
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
    return error == std::errc() && end == part.data() + part.size() && !part.empty() && value > 0;
  };
  if (!parse(text.substr(0, x), size.width) || !parse(text.substr(x + 1), size.height))
    return std::nullopt;
  if (static_cast<int64_t>(size.width) * size.height > (int64_t{1} << 28)) return std::nullopt;
  return size;
}

}  // namespace tqcs
