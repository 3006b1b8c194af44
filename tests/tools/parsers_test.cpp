// The tool's parsers: Y4M headers, size strings, format names, and the plan of
// dispatcher steps between format codes.
#include <gtest/gtest.h>

#include <type_traits>

#include "cli.hpp"
#include "engine.hpp"
#include "fileio.hpp"
#include "formats.hpp"

namespace tqcs {
namespace {

// A host sees the exported Q14 vectors read-only: writing one would change
// every later conversion.
#define TQCS_EXPECT_CONST(name) \
  static_assert(std::is_const_v<std::remove_extent_t<decltype(g_s##name)>>);
#define TQCS_EXPECT_CONST_STD(std) TCS_Q14_VECTORS(TQCS_EXPECT_CONST, std)
TCS_STANDARDS(TQCS_EXPECT_CONST_STD)

TEST(Y4mHeader, ReadsEveryField) {
  StreamInfo info;
  ASSERT_EQ(
      ParseY4mHeader("YUV4MPEG2 W720 H576 F25:1 It A16:15 C422 XCOLORRANGE=FULL XYSCSS=422", info),
      "");
  EXPECT_EQ(info.width, 720);
  EXPECT_EQ(info.height, 576);
  EXPECT_EQ(info.format, kYuv422p);
  EXPECT_EQ(info.interlace, 't');
  EXPECT_EQ(info.rate, "25:1");
  EXPECT_EQ(info.aspect, "16:15");
  EXPECT_EQ(info.range, Range::kFull);
}

TEST(Y4mHeader, DefaultsAndChromaNames) {
  StreamInfo info;
  ASSERT_EQ(ParseY4mHeader("YUV4MPEG2 W16 H8", info), "");
  EXPECT_EQ(info.format, kYuv420pFrame);
  EXPECT_EQ(info.interlace, 'p');
  EXPECT_FALSE(info.range.has_value());  // the caller takes it as limited
  for (const char *chroma : {"420", "420jpeg", "420mpeg2", "420paldv"}) {
    ASSERT_EQ(ParseY4mHeader(std::string("YUV4MPEG2 W16 H8 C") + chroma, info), "") << chroma;
    EXPECT_EQ(info.format, kYuv420pFrame);
  }
  ASSERT_EQ(ParseY4mHeader("YUV4MPEG2 W16 H8 C444 XCOLORRANGE=LIMITED", info), "");
  EXPECT_EQ(info.format, kYuv444p);
  EXPECT_EQ(info.range, Range::kLimited);
}

TEST(Y4mHeader, WrittenHeaderReadsBack) {
  StreamInfo out;
  out.format = kYuv444p;
  out.width = 64;
  out.height = 32;
  out.interlace = 'b';
  const std::string header = Y4mHeader(out, Range::kLimited);
  ASSERT_EQ(header.back(), '\n');
  StreamInfo in;
  ASSERT_EQ(ParseY4mHeader(header.substr(0, header.size() - 1), in), "");
  EXPECT_EQ(in.format, kYuv444p);
  EXPECT_EQ(in.width, 64);
  EXPECT_EQ(in.interlace, 'b');
  EXPECT_EQ(in.range, Range::kLimited);
}

TEST(Y4mHeader, RefusesMalformed) {
  const struct {
    const char *line;
    const char *problem;
  } cases[] = {{"YUV4MPEG W16 H8", "not a YUV4MPEG2 file"},
               {"YUV4MPEG2X W16 H8", "not a YUV4MPEG2 file"},
               {"YUV4MPEG2 W16", "no W or H"},
               {"YUV4MPEG2 W0 H8", "bad W0"},
               {"YUV4MPEG2 W16 H-8", "bad H-8"},
               {"YUV4MPEG2 W16 H8x", "bad H8x"},
               {"YUV4MPEG2 W16 H8 Iq", "bad Iq"},
               {"YUV4MPEG2 W16 H8 C420p12", "unsupported Y4M colour space C420p12"},
               {"YUV4MPEG2 W1 H8", "needs 2 pixels where chroma is halved"},
               {"YUV4MPEG2 W16 H8 Z1", "unknown field Z1"}};
  for (const auto &c : cases) {
    StreamInfo info;
    EXPECT_NE(ParseY4mHeader(c.line, info).find(c.problem), std::string::npos) << c.line;
  }
}

// 4:2:0 is read as the material is: interlaced (It, Ib) with chroma sited per
// field, progressive (Ip, none) on the frame; the 10-bit layouts hold their
// ten bits in the low bits of 16.
TEST(Y4mHeader, SitingFromTheInterlaceTagAndTenBits) {
  const struct {
    const char *line;
    int32_t code;
  } cases[] = {
      {"YUV4MPEG2 W16 H8 C420 It", TCS_FORMAT_YUV420},
      {"YUV4MPEG2 W16 H8 Ib C420mpeg2", TCS_FORMAT_YUV420},
      {"YUV4MPEG2 W16 H8 Ip C420", TCS_FORMAT_YUV420_FRAME},
      {"YUV4MPEG2 W15 H8 Ip C420", TCS_FORMAT_YUV420},  // the frame-sited code's widths are even
      {"YUV4MPEG2 W16 H8 C420p10", TCS_FORMAT_YUV420_10BIT_LOW_FRAME},
      {"YUV4MPEG2 W16 H8 It C420p10", TCS_FORMAT_YUV420_10BIT_LOW},
      {"YUV4MPEG2 W16 H8 It C422p10", TCS_FORMAT_YUV422_10BIT_LOW}};
  for (const auto &c : cases) {
    StreamInfo info;
    ASSERT_EQ(ParseY4mHeader(c.line, info), "") << c.line;
    EXPECT_EQ(info.format, c.code) << c.line;
    EXPECT_TRUE(Info(info.format).lowBits || !Info(info.format).deep) << c.line;
  }
  StreamInfo out;
  out.format = static_cast<Format>(TCS_FORMAT_YUV422_10BIT_LOW);
  out.width = out.height = 8;
  EXPECT_NE(Y4mHeader(out, Range::kLimited).find(" C422p10 "), std::string::npos);
}

TEST(SizeString, ParsesAndRefuses) {
  const auto size = ParseSize("1920x1080");
  ASSERT_TRUE(size);
  EXPECT_EQ(size->width, 1920);
  EXPECT_EQ(size->height, 1080);
  for (const char *bad : {"", "1920", "1920x", "x1080", "0x10", "-4x4", "4x-4", "4x4x4", "4X4",
                          " 4x4", "4x4 ", "99999x99999"})
    EXPECT_FALSE(ParseSize(bad)) << '"' << bad << '"';
}

TEST(FormatNames, MapToLibraryCodes) {
  const struct {
    const char *name;
    int32_t code;
  } names[] = {{"bgra", TCS_FORMAT_RGB32},
               {"rgba", TCS_FORMAT_RGB32_SWAP},
               {"yuva", TCS_FORMAT_YUVA},
               {"bgr24", TCS_FORMAT_RGB24},
               {"rgb24", TCS_FORMAT_RGB24_SWAP},
               {"yuv444packed", TCS_FORMAT_YUV},
               {"yuyv422", TCS_FORMAT_YUV16},
               {"uyvy422", TCS_FORMAT_YUV16_SWAP},
               {"yuv422p", TCS_FORMAT_YUV422},
               {"yuv420p", TCS_FORMAT_YUV420_FRAME},
               {"alpha", TCS_FORMAT_ALPHA},
               {"v210", TCS_FORMAT_V210},
               {"y210le", TCS_FORMAT_YUV16_10BIT},
               {"yuv422p16le", TCS_FORMAT_YUV422_10BIT},
               {"yuv420p16le", TCS_FORMAT_YUV420_10BIT_FRAME},
               {"yuv422p10le", TCS_FORMAT_YUV422_10BIT_LOW},
               {"yuv420p10le", TCS_FORMAT_YUV420_10BIT_LOW_FRAME},
               {"p010le", TCS_FORMAT_P010_FRAME},
               {"p210le", TCS_FORMAT_P210},
               {"nv12", TCS_FORMAT_NV12_FRAME},
               {"nv16", TCS_FORMAT_NV16},
               {"rgb48le", TCS_FORMAT_RGB48_SWAP},
               {"bgr48le", TCS_FORMAT_RGB48},
               {"rgba64le", TCS_FORMAT_RGB64_SWAP},
               {"bgra64le", TCS_FORMAT_RGB64},
               {"yuv411p", TCS_FORMAT_YUV411}};
  for (const auto &n : names) {
    const auto format = FormatByName(n.name);
    ASSERT_TRUE(format) << n.name;
    EXPECT_EQ(*format, n.code) << n.name;
    EXPECT_STREQ(Info(*format).name, n.name);
  }
  EXPECT_FALSE(FormatByName("RGB24"));
  EXPECT_FALSE(FormatByName("yuv444p16le"));
  EXPECT_FALSE(Info(*FormatByName("yuv411p")).writable);
  EXPECT_FALSE(Info(*FormatByName("hsv")).readable);
}

// A 4:2:0 name reads progressive material with chroma sited on the frame and
// interlaced material with chroma sited per field; other names have one code.
TEST(FormatNames, SitedByTheMaterial) {
  const struct {
    const char *name;
    int32_t progressive, interlaced;
  } names[] = {{"yuv420p", TCS_FORMAT_YUV420_FRAME, TCS_FORMAT_YUV420},
               {"yuv420p16le", TCS_FORMAT_YUV420_10BIT_FRAME, TCS_FORMAT_YUV420_10BIT},
               {"yuv420p10le", TCS_FORMAT_YUV420_10BIT_LOW_FRAME, TCS_FORMAT_YUV420_10BIT_LOW},
               {"nv12", TCS_FORMAT_NV12_FRAME, TCS_FORMAT_NV12},
               {"p010le", TCS_FORMAT_P010_FRAME, TCS_FORMAT_P010},
               {"v210", TCS_FORMAT_V210, TCS_FORMAT_V210}};
  for (const auto &n : names) {
    const Format format = *FormatByName(n.name);
    EXPECT_EQ(Sited(format, false, 16, 8), n.progressive) << n.name;
    EXPECT_EQ(Sited(format, true, 16, 8), n.interlaced) << n.name;
    EXPECT_EQ(Sited(static_cast<Format>(n.interlaced), false, 16, 8), n.progressive) << n.name;
    EXPECT_STREQ(Info(static_cast<Format>(n.interlaced)).name, n.name);
  }
}

TEST(FrameLayout, PlanesOfThePlanarFormats) {
  EXPECT_EQ(FrameBytes(kYuv420p, 8, 4), 8u * 4 + 2 * 4 * 2);
  EXPECT_EQ(FrameBytes(*FormatByName("yuv422p10le"), 8, 4), 2 * (8u * 4 + 2 * 4 * 4));
  EXPECT_EQ(FrameBytes(*FormatByName("p010le"), 8, 4), 2 * (8u * 4 + 8 * 2));
  // v210 rows as ffmpeg stores them: 48-pixel groups of 128 bytes
  EXPECT_EQ(Planes(*FormatByName("v210"), 48, 2)[0].pitch, 128);
  EXPECT_EQ(Planes(*FormatByName("v210"), 54, 2)[0].pitch, 256);
  EXPECT_EQ(Planes(*FormatByName("v210"), 54, 2)[0].rowBytes, 144);
  EXPECT_EQ(FrameBytes(kHsv, 8, 4), 4u * 8 * 4);
  EXPECT_EQ(Planes(kYuv420p, 8, 4)[2].offset, 8u * 4 + 4 * 2);
  EXPECT_EQ(CheckSize(7, 3), "");  // odd sizes are the library's to convert or not
  EXPECT_NE(CheckSize(0, 3), "");
}

// Every pair of codes but those from the key plane has a plan of routed
// dispatcher steps (the pairs the dispatcher leaves to the caller go in two or
// three steps).
TEST(Plan, EveryPairHasAPathOfRoutedSteps) {
  const Engine engine(TCS_GetAPIStuPtr());
  for (int32_t from = 0; from < kLibraryFormats; ++from)
    for (int32_t to = 0; to < kLibraryFormats; ++to) {
      const std::vector<int32_t> path = engine.Path(from, to);
      if (from == kAlpha && to != kAlpha) {
        EXPECT_TRUE(path.empty());
        continue;
      }
      ASSERT_FALSE(path.empty()) << from << " to " << to;
      EXPECT_EQ(path.front(), from);
      EXPECT_EQ(path.back(), to);
      EXPECT_LE(path.size(), 4u);
      for (size_t i = 1; i < path.size(); ++i)
        EXPECT_TRUE(engine.Routed(path[i - 1], path[i])) << path[i - 1] << " to " << path[i];
    }
  EXPECT_FALSE(Engine::Planned(kRgb24, kYuv444Packed));  // not implemented by the table
  EXPECT_FALSE(Engine::Planned(kYuva, kYuv420p));        // an empty stub
}

TEST(FieldPaths, BesideTheFile) {
  EXPECT_EQ(FieldPath("dir/out.yuv", 1), "dir/out.f1.yuv");
  EXPECT_EQ(FieldPath("dir.x/out", 2), "dir.x/out.f2");
  EXPECT_EQ(NumberedPath("dir.x/out.png", 12), "dir.x/out_0012.png");
  EXPECT_EQ(NumberedPath("out", 1), "out_0001");
}

TEST(MatrixNames, TheStandardsNumbersToo) {
  const struct {
    const char *name;
    int32_t matrix;
  } names[] = {{"sd", TCS_MATRIX_SD},    {"bt601", TCS_MATRIX_SD}, {"hd", TCS_MATRIX_HD},
               {"bt709", TCS_MATRIX_HD}, {"uhd", TCS_MATRIX_UHD},  {"bt2020", TCS_MATRIX_UHD}};
  for (const auto &n : names) EXPECT_EQ(ParseMatrix(n.name), n.matrix) << n.name;
  EXPECT_FALSE(ParseMatrix("bt2100"));
  EXPECT_STREQ(MatrixName(TCS_MATRIX_UHD), "uhd");
}

}  // namespace
}  // namespace tqcs
