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
  bool Commit(std::string &error) {
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed || std::rename(temp_.c_str(), path_.c_str()) != 0) {
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

class StreamWriter : public FrameWriter {
 public:
  StreamWriter(const StreamInfo &info, std::string header)
      : info_(info), header_(std::move(header)) {}
  bool Open(const std::string &path, std::string &error) {
    return out_.Open(path, error) && out_.Put(header_.data(), header_.size(), error);
  }
  bool Write(const Image &frame, std::string &error) override {
    static constexpr char kFrame[] = "FRAME\n";
    return (header_.empty() || out_.Put(kFrame, sizeof kFrame - 1, error)) &&
           out_.Put(frame.data.data(), frame.data.size(), error);
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
    const size_t got = std::fread(frame.data.data(), 1, frame.data.size(), file_.get());
    if (got != frame.data.size()) {
      error = "truncated Y4M frame " + std::to_string(index_) + " (" + std::to_string(got) +
              " of " + std::to_string(frame.data.size()) + " bytes)";
      return false;
    }
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
    if (std::string problem = CheckSize(info_.format, info_.width, info_.height);
        !problem.empty()) {
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
  bool Open(const std::string &path, std::string &error) { return out_.Open(path, error); }
  bool Write(const Image &frame, std::string &error) override {
    if (written_) {
      error = "a PNG holds one frame; write several frames to .y4m or raw";
      return false;
    }
    written_ = true;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(frame.width);
    image.height = static_cast<png_uint_32>(frame.height);
    image.format = frame.format == kRgba    ? PNG_FORMAT_RGBA
                   : frame.format == kRgb24 ? PNG_FORMAT_RGB
                                            : PNG_FORMAT_GRAY;
    if (!png_image_write_to_stdio(&image, out_.Get(), 0, frame.data.data(), 0, nullptr)) {
      error = std::string("PNG write failed (") + image.message + ")";
      return false;
    }
    return true;
  }
  bool Finish(std::string &error) override {
    if (!written_) {
      error = "no frame to write";
      return false;
    }
    return out_.Commit(error);
  }

 private:
  AtomicFile out_;
  bool written_ = false;
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
  info.format = kYuv420p;
  info.width = info.height = 0;
  info.interlace = 'p';
  info.range.reset();
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
        if (value == "420" || value == "420jpeg" || value == "420mpeg2" || value == "420paldv")
          info.format = kYuv420p;  // chroma sitings differ, the memory layout does not
        else if (value == "422")
          info.format = kYuv422p;
        else if (value == "444")
          info.format = kYuv444p;
        else if (value == "mono")
          info.format = kGray;
        else
          return "unsupported Y4M colour space C" + std::string(value) +
                 " (8-bit 420, 422, 444 and mono are read)";
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
  if (std::string problem = CheckSize(info.format, info.width, info.height); !problem.empty())
    return "unusable Y4M size: " + problem;
  return {};
}

std::string Y4mHeader(const StreamInfo &info, Range range) {
  const char *chroma = info.format == kYuv422p   ? "422"
                       : info.format == kYuv444p ? "444"
                       : info.format == kGray    ? "mono"
                                                 : "420jpeg";
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
        static_cast<int64_t>(FrameBytes(info.format, info.width, info.height));
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
  if (error = CheckSize(info.format, info.width, info.height); !error.empty()) return nullptr;
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
  if (kind == FileKind::kPng) {
    auto writer = std::make_unique<PngWriter>();
    if (!writer->Open(path, error)) return nullptr;
    return writer;
  }
  auto writer = std::make_unique<StreamWriter>(
      info, kind == FileKind::kY4m ? Y4mHeader(info, range) : std::string());
  if (!writer->Open(path, error)) return nullptr;
  return writer;
}

std::string FieldPath(const std::string &path, int field) {
  const size_t slash = path.rfind('/');
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = path.size();
  return path.substr(0, dot) + ".f" + std::to_string(field) + path.substr(dot);
}

}  // namespace tqcs
