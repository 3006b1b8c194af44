// Writes docs/api.md from the slot lists of the public headers: every slot of
// the nine sub-tables with its C signature, and the meaning and values of every
// option argument. An option name the lists use and this program does not
// describe is an error, so the document covers every slot there is.
//
//   tqcs_api_doc FILE           writes FILE
//   tqcs_api_doc --check FILE   exits 1 when FILE differs from what would be written
#include <TQColorSpace/TQColorSpace.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "doc_file.hpp"

namespace {

struct Slot {
  int number;
  const char *name;
  const char *returns;
  const char *params;  // the parameter list without its parentheses, macros expanded
};

#define TQCS_TEXT(...) #__VA_ARGS__
#define TQCS_SLOT(n, name, ret, params) {(n), #name, #ret, TQCS_TEXT params},

struct Table {
  const char *title;
  const char *type;
  const char *member;
  std::vector<Slot> slots;
};

const Table kTables[] = {
    {"General video operations", "TCS_GeneralTable", "pGeneral", {TCS_GENERAL_SLOTS(TQCS_SLOT)}},
    {"RGB32 source", "TCS_RGB32Table", "pRGB32", {TCS_RGB32_SLOTS(TQCS_SLOT)}},
    {"RGB24 source", "TCS_RGB24Table", "pRGB24", {TCS_RGB24_SLOTS(TQCS_SLOT)}},
    {"YUVA source", "TCS_YUVATable", "pYUVA", {TCS_YUVA_SLOTS(TQCS_SLOT)}},
    {"YUV16 (packed 4:2:2) source", "TCS_YUV16Table", "pYUV16", {TCS_YUV16_SLOTS(TQCS_SLOT)}},
    {"Planar YUV 4:2:2 source", "TCS_YUV422Table", "pYUV422", {TCS_YUV422_SLOTS(TQCS_SLOT)}},
    {"Planar YUV 4:2:0 source", "TCS_YUV420Table", "pYUV420", {TCS_YUV420_SLOTS(TQCS_SLOT)}},
    {"Packed YUV 4:4:4 source", "TCS_YUVTable", "pYUV", {TCS_YUV_SLOTS(TQCS_SLOT)}},
    {"Row kernels", "TCS_KernelTable", "pKernel", {TCS_KERNEL_SLOTS(TQCS_SLOT)}},
};

struct Option {
  std::string_view name;
  const char *meaning;
};

// Every argument that is neither a buffer (a pointer), a pitch, nor a size.
constexpr Option kOptions[] = {
    {"matrix",
     "Colour matrix selector: 0 HD (`TCS_MATRIX_HD`), 1 SD (`TCS_MATRIX_SD`), 3 UHD "
     "(`TCS_MATRIX_UHD`). Every value below 4 passes the drivers' check; 2 and negative values "
     "select no coefficient set, and a conversion that needs one then writes nothing. The RGB to "
     "planar 4:2:2 drivers (`TCS_RGB24_2_YUV422_*`, `TCS_RGB32_2_YUV422_*`) know only 0 and 1 and "
     "write nothing for 3 (kept for compatibility); the packed 4:2:2 drivers know all three, and "
     "`TCS_YUV16_2_YUV422_*` repacks their result losslessly."},
    {"channelOrder",
     "Byte order of the RGB side: 0 R first (R,G,B or R,G,B,A in memory: format codes 1 and 4); "
     "non-zero B first (B,G,R or B,G,R,A: codes 0 and 3)."},
    {"packingOrder",
     "Byte order of packed 4:2:2: 0 YUYV (Y0 U Y1 V, format code 6); non-zero UYVY (U Y0 V Y1, "
     "code 7)."},
    {"alpha",
     "The value written to every alpha byte of a destination whose source has no alpha (0 to "
     "255; 255 is opaque)."},
    {"swap",
     "0 keeps the order of the three colour bytes; non-zero exchanges bytes 0 and 2 (red and "
     "blue)."},
    {"channel",
     "The byte of each 32-bit pixel copied into the 8-bit plane: 0 to 3 (3 is alpha in every "
     "32-bit code); any other value converts nothing."},
    {"bytesPerPixel",
     "Bytes a pixel of the rows split or composed: each row is width x bytesPerPixel bytes, "
     "whatever the format."},
    {"format",
     "A format code, 0 to 10 (`TCS_FORMAT_*`). The range operations (general slots 14 and 15) "
     "scale codes 0, 1, 2, 3, 4, 6 and 7 and leave 5 (`YUV`), 8 and 9 (planar) and 10 (`Alpha`) "
     "untouched: a host scales those itself (README, \"Ranges\")."},
    {"dstFormat", "Format code of the destination, 0 to 10 (`TCS_FORMAT_*`)."},
    {"srcFormat", "Format code of the source, 0 to 10 (`TCS_FORMAT_*`)."},
    {"colour",
     "One colour in the byte order of code 0: R in bits 0-7, G in 8-15, B in 16-23, bits 24-31 "
     "passed through."},
    {"interlaced",
     "0: the chroma rows of the whole frame are resampled together; non-zero: each field's rows "
     "on their own."},
    {"secondField",
     "0: the chroma of the first field (frame rows 0, 2, 4 ...); non-zero: of the second field "
     "(rows 1, 3, 5 ...), sited towards its lower row."},
    {"flip", "0: row 0 is the top row; non-zero turns the picture upside down."},
};

// Sizes, described once in the introduction.
constexpr std::string_view kSizes[] = {"width", "height", "count"};

// The parameter names of "T a, U *b, ..." that are options.
std::vector<std::string> OptionNames(std::string_view params) {
  std::vector<std::string> names;
  while (!params.empty()) {
    const size_t comma = params.find(',');
    std::string_view param = params.substr(0, comma);
    params = comma == std::string_view::npos ? "" : params.substr(comma + 1);
    const size_t space = param.find_last_of(" *");
    if (space == std::string_view::npos || param.find('*') != std::string_view::npos) continue;
    const std::string_view name = param.substr(space + 1);
    if (name.ends_with("Pitch")) continue;
    bool size = false;
    for (std::string_view s : kSizes) size = size || name == s;
    if (!size) names.emplace_back(name);
  }
  return names;
}

const Option *Describe(std::string_view name) {
  for (const Option &option : kOptions)
    if (option.name == name) return &option;
  return nullptr;
}

bool Generate(std::string &text) {
  std::ostringstream out;
  out << "# TQColorSpace API: every table slot\n\n"
         "Generated by `tqcs_api_doc` from the slot lists of "
         "`include/TQColorSpace/TQDriverSlots.h` and `TQKernelSlots.h`; a test fails when this "
         "file differs from what the headers give.\n\n"
         "A host reaches each sub-table through the root structure, `TCS_GetAPIStuPtr()->pX`, "
         "and calls its members by name. Arguments come in this order: destination buffers, "
         "source buffers (each a pointer to row 0 and a signed byte pitch; planar images as Y, "
         "U, V; field 1 before field 2), then `width` and `height` of the whole frame in "
         "pixels (kernels: `count`, the pixels of one row), then the options, then `flip`. "
         "Buffer sizes are set out at the top of `TQColorSpace.h`.\n\n"
         "## Options\n\n"
         "| argument | meaning and values |\n|---|---|\n";
  for (const Option &option : kOptions)
    out << "| `" << option.name << "` | " << option.meaning << " |\n";
  bool complete = true;
  int index = 0;
  for (const Table &table : kTables) {
    out << "\n## Sub-table " << index++ << ": " << table.title << " (`" << table.type << "`, `api->"
        << table.member << "`)\n\n";
    for (const Slot &slot : table.slots) {
      out << "- " << slot.number << ": `" << slot.returns << " " << slot.name << "(" << slot.params
          << ")`";
      if (std::string_view(slot.name).find("_Reserved") != std::string_view::npos)
        out << " (the shared empty function)";
      out << "\n";
      for (const std::string &name : OptionNames(slot.params))
        if (Describe(name) == nullptr) {
          std::cerr << "tqcs_api_doc: option '" << name << "' of " << slot.name
                    << " is not described\n";
          complete = false;
        }
    }
  }
  text = out.str();
  return complete;
}

}  // namespace

int main(int argc, char **argv) {
  return tqcs::tools::WriteOrCheckDoc(argc, argv, "tqcs_api_doc", "the slot lists", "api_doc",
                                      Generate);
}
