// tqcs demo: a test pattern through every format and back, with a contact
// sheet a person can look at and a table of round-trip errors.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>

#include "cli.hpp"
#include "engine.hpp"
#include "fileio.hpp"

namespace tqcs {
namespace {

using Clock = std::chrono::steady_clock;
double Millis(Clock::time_point since) {
  return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

// ---- pattern ------------------------------------------------------------------

void Put(Image &rgba, int32_t x, int32_t y, int r, int g, int b, int a = 255) {
  uint8_t *p = rgba.data.data() + 4 * (static_cast<size_t>(y) * rgba.width + x);
  p[0] = static_cast<uint8_t>(r);
  p[1] = static_cast<uint8_t>(g);
  p[2] = static_cast<uint8_t>(b);
  p[3] = static_cast<uint8_t>(a);
}

// Colour bars, a grey ramp, a hue sweep, a zone plate and an alpha ramp.
Image Pattern(int32_t w, int32_t h) {
  Image image(kRgba, w, h);
  static constexpr int kBars[8][3] = {{235, 235, 235}, {235, 235, 16}, {16, 235, 235},
                                      {16, 235, 16},   {235, 16, 235}, {235, 16, 16},
                                      {16, 16, 235},   {16, 16, 16}};
  for (int32_t y = 0; y < h; ++y)
    for (int32_t x = 0; x < w; ++x) {
      const double u = (x + 0.5) / w;
      if (y < h / 3) {
        const int *bar = kBars[std::min(7, x * 8 / w)];
        Put(image, x, y, bar[0], bar[1], bar[2]);
      } else if (y < h / 2) {
        const int v = static_cast<int>(u * 256);
        Put(image, x, y, v, v, v);
      } else if (y < 2 * h / 3) {
        // Hue sweep at full saturation, darkening towards the bottom of the band.
        const double hue = u * 6, shade = 1.0 - 0.6 * (y - h / 2) / (h / 6.0);
        const auto ch = [&](double offset) {
          const double d = std::fabs(std::fmod(hue + offset, 6.0) - 3.0);
          return static_cast<int>(255 * shade * std::clamp(d - 1.0, 0.0, 1.0));
        };
        Put(image, x, y, ch(0), ch(4), ch(2));
      } else if (x < w / 2) {
        const double cx = x - w / 4.0, cy = y - 5 * h / 6.0;
        const int v = static_cast<int>(
            127.5 + 127.5 * std::cos(std::numbers::pi * (cx * cx + cy * cy) / (w / 2.0)));
        Put(image, x, y, v, v, v);
      } else {
        const double t = (x - w / 2 + 0.5) / (w - w / 2);
        Put(image, x, y, static_cast<int>(255 * t), 128, static_cast<int>(255 * (1 - t)),
            static_cast<int>(255 * (1 - t)));
      }
    }
  return image;
}

// ---- a 3x5 font for the labels --------------------------------------------------

struct Glyph {
  char c;
  const char *rows;  // 15 bits, row by row
};
constexpr Glyph kFont[] = {
    {'A', "010101111101101"}, {'B', "110101110101110"}, {'C', "011100100100011"},
    {'D', "110101101101110"}, {'E', "111100110100111"}, {'F', "111100110100100"},
    {'G', "011100101101011"}, {'H', "101101111101101"}, {'I', "111010010010111"},
    {'J', "001001001101010"}, {'K', "101101110101101"}, {'L', "100100100100111"},
    {'M', "101111111101101"}, {'N', "110101101101101"}, {'O', "010101101101010"},
    {'P', "110101110100100"}, {'Q', "010101101110011"}, {'R', "110101110101101"},
    {'S', "011100010001110"}, {'T', "111010010010010"}, {'U', "101101101101111"},
    {'V', "101101101101010"}, {'W', "101101111111101"}, {'X', "101101010101101"},
    {'Y', "101101010010010"}, {'Z', "111001010100111"}, {'0', "111101101101111"},
    {'1', "010110010010111"}, {'2', "110001010100111"}, {'3', "110001010001110"},
    {'4', "101101111001001"}, {'5', "111100110001110"}, {'6', "011100111101111"},
    {'7', "111001010010010"}, {'8', "111101111101111"}, {'9', "111101111001110"},
    {'-', "000000111000000"}, {'.', "000000000000010"}, {':', "000010000010000"},
    {'/', "001001010100100"}, {'>', "100010001010100"}, {' ', "000000000000000"}};

constexpr int kScale = 2, kLabelHeight = 5 * kScale + 6;

void DrawText(Image &rgb, int32_t x0, int32_t y0, std::string_view text) {
  for (char c : text) {
    const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const auto glyph = std::find_if(std::begin(kFont), std::end(kFont),
                                    [&](const Glyph &g) { return g.c == upper; });
    for (int bit = 0; glyph != std::end(kFont) && bit < 15; ++bit) {
      if (glyph->rows[bit] != '1') continue;
      for (int dy = 0; dy < kScale; ++dy)
        for (int dx = 0; dx < kScale; ++dx) {
          const int32_t x = x0 + (bit % 3) * kScale + dx, y = y0 + (bit / 3) * kScale + dy;
          if (x < rgb.width && y < rgb.height)
            std::fill_n(rgb.data.data() + 3 * (static_cast<size_t>(y) * rgb.width + x), 3, 255);
        }
    }
    x0 += 4 * kScale;
  }
}

// ---- tiles --------------------------------------------------------------------------

// What each format's tile shows, as RGBA of the pattern's size.
Image Viewable(const Engine &engine, const Image &image, int32_t matrix) {
  Image rgba(kRgba, image.width, image.height);
  if (image.format == kAlpha || image.format == kGray) {
    for (size_t i = 0; i < image.data.size(); ++i)
      std::fill_n(rgba.data.data() + 4 * i, 3, image.data[i]), rgba.data[4 * i + 3] = 255;
  } else if (image.format == kHsv) {
    const auto *hue = reinterpret_cast<const uint16_t *>(image.Plane(0));
    const uint8_t *sat = image.Plane(1), *val = image.Plane(2);
    for (size_t i = 0; i < static_cast<size_t>(image.width) * image.height; ++i) {
      const double h = hue[i] / 60.0, s = sat[i] / 255.0, v = val[i];
      const auto ch = [&](double n) {
        const double k = std::fmod(n + h, 6.0);
        return static_cast<uint8_t>(v - v * s * std::clamp(std::min(k, 4 - k), 0.0, 1.0));
      };
      uint8_t *p = rgba.data.data() + 4 * i;
      p[0] = ch(5), p[1] = ch(3), p[2] = ch(1), p[3] = 255;
    }
  } else {
    ConvertOptions options;
    options.matrix = matrix;
    engine.Convert(image, rgba, options);
  }
  return rgba;
}

// Half-size tile over a checkerboard (so alpha shows), with its label below.
void PlaceTile(Image &sheet, const Image &rgba, int32_t x0, int32_t y0, std::string_view label) {
  const int32_t tw = rgba.width / 2, th = rgba.height / 2;
  for (int32_t y = 0; y < th; ++y)
    for (int32_t x = 0; x < tw; ++x) {
      const int checker = ((x / 8 + y / 8) % 2) ? 150 : 100;
      uint8_t *out = sheet.data.data() + 3 * (static_cast<size_t>(y0 + y) * sheet.width + x0 + x);
      for (int c = 0; c < 3; ++c) {
        int sum = 0, alpha = 0;
        for (int k = 0; k < 4; ++k) {
          const uint8_t *p = rgba.data.data() +
                             4 * (static_cast<size_t>(2 * y + k / 2) * rgba.width + 2 * x + k % 2);
          sum += p[c] * p[3];
          alpha += p[3];
        }
        out[c] = static_cast<uint8_t>((sum + checker * (4 * 255 - alpha) + 510) / (4 * 255));
      }
    }
  DrawText(sheet, x0 + 2, y0 + th + 3, label);
}

struct ChannelError {
  int max[4] = {};
  double mean[4] = {};
};

ChannelError Compare(const Image &a, const Image &b) {
  ChannelError e;
  const size_t pixels = a.data.size() / 4;
  for (size_t i = 0; i < pixels; ++i)
    for (int c = 0; c < 4; ++c) {
      const int d = std::abs(a.data[4 * i + c] - b.data[4 * i + c]);
      e.max[c] = std::max(e.max[c], d);
      e.mean[c] += d;
    }
  for (double &m : e.mean) m /= static_cast<double>(pixels);
  return e;
}

}  // namespace

int RunDemo(const Args &args) {
  std::string error;
  std::optional<Size> size;
  std::optional<int32_t> matrix;
  if (!ReadSize(args, size, error) || !ReadMatrix(args, matrix, error)) return Fail(error);
  const Size s = size.value_or(Size{384, 216});
  if (s.width % 4 != 0 || s.height % 4 != 0) return Fail("the demo size must be a multiple of 4");
  const std::string dir = args.Get("out") ? *args.Get("out") : "tqcs-demo";
  if (::mkdir(dir.c_str(), 0777) != 0 && errno != EEXIST)
    return Fail(dir + ": cannot create the folder (" + std::strerror(errno) + ")");
  const TCS_APIStu *api = CheckedApi();
  if (api == nullptr) return 1;
  const Engine engine(api);
  ConvertOptions options;
  options.matrix = matrix.value_or(DefaultMatrix(s.width, s.height));
  const auto start = Clock::now();

  const Image pattern = Pattern(s.width, s.height);
  const auto writePng = [&](const std::string &name, const Image &image) {
    StreamInfo info;
    const std::string path = dir + "/" + name + ".png";
    auto writer = OpenWriter(path, info, Range::kFull, error);
    if (!writer || !writer->Write(image, error) || !writer->Finish(error))
      return Fail(path + ": " + error) == 0;
    return true;
  };
  if (!writePng("pattern", pattern)) return 1;

  // Pattern to every format and back to RGBA.
  std::printf("round trip rgba -> FORMAT -> rgba at %dx%d, matrix %s\n", s.width, s.height,
              MatrixName(options.matrix));
  std::printf("%-16s %-19s %-27s %8s %8s\n", "format", "max R G B A", "mean R G B A", "to ms",
              "back ms");
  std::vector<std::pair<std::string, Image>> tiles{{"pattern rgba", pattern}};
  for (const Format format : AllFormats()) {
    if (!Info(format).writable) continue;
    Image converted(format, s.width, s.height);
    auto t = Clock::now();
    if (error = engine.Convert(pattern, converted, options); !error.empty()) {
      // A layout of groups wider than the pattern's width divides (v210: 6 pixels).
      if (s.width % Info(format).widthMultiple == 0)
        return Fail(Info(format).name + (": " + error));
      std::printf("%-16s (not at this width: groups of %d pixels)\n", Info(format).name,
                  Info(format).widthMultiple);
      continue;
    }
    const double toMs = Millis(t);
    t = Clock::now();
    const Image back = Viewable(engine, converted, options.matrix);
    const double backMs = Millis(t);
    if (!writePng(Info(format).name, back)) return 1;
    std::string label = Info(format).name;
    const bool roundTrip = Info(format).family != Family::kKey;
    if (roundTrip) {
      const ChannelError e = Compare(pattern, back);
      const bool alpha = HasAlpha(format);
      char maxText[64], meanText[80];
      std::snprintf(maxText, sizeof maxText, "%3d %3d %3d %3s", e.max[0], e.max[1], e.max[2],
                    alpha ? std::to_string(e.max[3]).c_str() : "-");
      std::snprintf(meanText, sizeof meanText, "%5.2f %5.2f %5.2f %5s", e.mean[0], e.mean[1],
                    e.mean[2], alpha ? std::to_string(e.mean[3]).substr(0, 4).c_str() : "-");
      std::printf("%-16s %-19s %-27s %8.2f %8.2f\n", Info(format).name, maxText, meanText, toMs,
                  backMs);
      label += " max " + std::to_string(std::max({e.max[0], e.max[1], e.max[2]}));
    } else {
      std::printf("%-16s %-19s %-27s %8.2f %8s\n", Info(format).name, "(one way)", "", toMs, "-");
    }
    tiles.emplace_back(label, back);
  }

  std::printf(
      "(4:2:x maxima sit on the colour-bar edges, where two saturated colours share one "
      "chroma sample)\n");

  // Every pair of codes the dispatcher routes, and back where it routes back.
  std::printf(
      "\ndispatcher pairs FROM -> TO -> FROM: largest byte difference ('.' not routed,"
      " '>' one way; alpha compared only where both have it)\n%13s",
      "from \\ to");
  for (int32_t b = 0; b < kLibraryFormats; ++b) std::printf(" %4d", b);
  std::printf("\n");
  std::vector<Image> inFormat;
  for (int32_t a = 0; a < kLibraryFormats; ++a) {
    Image &image = inFormat.emplace_back(static_cast<Format>(a), s.width, s.height);
    if (!engine.Convert(pattern, image, options).empty()) image.data.clear();
  }
  int pairs = 0;
  const auto pairStart = Clock::now();
  for (int32_t a = 0; a < kLibraryFormats; ++a) {
    std::printf("%10s %2d", Info(static_cast<Format>(a)).name, a);
    for (int32_t b = 0; b < kLibraryFormats; ++b) {
      const Shape shape{options.matrix, s.width, s.height};
      if (!engine.Routed(a, b, shape) || inFormat[a].data.empty()) {
        std::printf("    .");
        continue;
      }
      ++pairs;
      Image there(static_cast<Format>(b), s.width, s.height),
          back(static_cast<Format>(a), s.width, s.height);
      if (!engine.Dispatch(inFormat[a], there, options.matrix, false, false))
        return Fail(std::string("the dispatcher refused ") + std::to_string(a) + " -> " +
                    std::to_string(b));
      if (!engine.Routed(b, a, shape)) {
        std::printf("    >");
        continue;
      }
      engine.Dispatch(there, back, options.matrix, false, false);
      int worst = 0;
      // The alpha byte does not survive a layout without alpha.
      const bool skipAlpha = HasAlpha(static_cast<Format>(a)) && !HasAlpha(static_cast<Format>(b));
      for (size_t i = 0; i < back.data.size(); ++i)
        if (!skipAlpha || i % 4 != 3)
          worst = std::max(worst, std::abs(back.data[i] - inFormat[a].data[i]));
      std::printf(" %4d", worst);
    }
    std::printf("\n");
  }
  std::printf("%d pairs in %.1f ms\n", pairs, Millis(pairStart));

  // The contact sheet: four tiles a row.
  const int32_t columns = 4, tw = s.width / 2 + 4, th = s.height / 2 + kLabelHeight;
  const int32_t rows = static_cast<int32_t>((tiles.size() + columns - 1) / columns);
  Image sheet(kRgb24, columns * tw, rows * th);
  std::fill(sheet.data.begin(), sheet.data.end(), 32);
  for (size_t i = 0; i < tiles.size(); ++i)
    PlaceTile(sheet, tiles[i].second, static_cast<int32_t>(i % columns) * tw + 2,
              static_cast<int32_t>(i / columns) * th + 2, tiles[i].first);
  if (!writePng("contact-sheet", sheet)) return 1;
  std::printf("wrote %zu PNGs and %s/contact-sheet.png in %.0f ms\n", tiles.size(), dir.c_str(),
              Millis(start));
  return 0;
}

}  // namespace tqcs
