// Writes docs/formats.md from the library's format table (src/base/formats.hpp)
// and the kernel slot list of the public header: the code table, every layout
// byte by byte, the kernel slots that read or write it.
//
//   tqcs_formats_doc FILE           writes FILE
//   tqcs_formats_doc --check FILE   exits 1 when FILE differs from what would be written
#include <TQColorSpace/TQColorSpace.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/formats.hpp"
#include "doc_file.hpp"
#include "kernels/chroma_progressive.hpp"
#include "video/line_chains.hpp"
#include "video/routes.hpp"

namespace {

using tqcs::FormatInfo;
using tqcs::Packing;
using tqcs::Siting;

struct Kernel {
  int slot;
  std::string_view name;
};
#define TQCS_KERNEL(n, name, ret, params) {(n), #name},
const Kernel kKernels[] = {TCS_KERNEL_SLOTS(TQCS_KERNEL)};
#undef TQCS_KERNEL

std::vector<std::string_view> Components(std::string_view memory) {
  std::vector<std::string_view> parts;
  while (!memory.empty()) {
    const size_t space = memory.find(' ');
    if (memory.substr(0, space) != "|") parts.push_back(memory.substr(0, space));
    memory = space == std::string_view::npos ? std::string_view{} : memory.substr(space + 1);
  }
  return parts;
}

const char *SitingText(const FormatInfo &f) {
  switch (f.siting) {
    case Siting::Field:
      return "per field: each field's chroma rows are its own, filtered within the field "
             "(interlaced material)";
    case Siting::Frame:
      return "on the frame: horizontally co-sited with the even luma column, vertically centred "
             "between the two frame rows a chroma row covers (progressive material)";
    case Siting::None:
      break;
  }
  if (f.chromaShiftX == 2) return "horizontally co-sited with the first of every four luma columns";
  return f.chromaShiftX != 0 ? "horizontally co-sited with the even luma column" : "every pixel";
}

std::string SampleText(const FormatInfo &f) {
  if (f.sampleBytes == 2)
    return "16-bit little-endian samples (low byte first); YUV samples hold 10 significant bits "
           "in bits 6-15 (value = sample >> 6, bits 0-5 zero when written)";
  return "8-bit samples";
}

// The bytes of one pixel, or of one pair for 4:2:2, of a packed layout.
std::string PackedBytes(const FormatInfo &f) {
  std::ostringstream out;
  const auto parts = Components(f.memory);
  const int n = f.sampleBytes;
  out << (f.chromaShiftX != 0 ? "Each pixel pair is " : "Each pixel is ") << parts.size() * n
      << " bytes:";
  for (size_t i = 0; i < parts.size(); ++i) {
    out << (i ? "," : "") << " byte" << (n == 2 ? "s " : " ") << i * n;
    if (n == 2) out << "-" << i * n + 1;
    out << " " << parts[i];
  }
  out << ".";
  if (f.chromaShiftX != 0) out << " Y0 is the even pixel, Y1 the odd one; U and V belong to both.";
  return out.str();
}

std::string Memory(const FormatInfo &f) {
  const std::string sub = f.chromaShiftX == 2 ? "a quarter" : "half";
  switch (f.packing) {
    case Packing::Packed:
      return PackedBytes(f) + " Plane 0 only.";
    case Packing::Alpha:
      return "One byte a pixel, the key (alpha) value. Plane 0 only.";
    case Packing::Planar:
      return "Plane 0 holds Y, one sample a pixel; plane 1 U and plane 2 V, " + sub + " the width" +
             (f.chromaShiftY ? ", and half the rows (chroma row k covers frame rows "
                               "2k and 2k + 1)"
                             : "") +
             ". The planes need not share a buffer; each has its own pitch.";
    case Packing::SemiPlanar:
      return "Plane 0 holds Y, one sample a pixel; plane 1 holds U and V interleaved, U first, " +
             sub + " the width in pairs (a chroma row of w pixels has w / 2 pairs, w samples)" +
             (f.chromaShiftY ? ", and half the rows" : "") + ".";
    case Packing::V210:
      return "Six pixels are four little-endian 32-bit words (16 bytes), three 10-bit samples a "
             "word in bits 0-9, 10-19 and 20-29, bits 30-31 zero: (U0 Y0 V0) (Y1 U1 Y2) "
             "(V1 Y3 U2) (Y4 V2 Y5). Read as one stream the samples run U Y V Y, three to a "
             "word. Plane 0 only. ffmpeg's raw v210 pads every row to a multiple of 48 pixels "
             "(128 bytes): give such a file the pitch ((w + 47) / 48) * 128.";
    case Packing::EightPlus2:
      return "The samples of a row in Y0 U Y1 V order (two a pixel) go in runs of 32: first the "
             "32 high bytes (the 10-bit value >> 2), then 8 bytes of 2-bit low parts, sample k's "
             "at bit "
             "2 (k % 4) of low byte k / 4. A last run of n < 32 samples has n high bytes and "
             "ceil(n / 4) low bytes. Plane 0 only.";
    case Packing::Reserved:
      break;
  }
  return "";
}

std::string Widths(const FormatInfo &f) {
  if (f.widthMultiple <= 1)
    return f.chromaShiftX != 0 ? "any width; an odd last pixel as the header describes"
                               : "any width";
  return "multiples of " + std::to_string(f.widthMultiple) + "; other widths are refused";
}

std::string Kernels(const FormatInfo &f) {
  std::string out;
  for (const Kernel &k : kKernels) {
    bool hit = false;
    for (std::string_view pattern : f.kernels)
      hit |= !pattern.empty() && tqcs::MatchesKernel(pattern, k.name);
    if (!hit) continue;
    if (!out.empty()) out += ", ";
    out += std::to_string(k.slot);
    out += " `";
    out += k.name;
    out += '`';
  }
  return out.empty() ? "none" : out;
}

std::string Code(std::string_view text) {
  std::string out(1, '`');
  out += text;
  out += '`';
  return out;
}

// The frame-sited chroma routines of the layout's sample size (they stand in
// no slot).
std::string Centred(const FormatInfo &f) {
  struct Routine {
    std::string_view name;
    size_t bytes;
  };
#define TQCS_ROUTINE(name, shape, T, edge) {#name, sizeof(T)},
  constexpr Routine kRoutines[] = {TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_ROUTINE)};
#undef TQCS_ROUTINE
  std::string out;
  for (const Routine &r : kRoutines) {
    if (r.bytes != static_cast<size_t>(f.sampleBytes)) continue;
    if (!out.empty()) out += ", ";
    out += Code(r.name);
  }
  return out;
}

