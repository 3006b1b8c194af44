// tqcs: converts frame files through TQColorSpace, demonstrates and measures
// it, and reports what the library chose on this machine. It reaches the
// library only through its public headers and typed tables.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "cli.hpp"

namespace tqcs {
namespace {

struct Tier {
  const char *name;
  const char *detail;
};

// Levels 0 and above 4 get the portable kernels.
Tier TierOf(uint32_t level) {
  static constexpr Tier kTiers[] = {
      {"portable", "portable reference kernels"},
      {"sse2", "SSE2 kernels"},
      {"ssse3", "SSSE3 repacking kernels (slots 7, 8, 10) over SSE2"},
      {"ssse3", "SSSE3 repacking kernels (slots 7, 8, 10) over SSE2"},
      {"sse41", "SSE4.1 kernel (slot 144), SSSE3 (slots 7, 8, 10) over SSE2"}};
  return kTiers[level <= 4 ? level : 0];
}

int RunInfo() {
  const uint32_t level = TCB_GetCPUInsHigh();
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  const int32_t check = TCS_CheckAPIStu(api);
  std::printf("processor level: %u (detected %u)\n", level, TCB_GetCPUInsHighDetected());
  std::printf("kernel tier:     %s (%s)\n", TierOf(level).name, TierOf(level).detail);
  std::printf("load state:      %s (check result %d)\n",
              check == TCS_CHECK_OK ? "loaded" : "incomplete", check);
  if (api == nullptr) return 1;
  struct Table {
    const char *name;
    const void *table;
    int32_t slots;
  };
  const Table tables[] = {{"general", api->pGeneral, TCS_GENERAL_SLOT_COUNT},
                          {"RGB32 source", api->pRGB32, TCS_RGB32_SLOT_COUNT},
                          {"RGB24 source", api->pRGB24, TCS_RGB24_SLOT_COUNT},
                          {"YUVA source", api->pYUVA, TCS_YUVA_SLOT_COUNT},
                          {"YUV16 source", api->pYUV16, TCS_YUV16_SLOT_COUNT},
                          {"YUV422 source", api->pYUV422, TCS_YUV422_SLOT_COUNT},
                          {"YUV420 source", api->pYUV420, TCS_YUV420_SLOT_COUNT},
                          {"YUV source", api->pYUV, TCS_YUV_SLOT_COUNT},
                          {"kernels", api->pKernel, TCS_KERNEL_SLOT_COUNT}};
  std::printf("tables:\n");
  int32_t total = 0;
  for (int i = 0; i < 9; ++i) {
    int32_t filled = 0;
    const auto *slots = static_cast<void *const *>(tables[i].table);
    for (int32_t s = 0; slots != nullptr && s < tables[i].slots; ++s) filled += slots[s] != nullptr;
    total += filled;
    std::printf("  %d %-14s %3d of %3d slots filled\n", i, tables[i].name, filled, tables[i].slots);
  }
  std::printf("  %d slots in all\n", total);
  return check == TCS_CHECK_OK ? 0 : 1;
}

constexpr const char kUsage[] =
    "usage: tqcs COMMAND [options]\n"
    "\n"
    "commands:\n"
    "  convert IN OUT   convert raw, .y4m or .png frames\n"
    "  demo             draw a test pattern, convert it through every format, write PNGs\n"
    "  bench            frames per second and GB/s of every conversion\n"
    "  info             processor level, kernel tier and load state\n"
    "  compare A B      largest and mean difference of two files, per channel\n"
    "\n"
    "formats (--from/--to):\n%s"
    "matrices (--matrix): sd (BT.601), hd (BT.709), uhd (BT.2020), also named bt601,\n"
    "  bt709 and bt2020; default hd from 1280x720 up, sd below\n"
    "\n"
    "examples:\n"
    "  tqcs convert in.png out.y4m                  # limited-range 4:2:0, tagged\n"
    "  tqcs demo --out demo-out\n"
    "  tqcs bench --size 1280x720 --from yuyv422 --to bgra --threads 2\n"
    "run 'tqcs COMMAND --help' for the options of one command.\n";

constexpr const char kConvertHelp[] =
    "usage: tqcs convert IN OUT [options]\n"
    "\n"
    "Files: .y4m (YUV4MPEG2: C420*, C422, C444, Cmono at 8 bits, C420p10 and C422p10 with\n"
    "10-bit samples in the low bits of 16, many frames, any width and height; interlace,\n"
    "chroma siting and XCOLORRANGE honoured), .png (8-bit RGB or RGBA; several frames\n"
    "written to OUT.png go to OUT_0001.png, OUT_0002.png, ...), anything else is raw\n"
    "frames back to back (v210 rows padded to 48 pixels, as ffmpeg's). Prints one line:\n"
    "what was read and written.\n"
    "\n"
    "  --from FMT         format of a raw IN (a .y4m or .png says its own)\n"
    "  --to FMT           format of OUT; for .y4m the chroma layout: yuv420p, yuv422p,\n"
    "                     yuv444p, gray, yuv420p10le or yuv422p10le (default: the\n"
    "                     input's chroma layout and depth, 4:2:0 for RGB); for .png\n"
    "                     rgb24, rgba, gray or alpha (default: rgba when the input has\n"
    "                     alpha)\n"
    "  --size WxH         frame size of a raw IN (the whole frame with --fields compose)\n"
    "  --matrix M         sd, hd or uhd (or bt601, bt709, bt2020; default hd from\n"
    "                     1280x720 up, sd below)\n"
    "  --in-range R       full or limited: the range of IN's YUV samples (default: the\n"
    "                     Y4M tag; limited for a Y4M without one, full for raw)\n"
    "  --out-range R      the range OUT's YUV samples are converted to (default: the\n"
    "                     input's between YUV layouts; else limited for .y4m, full raw)\n"
    "  --range R          both, where IN states no range of its own\n"
    "  --start K          skip the first K frames\n"
    "  --frames N         convert N frames at most\n"
    "  --flip             turn the picture upside down\n"
    "  --fields split     write OUT as two field files OUT.f1.EXT, OUT.f2.EXT\n"
    "  --fields compose   read IN.f1.EXT and IN.f2.EXT as the fields of one frame\n"
    "  --interlace I      p, t or b: how the frames are interlaced (default: the Y4M's\n"
    "                     field; t for composed fields; p otherwise); 4:2:0 chroma is\n"
    "                     sited on the frame for p, per field for t and b\n"
    "  --threads N        frames converted at once (default: number of cores)\n"
    "\n"
    "formats:\n%s"
    "examples:\n"
    "  tqcs convert photo.png photo.y4m --matrix hd\n"
    "  tqcs convert cam.yuv cam.y4m --from uyvy422 --size 1920x1080 --threads 4\n"
    "  tqcs convert clip.y4m frame.png              # one PNG per frame: frame_0001.png, ...\n"
    "  tqcs convert clip.y4m still.png --start 2 --frames 1\n"
    "  tqcs convert clip.y4m full.y4m --out-range full\n"
    "  tqcs convert in.y4m out.rgb --to bgra --flip\n"
    "  tqcs convert frame.yuv fld.yuv --from yuv420p --size 720x576 --fields split\n"
    "  tqcs convert cap.v210 cap.y4m --from v210 --size 1920x1080\n"
    "  tqcs convert film.yuv film.y4m --from yuv420p10le --size 1920x1080 --interlace t\n";

constexpr const char kDemoHelp[] =
    "usage: tqcs demo [--out DIR] [--size WxH] [--matrix M]\n"
    "\n"
    "Draws a test pattern (colour bars, ramps, a zone plate, an alpha ramp), converts it\n"
    "to every format (the deep-colour ones beside the 8-bit ones) and back, and through\n"
    "every pair of format codes the dispatcher routes and back, writes a PNG of each\n"
    "format's round trip and contact-sheet.png into DIR (default ./tqcs-demo), and prints\n"
    "the round-trip error per format (max and mean per channel) and timings. Formats of\n"
    "pixel groups the width does not divide (v210: 6) are listed and left out.\n"
    "examples:\n"
    "  tqcs demo --out demo-out --size 640x360\n";

constexpr const char kBenchHelp[] =
    "usage: tqcs bench [--size WxH] [--reps N] [--threads N] [--from FMT] [--to FMT]\n"
    "\n"
    "Converts frames of the given size (default 1920x1080) through every routed pair of\n"
    "the dispatcher's codes 0 to 10, or, when --from or --to names one, of every library\n"
    "format (deep colour included). After three untimed runs it times at least N runs\n"
    "(default 15) and at least 0.25 s, and prints the median as frames per second and GB/s\n"
    "(source plus destination bytes), the number of runs and their spread (the middle\n"
    "half of the runs, in per cent of the median).\n"
    "examples:\n"
    "  tqcs bench --from rgb24 --to yuv420p --threads 2\n"
    "  tqcs bench --from v210 --to yuv422p16le --size 1920x1080\n";

constexpr const char kInfoHelp[] =
    "usage: tqcs info\n"
    "Prints the processor level, the kernel tier chosen for it (portable, sse2, ssse3,\n"
    "sse41), the load state and the slots of each table. TCB_CPU_LEVEL forces a level.\n"
    "examples:\n"
    "  TCB_CPU_LEVEL=0 tqcs info\n";

constexpr const char kCompareHelp[] =
    "usage: tqcs compare A B [--from FMT --size WxH] [--max N]\n"
    "Prints the largest and mean difference per channel (per plane for planar layouts);\n"
    "exits with status 2 when a difference exceeds --max.\n"
    "examples:\n"
    "  tqcs compare a.png b.png --max 2\n"
    "  tqcs compare a.yuv b.yuv --from yuv420p --size 720x576\n";

std::string FormatTable() {
  std::string table;
  for (const Format format : AllFormats()) {
    char line[200];
    std::snprintf(line, sizeof line, "  %-17s %s\n", Info(format).name,
                  Info(format).description.c_str());
    table += line;
  }
  return table;
}

void PrintHelp(const char *text) { std::printf(text, FormatTable().c_str()); }

}  // namespace
}  // namespace tqcs

