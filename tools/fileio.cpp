#include "fileio.hpp"

#include <fcntl.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <vector>

namespace tqcs {
namespace {

bool EndsWith(std::string_view text, std::string_view suffix) {
  if (text.size() < suffix.size()) return false;
  for (size_t i = 0; i < suffix.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(text[text.size() - suffix.size() + i])) !=
        suffix[i])
      return false;
  return true;
}

struct FileCloser {
  void operator()(FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

// ---- temporary output, renamed into place -----------------------------------

class AtomicFile {
 public:
  ~AtomicFile() {
    if (file_ != nullptr) std::fclose(file_);
    if (!temp_.empty()) ::unlink(temp_.c_str());
  }
  bool Open(const std::string &path, std::string &error) {
    path_ = path;
    const size_t slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string pattern = (slash == std::string::npos ? "" : dir) + "." + name + ".XXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0) {
      error = std::string("cannot create a file in ") + dir + " (" + std::strerror(errno) + ")";
      return false;
    }
    temp_ = pattern;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    file_ = ::fdopen(fd, "wb");
    return file_ != nullptr;
  }
  FILE *Get() { return file_; }
  bool Put(const void *data, size_t bytes, std::string &error) {
    if (std::fwrite(data, 1, bytes, file_) == bytes) return true;
    error = std::string("write failed (") + std::strerror(errno) + ")";
    return false;
  }
  // Closes the finished file, which stays under its temporary name.
  bool Close(std::string &error) {
    const bool closed = file_ == nullptr || std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed) error = std::string("cannot write the file (") + std::strerror(errno) + ")";
    return closed;
  }
  // Renames the finished file to `target` (by default the path it was opened for).
  bool Commit(std::string &error, const std::string &target = {}) {
    if (!Close(error)) return false;
    if (std::rename(temp_.c_str(), (target.empty() ? path_ : target).c_str()) != 0) {
      error = std::string("cannot write the file (") + std::strerror(errno) + ")";
      return false;
    }
    temp_.clear();
    return true;
  }

 private:
  std::string path_, temp_;
  FILE *file_ = nullptr;
};

// ---- raw ---------------------------------------------------------------------

class RawReader : public FrameReader {
 public:
  RawReader(File file, const StreamInfo &info) : file_(std::move(file)) { info_ = info; }
  bool Read(Image &frame, std::string &) override {
    frame = Image(info_.format, info_.width, info_.height);
    return std::fread(frame.data.data(), 1, frame.data.size(), file_.get()) == frame.data.size();
  }

 private:
  File file_;
};

// ---- YUV4MPEG2 frame layout ------------------------------------------------------

// A Y4M file rounds the chroma of an odd width or height up, as ffmpeg does;
// the library's layout (the tool's frames) rounds it down. `copy(file offset,
// frame offset, frame bytes, file bytes, inside)` is called for every row of the
// file's layout; `inside` is false for the extra chroma row of an odd height,
// whose frame offset is then that of the last chroma row.
template <class Copy>
void EachY4mRow(Format format, int32_t width, int32_t height, Copy copy) {
  const ToolFormat &info = tqcs::Info(format);
  const auto planes = Planes(format, width, height);
  size_t file = 0;
  for (size_t p = 0; p < planes.size(); ++p) {
    const int32_t sx = p == 0 ? 0 : info.shiftX, sy = p == 0 ? 0 : info.shiftY;
    const size_t cols = static_cast<size_t>((width + sx) >> sx) * info.sampleBytes;
    const int32_t rows = (height + sy) >> sy;
    for (int32_t r = 0; r < rows; ++r, file += cols) {
      const int32_t row = std::min(r, planes[p].rows - 1);
      copy(file, planes[p].offset + static_cast<size_t>(row * planes[p].pitch),
           static_cast<size_t>(planes[p].rowBytes), cols, r < planes[p].rows);
    }
  }
}

size_t Y4mFrameBytes(Format format, int32_t width, int32_t height) {
  size_t bytes = 0;
  EachY4mRow(format, width, height,
             [&](size_t, size_t, size_t, size_t cols, bool) { bytes += cols; });
  return bytes;
}

// The extra chroma column and row repeat the last ones the library wrote.
std::vector<uint8_t> ToY4mLayout(const Image &frame) {
  std::vector<uint8_t> file(Y4mFrameBytes(frame.format, frame.width, frame.height));
  const size_t sample = static_cast<size_t>(tqcs::Info(frame.format).sampleBytes);
  EachY4mRow(frame.format, frame.width, frame.height,
             [&](size_t to, size_t from, size_t bytes, size_t cols, bool) {
               std::memcpy(file.data() + to, frame.data.data() + from, bytes);
               for (size_t at = bytes; at < cols; at += sample)
                 std::memcpy(file.data() + to + at, frame.data.data() + from + bytes - sample,
                             sample);
             });
  return file;
}

// The extra chroma column and row are left out.
void FromY4mLayout(const std::vector<uint8_t> &file, Image &frame) {
  EachY4mRow(frame.format, frame.width, frame.height,
             [&](size_t from, size_t to, size_t bytes, size_t, bool inside) {
               if (inside) std::memcpy(frame.data.data() + to, file.data() + from, bytes);
             });
}

// A 4:2:x frame of one pixel's width or height has no chroma in the library's layout.
std::string CheckY4mSize(const StreamInfo &info) {
  const ToolFormat &format = tqcs::Info(info.format);
  if ((format.shiftX != 0 && info.width < 2) || (format.shiftY != 0 && info.height < 2))
    return std::string("a ") + format.name + " Y4M frame needs 2 pixels where chroma is halved";
  return {};
}

class StreamWriter : public FrameWriter {
 public:
  StreamWriter(const StreamInfo &info, std::string header)
      : info_(info), header_(std::move(header)) {}
  bool Open(const std::string &path, std::string &error) {
    return out_.Open(path, error) && out_.Put(header_.data(), header_.size(), error);
  }
  bool Write(const Image &frame, std::string &error) override {
    static constexpr char kFrame[] = "FRAME\n";
    if (header_.empty()) return out_.Put(frame.data.data(), frame.data.size(), error);
    const std::vector<uint8_t> file = ToY4mLayout(frame);
    return out_.Put(kFrame, sizeof kFrame - 1, error) && out_.Put(file.data(), file.size(), error);
  }
  bool Finish(std::string &error) override { return out_.Commit(error); }

