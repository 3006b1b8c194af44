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

// The library's side of a format: its code for progressive frames and for
// interleaved fields (they differ where 4:2:0 chroma is sited per field), and
// its sampling. The gray drivers have no code.
struct Layout {
  int32_t code;       // TCS_FORMAT_*, or kGrayCode
  int32_t fieldCode;  // the code of the same bytes sited per field
  Sampling sampling;
};
inline constexpr int32_t kGrayCode = -1;

inline bool isYuv(const Layout &l) {
  return l.sampling == Sampling::C444 || l.sampling == Sampling::C422 ||
         l.sampling == Sampling::C420;
}

// Whether the library converts a code at all (some route to or from it).
bool converts(int32_t code);
// The 8-bit RGB codes, the only ones the grey drivers read.
inline bool isByteRgb(int32_t code) {
  return code == TCS_FORMAT_RGB32 || code == TCS_FORMAT_RGB32_SWAP || code == TCS_FORMAT_RGB24 ||
         code == TCS_FORMAT_RGB24_SWAP;
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

// One side of a conversion as negotiated.
struct Side {
  Layout layout;
  bool limited;  // video range (YUV only); the library's YUV is full range
};

// Runs `parts` calls of `work(part)`, in any order, on up to that many
// threads, and returns when all are done.
using Runner = std::function<void(unsigned parts, const std::function<void(unsigned)> &work)>;

class Plan {
 public:
  // An empty string when the pair converts; otherwise why not. `fields`:
  // the frames hold two interleaved fields.
  std::string build(const Side &in, const Side &out, int32_t width, int32_t height, bool fields);
  // Converts one frame in up to `parts` bands of rows at once; false when the
  // library refused a call (the caller reads the reason from the log records
  // it captured). Bands are taken for a step only where, on the frames'
  // pitches, they gave the bytes of one call.
  bool run(const TCS_FrameDesc &dst, const TCS_FrameDesc &src, unsigned parts,
           const Runner &runner) const;
  size_t stepCount() const { return steps_.size(); }
  int32_t matrix = TCS_MATRIX_HD;

 private:
  enum class Op { Convert, Gray, Expand, Compress };
  // How a step may be cut: not yet seen, one call, bands, or bands whose
  // seams are converted again with rows either side (kernels that read rows
  // or pixels beyond a band's edge).
  enum class Cut { Unknown, Whole, Bands, Seams };
  // Images: 0 the source frame, 1 the destination frame, 2... temporaries.
  struct Step {
    Op op;
    int dst, src;
    mutable Cut cut = Cut::Unknown;
  };
  int addTemp(int32_t code);
  int32_t codeOf(int image) const { return images_[image].format; }
  bool addConvert(int dst, int src);
  void addScale(Op op, int dst, int src);
  bool call(const Step &step, const TCS_FrameDesc &dst, const TCS_FrameDesc &src,
            int32_t rows) const;
  bool runBands(const Step &step, const TCS_FrameDesc &dst, const TCS_FrameDesc &src, int32_t rows,
                unsigned parts, Cut cut, const Runner &runner) const;
  Cut probeCut(const Step &step, const TCS_FrameDesc &dst, const TCS_FrameDesc &src) const;

  int32_t width_ = 0, height_ = 0;
  std::vector<std::vector<uint8_t>> temps_;  // scratch frames, rewritten by every run
  mutable std::vector<TCS_FrameDesc> images_;
  mutable std::vector<uint8_t> seams_;  // the seams' rows, converted again
  std::vector<Step> steps_;
};

}  // namespace tqgst