// A table cell: a plane separator `|` escaped.
std::string Cell(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (c == '|') out += '\\';
    out += c;
  }
  return out;
}

// What a pair of codes converts through: the 8-bit dispatcher's route for
// codes 0 to 10, the chain of row kernels otherwise.
std::string RouteCell(int32_t s, int32_t d) {
  namespace v = tqcs::video;
  if (v::Known(s) && v::Known(d)) {
    switch (v::kRoutes[s][d].kind) {
      case v::Kind::kRefuse:
        return "";
      case v::Kind::kCopy:
        return "=";
      default:
        return "d";
    }
  }
  const auto &chain = v::lines::ChainOfCodes(s, d);
  if (!chain) return "";
  if (chain->length == 0) return "=";
  return std::to_string(chain->length) + (chain->matrix ? "m" : "");
}

void RouteMatrix(std::ostringstream &out) {
  out << "\n## Route matrix\n\n"
         "Source code by row, destination code by column. `=`: the rows are copied (or split "
         "and composed as they stand); `d`: the dispatcher's route between codes 0 to 10 (its "
         "drivers and operations); a number: that many row kernels a row, through one scratch "
         "row fewer, `m` where one of them converts between YUV and RGB with the matrix "
         "selector's coefficients; empty: no conversion, the forms return 0. 4:2:0 codes "
         "convert as their 4:2:2 layout, their chroma widened or merged on the way (per field "
         "or centred on the frame, as the code says) unless both sides share their chroma "
         "rows. Codes 2 (YUVA), 5 (packed 4:4:4) and 10 (key) convert among codes 0 to 10 only; "
         "4:1:1 converts to RGB only.\n\n|  |";
  std::vector<int32_t> codes;
  for (const FormatInfo &f : tqcs::kFormats)
    if (f.packing != Packing::Reserved) codes.push_back(f.code);
  for (int32_t d : codes) out << " " << d << " |";
  out << "\n|---:|";
  for (size_t i = 0; i < codes.size(); ++i) out << ":-:|";
  out << "\n";
  for (int32_t s : codes) {
    out << "| **" << s << "** |";
    for (int32_t d : codes) out << " " << RouteCell(s, d) << " |";
    out << "\n";
  }
}