 private:
  StreamInfo info_;
  std::string header_;  // empty for raw output
  AtomicFile out_;
};

// ---- YUV4MPEG2 -------------------------------------------------------------------

constexpr std::string_view kY4mMagic = "YUV4MPEG2";
constexpr size_t kY4mLineLimit = 1024;

// Reads one line up to '\n'. False when the file ends first; `line` then holds
// what was read.
bool ReadLine(FILE *file, std::string &line) {
  line.clear();
  for (int c; (c = std::fgetc(file)) != EOF;) {
    if (c == '\n') return true;
    if (line.size() == kY4mLineLimit) return false;
    line.push_back(static_cast<char>(c));
  }
  return false;
}

class Y4mReader : public FrameReader {
 public:
  Y4mReader(File file, const StreamInfo &info) : file_(std::move(file)) { info_ = info; }
  bool Read(Image &frame, std::string &error) override {
    std::string line;
    const bool complete = ReadLine(file_.get(), line);
    if (!complete && line.empty() && std::feof(file_.get())) return false;
    ++index_;
    if (!complete || line.compare(0, 5, "FRAME") != 0 || (line.size() > 5 && line[5] != ' ')) {
      error = "malformed Y4M frame header at frame " + std::to_string(index_);
      return false;
    }
    frame = Image(info_.format, info_.width, info_.height);
    std::vector<uint8_t> file(Y4mFrameBytes(info_.format, info_.width, info_.height));
    const size_t got = std::fread(file.data(), 1, file.size(), file_.get());
    if (got != file.size()) {
      error = "truncated Y4M frame " + std::to_string(index_) + " (" + std::to_string(got) +
              " of " + std::to_string(file.size()) + " bytes)";
      return false;
    }
    FromY4mLayout(file, frame);
    return true;
  }

 private:
  File file_;
  int64_t index_ = 0;
};

// ---- PNG -------------------------------------------------------------------------

class PngReader : public FrameReader {
 public:
  bool Open(const std::string &path, std::string &error) {
    image_.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image_, path.c_str())) {
      error = std::string("not a readable PNG (") + image_.message + ")";
      return false;
    }
    const bool alpha = (image_.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image_.format = alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    info_.format = alpha ? kRgba : kRgb24;
    info_.width = static_cast<int32_t>(image_.width);
    info_.height = static_cast<int32_t>(image_.height);
    info_.frames = 1;
    if (std::string problem = CheckSize(info_.width, info_.height); !problem.empty()) {
      error = "unusable PNG: " + problem;
      return false;
    }
    return true;
  }
  ~PngReader() override { png_image_free(&image_); }
  bool Read(Image &frame, std::string &error) override {
    if (done_) return false;
    done_ = true;
    frame = Image(info_.format, info_.width, info_.height);
    if (!png_image_finish_read(&image_, nullptr, frame.data.data(), 0, nullptr)) {
      error = std::string("not a readable PNG (") + image_.message + ")";
      return false;
    }
    return true;
  }

