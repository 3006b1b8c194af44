#include "formats.hpp"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <deque>
#include <limits>

#include "base/formats.hpp"

namespace tqcs {
namespace {

// The tool's own names of library codes that ffmpeg has no name for, or
// whose ffmpeg name the tool gives to a layout of its own ("gray").
constexpr std::pair<int32_t, const char *> kOwnNames[] = {
    {TCS_FORMAT_YUVA, "yuva"}, {TCS_FORMAT_YUV, "yuv444packed"}, {TCS_FORMAT_ALPHA, "alpha"}};

// The name of a library layout: the tool's own, else ffmpeg's, else the
// library's own name in lower case.
const char *NameOf(const FormatInfo &f) {
  for (const auto &[code, name] : kOwnNames)
    if (code == f.code) return name;
  if (!f.ffmpeg.empty()) return f.ffmpeg.data();  // the table's names are literals
  static std::deque<std::string> lowered;         // filled once, by the table's first use
  std::string &name = lowered.emplace_back(f.name);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return name.c_str();
}

const char *KindOf(const FormatInfo &f) {
  constexpr std::pair<Packing, const char *> kKinds[] = {{Packing::Planar, "planar"},
                                                         {Packing::SemiPlanar, "semi-planar"},
                                                         {Packing::Alpha, "one key plane"}};
  for (const auto &[packing, kind] : kKinds)
    if (packing == f.packing) return kind;
  return "packed";
}

std::string Subsampling(const FormatInfo &f) {
  if (f.chromaShiftX == 0) return "";
  return f.chromaShiftX == 2 ? " 4:1:1" : f.chromaShiftY != 0 ? " 4:2:0" : " 4:2:2";
}

std::string Depth(const FormatInfo &f) {
  if (f.packing == Packing::V210) return "10-bit in 32-bit words";
  if (f.packing == Packing::EightPlus2) return "10-bit in runs of 8 high and 2 low bits";
  if (f.sampleBytes == 1) return "8-bit";
  return f.lowBits ? "10 bits low in 16" : "16-bit, 10 bits high";
}

ToolFormat FromLibrary(const FormatInfo &f) {
  const bool rgb = f.memory.find('G') != std::string_view::npos;
  // Bytes a pixel of one-plane layouts of whole pixels or 4:2:2 pairs.
  const int64_t pairBytes =
      f.packing == Packing::Packed || f.packing == Packing::Alpha ? PlaneRowBytes(f, 0, 2) : 0;
  std::string description =
      std::string(KindOf(f)) + Subsampling(f) + ", " + Depth(f) + ": " + std::string(f.memory);
  if (f.widthMultiple > 2) description += ", widths of " + std::to_string(f.widthMultiple) + "n";
  if (f.sourceOnly) description += ", input";
  return {static_cast<Format>(f.code),
          static_cast<Format>(f.code),
          NameOf(f),
          std::move(description),
          rgb                           ? Family::kRgb
          : f.packing == Packing::Alpha ? Family::kKey
                                        : Family::kYuv,
          true,
          !f.sourceOnly,
          static_cast<int32_t>(pairBytes / 2),
          f.sampleBytes,
          f.chromaShiftX,
          f.chromaShiftY,
          std::max<int32_t>(f.widthMultiple, 1),
          f.sampleBytes != 1 || f.packing == Packing::EightPlus2,
          f.lowBits,
          f.memory.starts_with("U")};
}

// Every library layout, twins of one memory (4:2:0 sited per field and on the
// frame) under one name, then the tool's own layouts.
std::vector<ToolFormat> MakeTable() {
  std::vector<ToolFormat> table;
  for (const FormatInfo &f : kFormats) {
    if (f.packing == Packing::Reserved) continue;
    ToolFormat entry = FromLibrary(f);
    const auto twin = std::find_if(table.begin(), table.end(), [&](const ToolFormat &t) {
      return std::string_view(t.name) == entry.name;
    });
    if (twin == table.end())
      table.push_back(std::move(entry));
    else
      (f.siting == Siting::Frame ? twin->format : twin->fieldSited) = entry.format;
  }
  for (ToolFormat &entry : table)
    entry.description +=
        " (code " + std::to_string(entry.format) +
        (entry.fieldSited == entry.format
             ? ")"
             : " progressive, " + std::to_string(entry.fieldSited) + " interlaced)");
  const auto own = [&](Format format, const char *name, const char *description, bool readable,
                       int32_t packedBytes, int32_t shiftX) {
    table.push_back({format, format, name, description,
                     format == kYuv444p ? Family::kYuv : Family::kKey, readable, true, packedBytes,
                     1, shiftX, 0, 1, false, false, false});
  };
  own(kYuv444p, "yuv444p", "planar 4:4:4, 8-bit (through packed YUVA)", true, 0, 0);
  own(kGray, "gray", "8-bit luma of RGB (output; input as neutral grey)", true, 1, 0);
  own(kHsv, "hsv", "H plane (16-bit degrees), S plane, V plane (output)", false, 0, 0);
  return table;
}

const std::vector<ToolFormat> &Table() {
  static const std::vector<ToolFormat> table = MakeTable();
  return table;
}

struct Alias {
  std::string_view name, target;
};
constexpr Alias kAliases[] = {{"bgr32", "bgra"},
                              {"rgb32", "rgba"},
                              {"yuv", "yuv444packed"},
                              {"yuyv", "yuyv422"},
                              {"yuy2", "yuyv422"},
                              {"uyvy", "uyvy422"},
                              {"key", "alpha"},
                              {"yuv422p10", "yuv422p10le"},
                              {"yuv420p10", "yuv420p10le"},
                              {"grey", "gray"}};

}  // namespace

const ToolFormat &Info(Format format) {
  for (const ToolFormat &entry : Table())
    if (entry.format == format || entry.fieldSited == format) return entry;
  return Table().front();  // not reached for the formats the tool makes
}

const std::vector<Format> &AllFormats() {
  static const std::vector<Format> formats = [] {
    std::vector<Format> all;
    for (const ToolFormat &entry : Table()) all.push_back(entry.format);
    return all;
  }();
  return formats;
}

std::optional<Format> FormatByName(std::string_view name) {
  for (const Alias &alias : kAliases)
    if (name == alias.name) name = alias.target;
  for (const ToolFormat &entry : Table())
    if (name == entry.name) return entry.format;
  return std::nullopt;
}

std::string FormatNames(bool readable, bool writable) {
  std::string names;
  for (const ToolFormat &info : Table()) {
    if ((readable && !info.readable) || (writable && !info.writable)) continue;
    if (!names.empty()) names += ", ";
    names += info.name;
  }
  return names;
}

Format Sited(Format format, bool interlaced, int32_t width, int32_t height) {
  const ToolFormat &info = Info(format);
  return interlaced || width % 2 != 0 || height % 2 != 0 ? info.fieldSited : info.format;
}

bool HasAlpha(Format format) {
  const FormatInfo *f = IsLibraryCode(format) ? FindFormat(format) : nullptr;
  return f != nullptr && f->packing == Packing::Packed && f->memory.ends_with(" A");
}

std::vector<PlaneLayout> Planes(Format format, int32_t width, int32_t height) {
  const int64_t w = width, h = height;
  if (format == kHsv) {
    const size_t plane = static_cast<size_t>(w * h);
    return {{0, 2 * w, static_cast<int32_t>(2 * w), height},
            {2 * plane, w, width, height},
            {3 * plane, w, width, height}};
  }
  if (format == kGray) return {{0, w, width, height}};
  if (format == kYuv444p) {
    const size_t plane = static_cast<size_t>(w * h);
    return {{0, w, width, height}, {plane, w, width, height}, {2 * plane, w, width, height}};
  }
  const FormatInfo &f = *FindFormat(format);
  std::vector<PlaneLayout> planes;
  size_t offset = 0;
  for (int p = 0; p < f.planes; ++p) {
    const int64_t rowBytes = PlaneRowBytes(f, p, w);
    // ffmpeg's v210 rows: whole groups of 48 pixels, 128 bytes each.
    const int64_t pitch = f.packing == Packing::V210 ? (w + 47) / 48 * 128 : rowBytes;
    const int64_t rows = PlaneRows(f, p, h);
    planes.push_back({offset, pitch, static_cast<int32_t>(rowBytes), static_cast<int32_t>(rows)});
    offset += static_cast<size_t>(pitch * rows);
  }
  return planes;
}

size_t FrameBytes(Format format, int32_t width, int32_t height) {
  size_t bytes = 0;
  for (const PlaneLayout &plane : Planes(format, width, height))
    bytes += static_cast<size_t>(plane.pitch) * plane.rows;
  return bytes;
}

std::string CheckSize(int32_t width, int32_t height) {
  // Odd widths and heights are the library's to convert or not: the engine
  // tries each conversion at the frame's shape.
  if (width <= 0 || height <= 0) return "the size must be positive";
  if (static_cast<int64_t>(width) * height * 8 > std::numeric_limits<int32_t>::max())
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
