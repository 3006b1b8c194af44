// Frame files: raw frames back to back, YUV4MPEG2 (.y4m) and PNG. Output is
// written under a temporary name in the destination's folder and renamed into
// place only when complete, so a failed run leaves no partial file behind.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "formats.hpp"

namespace tqcs {

enum class FileKind { kRaw, kY4m, kPng };
FileKind KindOfPath(std::string_view path);

struct StreamInfo {
  Format format = kBgra;
  int32_t width = 0;
  int32_t height = 0;
  std::optional<Range> range;  // as the file states it (Y4M's XCOLORRANGE)
  char interlace = 'p';        // Y4M: p, t, b or m
  std::string chroma;          // Y4M: the C field as read ("420mpeg2"), empty for the default
  std::string rate = "25:1";
  std::string aspect = "1:1";
  int64_t frames = -1;  // expected frame count, -1 when unknown
};

// Y4M header parsing, shared with the tests: "YUV4MPEG2 W.. H.. ..." without
// the newline. Returns an empty string or the problem.
std::string ParseY4mHeader(std::string_view line, StreamInfo &info);
std::string Y4mHeader(const StreamInfo &info, Range range);

class FrameReader {
 public:
  virtual ~FrameReader() = default;
  const StreamInfo &Info() const { return info_; }
  // Reads the next frame into `frame`. False at the end of the file (error
  // empty) or on a bad frame (error says what is wrong).
  virtual bool Read(Image &frame, std::string &error) = 0;

 protected:
  StreamInfo info_;
};

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;
  virtual bool Write(const Image &frame, std::string &error) = 0;
  // Moves the finished file into place.
  virtual bool Finish(std::string &error) = 0;
};

// Raw input needs `format` and `size`; for Y4M and PNG the file says.
std::unique_ptr<FrameReader> OpenReader(const std::string &path, std::optional<Format> format,
                                        std::optional<Size> size, std::string &error);
// `info` describes the frames to come; `range` is written into a Y4M header.
// Frames written to a .png: one frame goes to `path`, several to numbered
// files beside it (NumberedPath), all renamed into place by Finish.
std::unique_ptr<FrameWriter> OpenWriter(const std::string &path, const StreamInfo &info,
                                        Range range, std::string &error);

// Frame `number` of several written to `path`: "out.png" gives "out_0001.png".
std::string NumberedPath(const std::string &path, int64_t number);

// The name of field file 1 or 2 beside `path`: "out.yuv" gives "out.f1.yuv".
std::string FieldPath(const std::string &path, int field);

}  // namespace tqcs