 private:
  png_image image_{};
  bool done_ = false;
};

class PngWriter : public FrameWriter {
 public:
  explicit PngWriter(std::string path) : path_(std::move(path)) {}
  bool Write(const Image &frame, std::string &error) override {
    auto &out = *files_.emplace_back(std::make_unique<AtomicFile>());
    if (!out.Open(path_, error)) return false;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(frame.width);
    image.height = static_cast<png_uint_32>(frame.height);
    image.format = frame.format == kRgba    ? PNG_FORMAT_RGBA
                   : frame.format == kRgb24 ? PNG_FORMAT_RGB
                                            : PNG_FORMAT_GRAY;
    if (!png_image_write_to_stdio(&image, out.Get(), 0, frame.data.data(), 0, nullptr)) {
      error = std::string("PNG write failed (") + image.message + ")";
      return false;
    }
    return out.Close(error);  // a long clip must not hold a file open per frame
  }
  // One frame keeps the name asked for; several are numbered from 1.
  bool Finish(std::string &error) override {
    if (files_.empty()) {
      error = "no frame to write";
      return false;
    }
    for (size_t i = 0; i < files_.size(); ++i)
      if (!files_[i]->Commit(
              error, files_.size() == 1 ? path_ : NumberedPath(path_, static_cast<int64_t>(i) + 1)))
        return false;
    return true;
  }

 private:
  std::string path_;
  std::vector<std::unique_ptr<AtomicFile>> files_;  // written, not yet in place
};

std::optional<int32_t> ParseInt(std::string_view text) {
  int32_t value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || value <= 0) return std::nullopt;
  return value;
}

}  // namespace

FileKind KindOfPath(std::string_view path) {
  if (EndsWith(path, ".y4m")) return FileKind::kY4m;
  if (EndsWith(path, ".png")) return FileKind::kPng;
  return FileKind::kRaw;
}

std::string ParseY4mHeader(std::string_view line, StreamInfo &info) {
  if (line.substr(0, kY4mMagic.size()) != kY4mMagic ||
      (line.size() > kY4mMagic.size() && line[kY4mMagic.size()] != ' '))
    return "not a YUV4MPEG2 file";
  info.format = kYuv420pFrame;
  info.width = info.height = 0;
  info.interlace = 'p';
  info.range.reset();
  info.chroma.clear();
  size_t at = kY4mMagic.size();
  while (at < line.size()) {
    const size_t end = std::min(line.find(' ', at + 1), line.size());
    const std::string_view token = line.substr(at + 1, end - at - 1);
    at = end;
    if (token.empty()) continue;
    const std::string_view value = token.substr(1);
    switch (token[0]) {
      case 'W':
      case 'H': {
        const auto number = ParseInt(value);
        if (!number) return "malformed Y4M header: bad " + std::string(token);
        (token[0] == 'W' ? info.width : info.height) = *number;
        break;
      }
      case 'C':
        info.chroma = value;
        if (value == "420" || value == "420jpeg" || value == "420mpeg2" || value == "420paldv")
          info.format = kYuv420pFrame;  // chroma sitings differ, the memory layout does not
        else if (value == "422")
          info.format = kYuv422p;
        else if (value == "444")
          info.format = kYuv444p;
        else if (value == "mono")
          info.format = kGray;
        else if (value == "420p10" || value == "422p10")
          info.format = *FormatByName(value == "420p10" ? "yuv420p10le" : "yuv422p10le");
        else
          return "unsupported Y4M colour space C" + std::string(value) +
                 " (8-bit 420, 422, 444 and mono, 10-bit 420p10 and 422p10 are read)";
        break;
      case 'I':
        if (value.size() != 1 || std::string_view("ptbm").find(value[0]) == std::string_view::npos)
          return "malformed Y4M header: bad " + std::string(token);
        info.interlace = value[0];
        break;
      case 'F':
        info.rate = value;
        break;
      case 'A':
        info.aspect = value;
        break;
      case 'X':
        if (value == "COLORRANGE=LIMITED") info.range = Range::kLimited;
        if (value == "COLORRANGE=FULL") info.range = Range::kFull;
        break;
      default:
        return "malformed Y4M header: unknown field " + std::string(token);
    }
  }
  if (info.width == 0 || info.height == 0) return "malformed Y4M header: no W or H";
  info.format =
      Sited(info.format, info.interlace == 't' || info.interlace == 'b', info.width, info.height);
  std::string problem = CheckSize(info.width, info.height);
  if (problem.empty()) problem = CheckY4mSize(info);
  if (!problem.empty()) return "unusable Y4M size: " + problem;
  return {};
}