int main(int argc, char **argv) {
  using namespace tqcs;
  if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 ||
      std::strcmp(argv[1], "help") == 0) {
    PrintHelp(kUsage);
    return argc < 2 ? 1 : 0;
  }
  struct Command {
    const char *name;
    const char *help;
    std::span<const OptionDef> options;
    int (*run)(const Args &);
  };
  static constexpr OptionDef kConvertOptions[] = {
      {"from", true},   {"to", true},        {"size", true},      {"matrix", true},
      {"range", true},  {"in-range", true},  {"out-range", true}, {"flip", false},
      {"fields", true}, {"interlace", true}, {"threads", true},   {"frames", true},
      {"start", true}};
  static constexpr OptionDef kDemoOptions[] = {{"out", true}, {"size", true}, {"matrix", true}};
  static constexpr OptionDef kBenchOptions[] = {{"size", true}, {"reps", true}, {"threads", true},
                                                {"from", true}, {"to", true},   {"matrix", true}};
  static constexpr OptionDef kCompareOptions[] = {{"from", true}, {"size", true}, {"max", true}};
  const Command commands[] = {{"convert", kConvertHelp, kConvertOptions, RunConvert},
                              {"demo", kDemoHelp, kDemoOptions, RunDemo},
                              {"bench", kBenchHelp, kBenchOptions, RunBench},
                              {"info", kInfoHelp, {}, [](const Args &) { return RunInfo(); }},
                              {"compare", kCompareHelp, kCompareOptions, RunCompare}};
  for (const Command &command : commands) {
    if (std::strcmp(argv[1], command.name) != 0) continue;
    std::string error;
    const auto args = ParseArgs(std::span<char *const>(argv + 2, static_cast<size_t>(argc - 2)),
                                command.options, error);
    if (!args) return Fail(error + " (see tqcs " + command.name + " --help)");
    if (args->Has("help")) {
      PrintHelp(command.help);
      return 0;
    }
    return command.run(*args);
  }
  return Fail(std::string("unknown command '") + argv[1] + "' (see tqcs --help)");
}