std::string Generate() {
  std::ostringstream out;
  out << "# Formats\n\n"
         "<!-- Generated by tools/formats_doc.cpp from src/base/formats.hpp: build the target "
         "formats_doc to rewrite it; the test formats_doc fails when it is out of date. -->\n\n"
         "The descriptor forms (`TCS_ColorConvFrameEx`, `TCS_ColorConvSplitEx`, "
         "`TCS_ColorConvComposeEx`) take the format codes below in `TCS_FrameDesc::format`. Codes "
         "0 to 10 are those of the dispatcher. A frame's planes are `TCS_FrameDesc::plane[0..3]`, "
         "each a pointer to row 0 and a signed byte pitch whose magnitude is at least the row's "
         "bytes. \"Bits\" and \"class\" are what kernel slots 0 (`GetFormatBitsPerPixel`) and 1 "
         "(`GetFormatClass`) answer for the code, as they always have: for a planar layout the "
         "bits are its luma sample's where they are known, 0 otherwise.\n\n"
         "## Codes\n\n"
         "| Code | Name | Memory | Planes | Chroma | Widths | Bits | Class | ffmpeg |\n"
         "|---:|---|---|---:|---|---|---:|---:|---|\n";
  for (const FormatInfo &f : tqcs::kFormats) {
    if (f.packing == Packing::Reserved) continue;
    const char *chroma = f.chromaShiftX == 0         ? "4:4:4"
                         : f.chromaShiftX == 2       ? "4:1:1"
                         : f.chromaShiftY == 0       ? "4:2:2"
                         : f.siting == Siting::Frame ? "4:2:0 frame"
                                                     : "4:2:0 field";
    out << "| " << f.code << " | `TCS_FORMAT_" << f.name << "` | " << Cell(f.memory) << " | "
        << int{f.planes} << " | " << (f.packing == Packing::Alpha ? "-" : chroma) << " | "
        << (f.widthMultiple <= 1 ? std::string("any") : "x " + std::to_string(f.widthMultiple))
        << " | " << f.bitsPerPixel << " | " << f.formatClass << " | "
        << (f.ffmpeg.empty() ? "-" : Code(f.ffmpeg)) << " |\n";
  }
  out << "\nReserved (no layout; the descriptor forms return 0 for them):";
  const char *separator = " ";
  for (const FormatInfo &f : tqcs::kFormats) {
    if (f.packing != Packing::Reserved) continue;
    out << separator << f.code;
    if (f.bitsPerPixel != 0) out << " (" << f.bitsPerPixel << " bits)";
    separator = ", ";
  }
  out << ".\n\n## Layouts\n";
  for (const FormatInfo &f : tqcs::kFormats) {
    if (f.packing == Packing::Reserved) continue;
    out << "\n### " << f.code << " `TCS_FORMAT_" << f.name << "`"
        << (f.sourceOnly ? " (a source only)" : "") << "\n\n";
    out << "- Memory: " << Memory(f) << "\n";
    if (f.packing != Packing::V210 && f.packing != Packing::EightPlus2)
      out << "- Samples: " << SampleText(f) << ".\n";
    out << "- A 1920 x 1080 frame:";
    for (int plane = 0; plane < f.planes; ++plane)
      out << (plane ? "," : "") << " plane " << plane << " " << tqcs::PlaneRowBytes(f, plane, 1920)
          << " bytes x " << tqcs::PlaneRows(f, plane, 1080) << " rows";
    out << ".\n- Widths: " << Widths(f) << ".\n";
    if (f.packing != Packing::Alpha) out << "- Chroma siting: " << SitingText(f) << ".\n";
    if (!f.ffmpeg.empty())
      out << "- ffmpeg: `" << f.ffmpeg << "`"
          << (f.sampleBytes == 2 && f.packing != Packing::Packed
                  ? " holds the same memory (its samples here with 10 significant bits)"
                  : " holds the same memory")
          << (f.siting == Siting::Field ? "; ffmpeg sites 4:2:0 chroma on the frame" : "") << ".\n";
    out << "- Kernel slots: " << Kernels(f) << ".\n";
    if (f.siting == Siting::Frame) out << "- Frame-sited chroma routines: " << Centred(f) << ".\n";
  }
  RouteMatrix(out);
  return out.str();
}

}  // namespace

int main(int argc, char **argv) {
  return tqcs::tools::WriteOrCheckDoc(argc, argv, "tqcs_formats_doc", "the format table",
                                      "formats_doc", [](std::string &text) {
                                        text = Generate();
                                        return true;
                                      });
}