namespace {
// The C field written when the samples carry no siting of their own.
std::string Y4mChroma(Format format) {
  const ToolFormat &info = tqcs::Info(format);
  if (info.deep) return info.shiftY != 0 ? "420p10" : "422p10";
  return format == kYuv422p   ? "422"
         : format == kYuv444p ? "444"
         : format == kGray    ? "mono"
                              : "420mpeg2";
}
}  // namespace

std::string Y4mHeader(const StreamInfo &info, Range range) {
  const std::string chroma = info.chroma.empty() ? Y4mChroma(info.format) : info.chroma;
  return std::string(kY4mMagic) + " W" + std::to_string(info.width) + " H" +
         std::to_string(info.height) + " F" + info.rate + " I" + info.interlace + " A" +
         info.aspect + " C" + chroma +
         " XCOLORRANGE=" + (range == Range::kLimited ? "LIMITED" : "FULL") + "\n";
}

std::unique_ptr<FrameReader> OpenReader(const std::string &path, std::optional<Format> format,
                                        std::optional<Size> size, std::string &error) {
  const FileKind kind = KindOfPath(path);
  if (kind == FileKind::kPng) {
    auto reader = std::make_unique<PngReader>();
    if (!reader->Open(path, error)) return nullptr;
    return reader;
  }
  File file(std::fopen(path.c_str(), "rb"));
  if (!file) {
    error = std::string("cannot open (") + std::strerror(errno) + ")";
    return nullptr;
  }
  struct stat st {};
  ::fstat(::fileno(file.get()), &st);
  const int64_t fileBytes = st.st_size;
  StreamInfo info;
  if (kind == FileKind::kY4m) {
    std::string line;
    if (!ReadLine(file.get(), line)) {
      error = line.compare(0, kY4mMagic.size(), kY4mMagic) == 0 ? "truncated Y4M header"
                                                                : "not a YUV4MPEG2 file";
      return nullptr;
    }
    if (error = ParseY4mHeader(line, info); !error.empty()) return nullptr;
    const int64_t frameBytes =
        static_cast<int64_t>(Y4mFrameBytes(info.format, info.width, info.height));
    info.frames = (fileBytes - static_cast<int64_t>(line.size()) - 1) / (frameBytes + 6);
    return std::make_unique<Y4mReader>(std::move(file), info);
  }
  if (!format || !size) {
    error = "raw input needs --from FORMAT and --size WxH";
    return nullptr;
  }
  info.format = *format;
  info.width = size->width;
  info.height = size->height;
  if (error = CheckSize(info.width, info.height); !error.empty()) return nullptr;
  const int64_t frameBytes = static_cast<int64_t>(FrameBytes(info.format, info.width, info.height));
  if (fileBytes == 0 || fileBytes % frameBytes != 0) {
    error = "size " + std::to_string(info.width) + "x" + std::to_string(info.height) + " " +
            tqcs::Info(info.format).name + " (" + std::to_string(frameBytes) +
            " bytes a frame) does not match the file (" + std::to_string(fileBytes) + " bytes)";
    return nullptr;
  }
  info.frames = fileBytes / frameBytes;
  return std::make_unique<RawReader>(std::move(file), info);
}

std::unique_ptr<FrameWriter> OpenWriter(const std::string &path, const StreamInfo &info,
                                        Range range, std::string &error) {
  const FileKind kind = KindOfPath(path);
  if (kind == FileKind::kPng) return std::make_unique<PngWriter>(path);
  if (kind == FileKind::kY4m) {
    if (error = CheckY4mSize(info); !error.empty()) return nullptr;
  }
  auto writer = std::make_unique<StreamWriter>(
      info, kind == FileKind::kY4m ? Y4mHeader(info, range) : std::string());
  if (!writer->Open(path, error)) return nullptr;
  return writer;
}

namespace {
// `path` with `tag` before its extension.
std::string Tagged(const std::string &path, const std::string &tag) {
  const size_t slash = path.rfind('/');
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = path.size();
  return path.substr(0, dot) + tag + path.substr(dot);
}
}  // namespace

std::string FieldPath(const std::string &path, int field) {
  return Tagged(path, ".f" + std::to_string(field));
}

std::string NumberedPath(const std::string &path, int64_t number) {
  char tag[24];
  std::snprintf(tag, sizeof tag, "_%04lld", static_cast<long long>(number));
  return Tagged(path, tag);
}

}  // namespace tqcs
