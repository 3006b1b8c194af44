// The conversion engine of the tqcsconvert element: a plan of library calls
// built once per negotiated pair of formats and run on every frame. It knows
// nothing of GStreamer; the element fills in the frames' planes.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace tqgst {

// How the chroma of a format is sampled; 4:2:0 is the one that filters rows.
enum class Sampling { Rgb, Gray, C444, C422, C420 };

// The library's side of a format: its code (the gray drivers have none) and
// its sampling.
struct Layout {
  int32_t code;  // TCS_FORMAT_*, or kGrayCode
  Sampling sampling;
};
inline constexpr int32_t kGrayCode = -1;

inline bool isYuv(const Layout &l) {
  return l.sampling == Sampling::C444 || l.sampling == Sampling::C422 ||
         l.sampling == Sampling::C420;
}

// The log records of the library raised on a thread while a Capture is
// installed there: the first refusal (level 1 or 3) is kept. A quiet capture
// also keeps the records from the host's log.
struct Capture {
  bool quiet = false;
  std::mutex mutex;
  std::string reason;
  void note(int32_t level, const std::string &text);
};
Capture *currentCapture();
class ScopedCapture {
 public:
  explicit ScopedCapture(Capture *capture);
  ~ScopedCapture();
  ScopedCapture(const ScopedCapture &) = delete;
  ScopedCapture &operator=(const ScopedCapture &) = delete;

 private:
  Capture *previous_;
};

inline bool isSubsampled(const Layout &l) {
  return l.sampling == Sampling::C422 || l.sampling == Sampling::C420;
}

// One side of a conversion as negotiated.
struct Side {
  Layout layout;
  bool limited;  // video range (YUV only); the library's YUV is full range
};

struct Options {
  int32_t matrix;     // TCS_MATRIX_*
  bool fields;        // convert each field on its own
  unsigned nThreads;  // parts of a frame converted at once
};

// Runs `parts` calls of `work(part)`, in any order, on up to nThreads threads,
// and returns when all are done.
using Runner = std::function<void(unsigned parts, const std::function<void(unsigned)> &work)>;

class Plan {
 public:
  // An empty string when the pair converts; otherwise why not.
  std::string build(const Side &in, const Side &out, int32_t width, int32_t height);
  // Converts one frame; false when the library refused a call (the caller
  // reads the reason from the log records it captured).
  bool run(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, const Options &options,
           const Runner &runner) const;
  size_t stepCount() const { return steps_.size(); }

 private:
  enum class Op { Convert, Expand, Compress };
  // Images: 0 the source frame, 1 the destination frame, 2... temporaries.
  struct Step {
    Op op;
    int dst, src;
  };
  struct Temp {
    Layout layout;
    std::vector<uint8_t> bytes;
  };
  int addTemp(Layout layout);
  Layout layoutOf(int image) const;
  bool addConvert(int dst, int src);
  void addScale(Op op, int dst, int src);
  bool runStep(const Step &step, const std::vector<TCS_FrameDesc> &images, const Options &options,
               const Runner &runner) const;

  Layout in_{}, out_{};
  int32_t width_ = 0, height_ = 0;
  mutable std::vector<Temp> temps_;  // scratch frames, rewritten by every run
  std::vector<Step> steps_;
};

}  // namespace tqgst
