// tqcs convert: files in, files out, several frames at once on the tool's pool.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cli.hpp"
#include "engine.hpp"
#include "fileio.hpp"
#include "thread_pool.hpp"

namespace tqcs {
namespace {

// A bar on stderr while it is a terminal; nothing otherwise.
class Progress {
 public:
  explicit Progress(int64_t total) : total_(total), shown_(total > 1 && ::isatty(2) != 0) {}
  ~Progress() {
    if (shown_ && drawn_) std::fputc('\n', stderr);
  }
  void Update(int64_t done) {
    if (!shown_) return;
    drawn_ = true;
    const int64_t total = std::max(total_, done);
    const int width = 40, filled = static_cast<int>(width * done / std::max<int64_t>(total, 1));
    std::fprintf(stderr, "\r[%.*s%*s] %lld/%lld frames", filled,
                 "########################################", width - filled, "",
                 static_cast<long long>(done), static_cast<long long>(total));
    std::fflush(stderr);
  }

 private:
  int64_t total_;
  bool shown_, drawn_ = false;
};

// The Y4M layouts: 8-bit 4:2:0, 4:2:2, 4:4:4 and mono, 10-bit 4:2:0 and 4:2:2.
Format Y4m10(bool half) { return *FormatByName(half ? "yuv420p10le" : "yuv422p10le"); }
const std::vector<Format> &Y4mLayouts() {
  static const std::vector<Format> layouts = {kYuv420pFrame, kYuv422p,    kYuv444p,
                                              kGray,         Y4m10(true), Y4m10(false)};
  return layouts;
}

// The Y4M layout of the input's chroma and depth: 4:2:0, 4:2:2 (4:1:1 too),
// 4:4:4 or mono; 4:2:0 for RGB and a key plane; 10 bits for 10-bit input.
Format Y4mLayoutOf(Format input) {
  const ToolFormat &info = Info(input);
  if (input == kGray) return kGray;
  const bool half = info.family != Family::kYuv || info.shiftY != 0;
  if (info.deep) return Y4m10(half);
  return half ? kYuv420pFrame : info.shiftX != 0 ? kYuv422p : kYuv444p;
}

const char *RangeName(Range range) { return range == Range::kLimited ? "limited" : "full"; }

// The format written when --to is not given, and the formats a file kind holds.
std::string ChooseOutput(FileKind kind, Format input, std::optional<Format> asked, Format &out) {
  const auto oneOf = [&](const std::vector<Format> &allowed, const char *what) {
    if (std::find(allowed.begin(), allowed.end(), Info(out).format) != allowed.end())
      return std::string();
    std::string names;
    for (Format f : allowed) names += std::string(names.empty() ? "" : ", ") + Info(f).name;
    return std::string(what) + " holds " + names + ", not " + Info(out).name;
  };
  switch (kind) {
    case FileKind::kY4m:
      out = asked ? *asked : Y4mLayoutOf(input);
      return oneOf(Y4mLayouts(), "a Y4M file");
    case FileKind::kPng:
      out = asked ? *asked : HasAlpha(input) ? kRgba : kRgb24;
      return oneOf({kRgb24, kRgba, kGray, kAlpha}, "a PNG file");
    case FileKind::kRaw:
      out = asked ? *asked : input;
      if (!Info(out).writable)
        return std::string(Info(out).name) + " is an input format; give --to";
      return {};
  }
  return {};
}

struct Job {
  Image input;   // a frame, or field 1 when composing
  Image input2;  // field 2 when composing
  Image output, field1, field2;
  std::string error;
};

}  // namespace

int RunConvert(const Args &args) {
  std::string error;
  std::optional<Format> from, to;
  std::optional<Size> size;
  std::optional<int32_t> matrix;
  std::optional<Range> range, inRange, outRange;
  std::optional<int64_t> frameCount, start;
  int threads = 1;
  if (!ReadFormat(args, "from", from, error) || !ReadFormat(args, "to", to, error) ||
      !ReadSize(args, size, error) || !ReadMatrix(args, matrix, error) ||
      !ReadThreads(args, threads, error) || !ReadRange(args, "range", range, error) ||
      !ReadRange(args, "in-range", inRange, error) ||
      !ReadRange(args, "out-range", outRange, error) ||
      !ReadCount(args, "frames", 1, frameCount, error) ||
      !ReadCount(args, "start", 0, start, error))
    return Fail(error);
  const std::string *fields = args.Get("fields");
  if (fields && *fields != "split" && *fields != "compose")
    return Fail("unknown --fields mode '" + *fields + "' (split or compose)");
  const std::string *interlace = args.Get("interlace");
  if (interlace && (interlace->size() != 1 ||
                    std::string_view("ptb").find((*interlace)[0]) == std::string_view::npos))
    return Fail("unknown --interlace '" + *interlace + "' (p, t or b)");
  if (args.positional.size() != 2)
    return Fail("convert needs IN and OUT (see tqcs convert --help)");
  const std::string &inPath = args.positional[0], &outPath = args.positional[1];
  const bool compose = fields && *fields == "compose", split = fields && *fields == "split";

  // Readers: one file, or the two field files of a frame.
  std::optional<Size> readSize = size;
  if (compose && size) readSize = Size{size->width, size->height / 2};
  std::vector<std::unique_ptr<FrameReader>> readers;
  for (int f = 1; f <= (compose ? 2 : 1); ++f) {
    const std::string path = compose ? FieldPath(inPath, f) : inPath;
    readers.push_back(OpenReader(path, from, readSize, error));
    if (!readers.back()) return Fail(path + ": " + error);
  }
  StreamInfo in = readers[0]->Info();
  if (compose) {
    const StreamInfo &second = readers[1]->Info();
    if (second.format != in.format || second.width != in.width || second.height != in.height)
      return Fail(FieldPath(inPath, 2) + ": the field files differ in format or size");
    in.height *= 2;
  }
  if (from && KindOfPath(inPath) != FileKind::kRaw && Info(*from).format != Info(in.format).format)
    return Fail(inPath + ": the file holds " + Info(in.format).name + ", not " + Info(*from).name);
  if (!Info(in.format).readable) return Fail(std::string(Info(in.format).name) + " is output only");
  const int64_t skip = start.value_or(0);

  Format out = kBgra;
  if (error = ChooseOutput(KindOfPath(outPath), in.format, to, out); !error.empty())
    return Fail(outPath + ": " + error);
  if (error = CheckSize(in.width, in.height); !error.empty()) return Fail(outPath + ": " + error);
  if ((split || compose) &&
      (in.height % 2 != 0 ||
       ((Info(out).shiftY != 0 || Info(in.format).shiftY != 0) && in.height % 4 != 0)))
    return Fail(inPath + ": --fields needs an even frame height (a multiple of 4 for 4:2:0)");

  // Ranges of the YUV sides: the input's is --in-range, else the file's tag,
  // else --range, else limited for a Y4M and full for raw; the output's is
  // --out-range, else --range, else the input's (between YUV layouts), else
  // limited for a Y4M and full for raw. Samples are converted between the two.
  const bool inYuv = Info(in.format).family == Family::kYuv || in.format == kGray;
  const FileKind inKind = KindOfPath(inPath), outKind = KindOfPath(outPath);
  ConvertOptions options;
  const char *rangeSource = "as given";
  if (!inRange && in.range)
    rangeSource = "from its tag";
  else if (!inRange && !range)
    rangeSource = inKind == FileKind::kY4m ? "assumed: no tag" : "assumed: raw files state none";
  options.srcRange = inRange                    ? *inRange
                     : in.range                 ? *in.range
                     : range                    ? *range
                     : inKind == FileKind::kY4m ? Range::kLimited
                                                : Range::kFull;
  options.dstRange = outRange                    ? *outRange
                     : range                     ? *range
                     : inYuv                     ? options.srcRange
                     : outKind == FileKind::kY4m ? Range::kLimited
                                                 : Range::kFull;
  options.matrix = matrix ? *matrix : DefaultMatrix(in.width, in.height);
  options.flip = args.Has("flip");

  // Interlace: as declared, else a Y4M's field, else top field first for a
  // composed frame and progressive otherwise. Interlaced material is
  // converted field by field, so 4:2:0 chroma never mixes the two fields;
  // field files are progressive pictures.
  const char frameInterlace = interlace                  ? (*interlace)[0]
                              : compose                  ? 't'
                              : inKind == FileKind::kY4m ? in.interlace
                                                         : 'p';
  options.interlaced = frameInterlace == 't' || frameInterlace == 'b';
  // 4:2:0 memory is read and written with its chroma sited as the material is.
  in.format = Sited(in.format, options.interlaced, in.width, in.height);
  out = Sited(out, options.interlaced, in.width, in.height);
  StreamInfo outInfo = in;
  outInfo.format = out;
  outInfo.interlace = split ? 'p' : frameInterlace;
  // A 4:2:0 output keeps the siting of 4:2:0 samples it copies; chroma the
  // library subsamples is co-sited horizontally with the even pixel and
  // centred vertically between its rows: C420mpeg2.
  if (!(inKind == FileKind::kY4m && Info(in.format).format == Info(out).format))
    outInfo.chroma.clear();
  if (split) outInfo.height /= 2;
  std::vector<std::unique_ptr<FrameWriter>> writers;
  for (int f = 1; f <= (split ? 2 : 1); ++f) {
    const std::string path = split ? FieldPath(outPath, f) : outPath;
    writers.push_back(OpenWriter(path, outInfo, options.dstRange, error));
    if (!writers.back()) return Fail(path + ": " + error);
  }

  const TCS_APIStu *api = CheckedApi();
  if (api == nullptr) return 1;
  const Engine engine(api);
  ThreadPool pool(threads);
  // The next frame (both fields when composing): false at the end or on an
  // error, which `failure` then holds in full.
  std::string failure;
  const auto readFrame = [&](Job &job) {
    if (!readers[0]->Read(job.input, error)) {
      if (!error.empty()) failure = (compose ? FieldPath(inPath, 1) : inPath) + ": " + error;
      return false;
    }
    if (compose && !readers[1]->Read(job.input2, error)) {
      failure = FieldPath(inPath, 2) + ": " +
                (error.empty() ? "has fewer fields than " + FieldPath(inPath, 1) : error);
      return false;
    }
    return true;
  };
  const int64_t wanted = frameCount.value_or(-1);
  Progress progress(in.frames < 0 ? wanted
                    : wanted < 0  ? in.frames - skip
                                  : std::min(in.frames - skip, wanted));
  std::vector<Job> jobs(static_cast<size_t>(2 * pool.Size()));
  for (int64_t k = 0; k < skip && readFrame(jobs[0]);) ++k;
  int64_t done = 0;
  for (bool more = true; more;) {
    size_t count = 0;
    while (count < jobs.size() && (wanted < 0 || done + static_cast<int64_t>(count) < wanted) &&
           readFrame(jobs[count]))
      ++count;
    if (!failure.empty()) return Fail(failure);
    more = count == jobs.size();
    if (done == 0 && count == 0)
      return Fail(inPath + (skip > 0
                                ? ": --start " + std::to_string(skip) + " is past the last frame"
                                : std::string(": no frame in the file")));
    const auto convertJob = [&](size_t i) {
      Job &job = jobs[i];
      job.input.format = job.input2.format = in.format;
      if (compose) {
        Image frame(in.format, in.width, in.height);
        engine.ComposeFields(job.input, job.input2, frame);
        job.input = std::move(frame);
      }
      job.output.format = out;
      job.error = engine.Convert(job.input, job.output, options);
      if (split && job.error.empty()) {
        job.field1 = job.field2 = Image(out, in.width, in.height / 2);
        engine.SplitFields(job.output, job.field1, job.field2);
      }
    };
    // The first frame on this thread: it makes the engine's probe conversions
    // for the stream's one shape (they watch the process-wide log), so the
    // other threads only read the routes it found.
    const size_t first = done == 0 && count > 0 ? 1 : 0;
    if (first) convertJob(0);
    pool.ParallelFor(count - first, [&](size_t i) { convertJob(i + first); });
    for (size_t i = 0; i < count; ++i) {
      const Job &job = jobs[i];
      if (!job.error.empty()) return Fail(inPath + ": " + job.error);
      for (size_t w = 0; w < writers.size(); ++w)
        if (!writers[w]->Write(split ? (w == 0 ? job.field1 : job.field2) : job.output, error))
          return Fail((split ? FieldPath(outPath, static_cast<int>(w) + 1) : outPath) + ": " +
                      error);
      progress.Update(++done);
    }
  }
  for (size_t w = 0; w < writers.size(); ++w)
    if (!writers[w]->Finish(error))
      return Fail((split ? FieldPath(outPath, static_cast<int>(w) + 1) : outPath) + ": " + error);

  // One line: what was read as what, what was written, and where a range was assumed.
  const auto side = [](Format format, bool yuv, Range range) {
    const ToolFormat &info = Info(format);
    const char *siting = info.fieldSited == info.format ? ""
                         : format == info.fieldSited    ? " (chroma per field)"
                                                        : " (chroma on the frame)";
    return info.name + (siting + (yuv ? std::string(", ") + RangeName(range) + " range" : ""));
  };
  const bool outYuv = Info(out).family == Family::kYuv || out == kGray;
  std::string read = side(in.format, inYuv, options.srcRange);
  if (inYuv) read += std::string(" (") + rangeSource + ")";
  std::string written = outPath;
  if (outKind == FileKind::kPng && done > 1)
    written = NumberedPath(outPath, 1) + " to " + NumberedPath(outPath, done);
  if (split) written = "the fields (.f1, .f2) of " + written;
  std::printf("%s: %dx%d %s -> %s: %s, matrix %s, %lld frame%s\n", inPath.c_str(), in.width,
              in.height, read.c_str(), written.c_str(), side(out, outYuv, options.dstRange).c_str(),
              MatrixName(options.matrix), static_cast<long long>(done), done == 1 ? "" : "s");
  return 0;
}

int RunCompare(const Args &args) {
  std::string error;
  std::optional<Format> from;
  std::optional<Size> size;
  if (!ReadFormat(args, "from", from, error) || !ReadSize(args, size, error)) return Fail(error);
  if (args.positional.size() != 2) return Fail("compare needs two files (see tqcs compare --help)");
  Image images[2];
  for (int i = 0; i < 2; ++i) {
    auto reader = OpenReader(args.positional[i], from, size, error);
    if (!reader || !reader->Read(images[i], error))
      return Fail(args.positional[i] + ": " + (error.empty() ? "no frame in the file" : error));
  }
  // A picture with alpha against its colour-only round trip (an RGBA PNG
  // through 4:2:x or 4:4:4 comes back as RGB): the colour bytes are compared.
  for (int i = 0; i < 2; ++i) {
    Image &four = images[i];
    const Format three = images[1 - i].format;
    if ((four.format == kRgba && three == kRgb24) || (four.format == kBgra && three == kBgr24)) {
      Image colour(three, four.width, four.height);
      for (size_t px = 0; px < colour.data.size() / 3; ++px)
        std::copy_n(&four.data[4 * px], 3, &colour.data[3 * px]);
      std::printf("%s: alpha not compared\n", args.positional[i].c_str());
      four = std::move(colour);
    }
  }
  if (Info(images[0].format).format != Info(images[1].format).format ||
      images[0].width != images[1].width || images[0].height != images[1].height)
    return Fail("the two files differ in format or size");
  // Per sample position of a pixel for packed layouts, per plane otherwise;
  // 16-bit samples as their 10-bit values.
  const ToolFormat &info = Info(images[0].format);
  const auto planes = Planes(images[0].format, images[0].width, images[0].height);
  const int32_t unit = info.sampleBytes == 2 ? 2 : 1;
  const int32_t channels =
      info.packedBytes != 0 ? info.packedBytes / unit : static_cast<int32_t>(planes.size());
  const auto value = [&](const Image &image, size_t at) {
    if (unit == 1) return static_cast<int>(image.data[at]);
    const int sample = image.data[at] | image.data[at + 1] << 8;
    return info.lowBits ? sample : sample >> 6;
  };
  std::vector<int> maxDiff(channels, 0);
  std::vector<double> sum(channels, 0);
  std::vector<size_t> n(channels, 0);
  for (size_t p = 0; p < planes.size(); ++p)
    for (int32_t row = 0; row < planes[p].rows; ++row)
      for (int32_t i = 0; i < planes[p].rowBytes / unit; ++i) {
        const size_t at = planes[p].offset + static_cast<size_t>(row * planes[p].pitch + i * unit);
        const int c = planes.size() > 1 ? static_cast<int>(p) : i % channels;
        const int d = std::abs(value(images[0], at) - value(images[1], at));
        maxDiff[c] = std::max(maxDiff[c], d);
        sum[c] += d;
        ++n[c];
      }
  int worst = 0;
  std::printf("channel  max  mean\n");
  for (int c = 0; c < channels; ++c) {
    std::printf("%7d %4d  %.3f\n", c, maxDiff[c], sum[c] / static_cast<double>(n[c]));
    worst = std::max(worst, maxDiff[c]);
  }
  if (const std::string *bound = args.Get("max")) {
    const auto limit = ParsePositive(*bound);
    if (!limit && *bound != "0") return Fail("bad --max '" + *bound + "'");
    if (worst > (limit ? *limit : 0)) {
      std::printf("largest difference %d exceeds %s\n", worst, bound->c_str());
      return 2;
    }
  }
  return 0;
}

}  // namespace tqcs
