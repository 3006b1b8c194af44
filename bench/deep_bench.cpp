// Deep-colour whole frames through the descriptor form (TCS_ColorConvFrameEx),
// as a host calls it, beside the best general-purpose peer conversion of the
// same work in the same run and beside memcpy of half the bytes the
// conversion reads and writes. Peers: libyuv's 10-bit conversions where it
// has one, otherwise FFmpeg's v210 decoder and encoder (libavcodec, one
// thread) and libswscale (BT.709 full range, bilinear, one thread). The
// library's tier is the one start-up chose (TCB_CPU_LEVEL forces one).
#include <TQColorSpace/TQColorSpace.h>
#include <benchmark/benchmark.h>

#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "deep_peers.hpp"

namespace {

// What a plane's samples hold: any bytes, 10-bit values in the top bits of
// 16-bit samples, 10-bit values in the low bits, or V210 words.
enum class Fill { Bytes, High10, Low10, V210 };

// A plane's row is width * num / den bytes; chroma planes of 4:2:0 hold half
// the rows.
struct PlaneSpec {
  int num, den;
  bool half_rows;
  Fill fill;
};
constexpr PlaneSpec kV210{8, 3, false, Fill::V210};
constexpr PlaneSpec kPacked8{2, 1, false, Fill::Bytes};
constexpr PlaneSpec kRGB32{4, 1, false, Fill::Bytes};
constexpr PlaneSpec kRGB48{6, 1, false, Fill::High10};
constexpr PlaneSpec kRGB64{8, 1, false, Fill::High10};
constexpr PlaneSpec kLuma16{2, 1, false, Fill::High10};
constexpr PlaneSpec kChroma422_16{1, 1, false, Fill::High10};
constexpr PlaneSpec kChroma420_16{1, 1, true, Fill::High10};

struct Plane {
  std::vector<uint8_t> bytes;
  int64_t pitch = 0;
  uint8_t *data() { return bytes.data(); }
  uint16_t *u16() { return reinterpret_cast<uint16_t *>(bytes.data()); }
  int samples() const { return static_cast<int>(pitch / 2); }
};

// Room past each plane's end for readers that may over-read (FFmpeg's
// packet padding).
constexpr size_t kPadding = 64;

Plane MakePlane(const PlaneSpec &s, int32_t w, int32_t h, uint32_t seed) {
  Plane p;
  p.pitch = int64_t{w} * s.num / s.den;
  const size_t size = size_t(p.pitch) * (s.half_rows ? h / 2 : h);
  p.bytes.assign(size + kPadding, 0);
  std::mt19937 rng(seed);
  for (size_t i = 0; i < size;) {
    const uint32_t r = rng();
    switch (s.fill) {
      case Fill::Bytes:
        p.bytes[i++] = static_cast<uint8_t>(r);
        break;
      case Fill::High10:
      case Fill::Low10: {
        const uint16_t v = uint16_t((r & 0x3ff) << (s.fill == Fill::High10 ? 6 : 0));
        std::memcpy(&p.bytes[i], &v, 2);
        i += 2;
        break;
      }
      case Fill::V210: {
        const uint32_t word = (r & 0x3fffffff);
        std::memcpy(&p.bytes[i], &word, 4);
        i += 4;
        break;
      }
    }
  }
  return p;
}

struct Frame {
  int32_t w, h;
  std::vector<Plane> src, dst;
  // The source planes with their 10-bit values in the low bits (for the
  // peers that read that layout), and 8-bit or 16-bit planar 4:2:2 scratch
  // planes for two-step peers.
  std::vector<Plane> low, scratch;
};

TCS_FrameDesc Desc(std::vector<Plane> &planes, int32_t code) {
  TCS_FrameDesc d{};
  for (size_t i = 0; i < planes.size(); ++i) d.plane[i] = {planes[i].data(), planes[i].pitch};
  d.format = code;
  return d;
}

#if TQCS_HAVE_FFMPEG
// One benchmark's FFmpeg objects, made on first use outside the timed loop's
// steady state and freed at its end.
class Tools {
 public:
  ~Tools() {
    sws_freeContext(sws_);
    avcodec_free_context(&codec_);
    av_frame_free(&frame_);
    av_packet_free(&packet_);
  }

  void Scale(int32_t w, int32_t h, AVPixelFormat from, const uint8_t *const src[],
             const int src_pitch[], AVPixelFormat to, uint8_t *const dst[], const int dst_pitch[]) {
    if (!sws_) {
      sws_ = sws_getContext(w, h, from, w, h, to, SWS_BILINEAR, nullptr, nullptr, nullptr);
      if (!sws_) throw std::runtime_error("sws_getContext");
      const int *bt709 = sws_getCoefficients(SWS_CS_ITU709);
      sws_setColorspaceDetails(sws_, bt709, 1, bt709, 1, 0, 1 << 16, 1 << 16);
    }
    sws_scale(sws_, src, src_pitch, 0, h, dst, dst_pitch);
  }

  // FFmpeg's v210 decoder on one frame; the result stays in its own buffer.
  const AVFrame *DecodeV210(Plane &src, int32_t w, int32_t h) {
    Open(AV_CODEC_ID_V210, false, w, h);
    packet_->buf = av_buffer_create(src.data(), int(src.bytes.size() - kPadding), NoFree, nullptr,
                                    AV_BUFFER_FLAG_READONLY);
    packet_->data = src.data();
    packet_->size = packet_->buf->size;
    Check(avcodec_send_packet(codec_, packet_), "send_packet");
    av_packet_unref(packet_);
    Check(avcodec_receive_frame(codec_, frame_), "receive_frame");
    return frame_;
  }

  // FFmpeg's v210 encoder from 10-bit planar 4:2:2 (yuv422p10le) straight
  // into dst: its packet buffer is the destination frame.
  void EncodeV210(std::vector<Plane> &planes, Plane &dst, int32_t w, int32_t h) {
    Open(AV_CODEC_ID_V210, true, w, h);
    av_frame_unref(frame_);
    frame_->format = AV_PIX_FMT_YUV422P10LE;
    frame_->width = w;
    frame_->height = h;
    for (int i = 0; i < 3; ++i) {
      frame_->buf[i] =
          av_buffer_create(planes[i].data(), int(planes[i].bytes.size()), NoFree, nullptr, 0);
      frame_->data[i] = planes[i].data();
      frame_->linesize[i] = int(planes[i].pitch);
    }
    codec_->opaque = &dst;
    Check(avcodec_send_frame(codec_, frame_), "send_frame");
    Check(avcodec_receive_packet(codec_, packet_), "receive_packet");
    av_packet_unref(packet_);
  }

 private:
  static void NoFree(void *, uint8_t *) {}
  static void Check(int err, const char *what) {
    if (err < 0) throw std::runtime_error(what);
  }
  static int IntoDestination(AVCodecContext *ctx, AVPacket *pkt, int) {
    Plane &dst = *static_cast<Plane *>(ctx->opaque);
    if (size_t(pkt->size) > dst.bytes.size() - kPadding) return AVERROR(EINVAL);
    pkt->buf = av_buffer_create(dst.data(), pkt->size, NoFree, nullptr, 0);
    pkt->data = dst.data();
    return 0;
  }

  void Open(AVCodecID id, bool encoder, int32_t w, int32_t h) {
    if (codec_) return;
    const AVCodec *c = encoder ? avcodec_find_encoder(id) : avcodec_find_decoder(id);
    if (!c || !(codec_ = avcodec_alloc_context3(c))) throw std::runtime_error("codec");
    codec_->width = w;
    codec_->height = h;
    codec_->thread_count = 1;
    codec_->time_base = {1, 25};
    codec_->pix_fmt = AV_PIX_FMT_YUV422P10LE;
    codec_->get_encode_buffer = IntoDestination;
    Check(avcodec_open2(codec_, c, nullptr), "avcodec_open2");
    frame_ = av_frame_alloc();
    packet_ = av_packet_alloc();
  }

  SwsContext *sws_ = nullptr;
  AVCodecContext *codec_ = nullptr;
  AVFrame *frame_ = nullptr;
  AVPacket *packet_ = nullptr;
};

// Planes as libswscale takes them.
struct SwsPlanes {
  std::array<uint8_t *, 4> data{};
  std::array<int, 4> pitch{};
  explicit SwsPlanes(std::vector<Plane> &planes) {
    for (size_t i = 0; i < planes.size(); ++i) {
      data[i] = planes[i].data();
      pitch[i] = int(planes[i].pitch);
    }
  }
  explicit SwsPlanes(const AVFrame *frame) {
    for (int i = 0; i < 3; ++i) {
      data[i] = frame->data[i];
      pitch[i] = frame->linesize[i];
    }
  }
};

void Scale(Tools &t, Frame &f, AVPixelFormat from, SwsPlanes src, AVPixelFormat to, SwsPlanes dst) {
  t.Scale(f.w, f.h, from, src.data.data(), src.pitch.data(), to, dst.data.data(), dst.pitch.data());
}
#else
struct Tools {};
#endif

using PeerFn = std::function<void(Frame &, Tools &)>;
struct Peer {
  const char *name;
  PeerFn run;
};

struct Conversion {
  const char *name;
  std::vector<PlaneSpec> src, dst;
  int32_t src_code, dst_code;
  bool repack;  // a pure repack: held to 0.85 of memcpy
  std::vector<Peer> peers;
};

const TCS_APIStu &Api() { return *TCS_GetAPIStuPtr(); }

std::vector<Conversion> MakeConversions() {
  const std::vector<PlaneSpec> yuv420_16{kLuma16, kChroma420_16, kChroma420_16};
  const std::vector<PlaneSpec> yuv422_16{kLuma16, kChroma422_16, kChroma422_16};
  std::vector<Conversion> all = {
      {"V210_to_UYVY", {kV210}, {kPacked8}, TCS_FORMAT_V210, TCS_FORMAT_YUV16_SWAP, true, {}},
      {"V210_to_YUV422_16", {kV210}, yuv422_16, TCS_FORMAT_V210, TCS_FORMAT_YUV422_10BIT, true, {}},
      {"YUV420_16_to_RGB64",
       yuv420_16,
       {kRGB64},
       TCS_FORMAT_YUV420_10BIT_FRAME,
       TCS_FORMAT_RGB64,
       false,
       {}},
      {"YUV420_16_to_RGB32",
       yuv420_16,
       {kRGB32},
       TCS_FORMAT_YUV420_10BIT_FRAME,
       TCS_FORMAT_RGB32,
       false,
       {}},
      {"RGB48_to_V210", {kRGB48}, {kV210}, TCS_FORMAT_RGB48_SWAP, TCS_FORMAT_V210, false, {}},
      {"YUV420_16_to_YUV422_16",
       yuv420_16,
       yuv422_16,
       TCS_FORMAT_YUV420_10BIT_FRAME,
       TCS_FORMAT_YUV422_10BIT,
       false,
       {}},
  };
#if TQCS_HAVE_FFMPEG
  all[0].peers.push_back({"ffmpeg", [](Frame &f, Tools &t) {
                            const AVFrame *yuv = t.DecodeV210(f.src[0], f.w, f.h);
                            Scale(t, f, AV_PIX_FMT_YUV422P10LE, SwsPlanes(yuv), AV_PIX_FMT_UYVY422,
                                  SwsPlanes(f.dst));
                          }});
  all[1].peers.push_back({"ffmpeg", [](Frame &f, Tools &t) { t.DecodeV210(f.src[0], f.w, f.h); }});
  all[2].peers.push_back({"swscale", [](Frame &f, Tools &t) {
                            Scale(t, f, AV_PIX_FMT_YUV420P16LE, SwsPlanes(f.src),
                                  AV_PIX_FMT_BGRA64LE, SwsPlanes(f.dst));
                          }});
  all[3].peers.push_back({"swscale", [](Frame &f, Tools &t) {
                            Scale(t, f, AV_PIX_FMT_YUV420P16LE, SwsPlanes(f.src), AV_PIX_FMT_BGRA,
                                  SwsPlanes(f.dst));
                          }});
  all[4].peers.push_back({"ffmpeg", [](Frame &f, Tools &t) {
                            Scale(t, f, AV_PIX_FMT_RGB48LE, SwsPlanes(f.src),
                                  AV_PIX_FMT_YUV422P10LE, SwsPlanes(f.scratch));
                            t.EncodeV210(f.scratch, f.dst[0], f.w, f.h);
                          }});
  all[5].peers.push_back({"swscale", [](Frame &f, Tools &t) {
                            Scale(t, f, AV_PIX_FMT_YUV420P16LE, SwsPlanes(f.src),
                                  AV_PIX_FMT_YUV422P16LE, SwsPlanes(f.dst));
                          }});
#endif
#if TQCS_HAVE_FFMPEG && TQCS_HAVE_LIBYUV
  // FFmpeg's decoder, then the peer's 10-to-8-bit planar move and its packer.
  all[0].peers.push_back(
      {"ffmpeg_libyuv", [](Frame &f, Tools &t) {
         const AVFrame *yuv = t.DecodeV210(f.src[0], f.w, f.h);
         const auto *p = reinterpret_cast<uint16_t *const *>(yuv->data);
         std::vector<Plane> &s = f.scratch;
         libyuv::I210ToI422(p[0], yuv->linesize[0] / 2, p[1], yuv->linesize[1] / 2, p[2],
                            yuv->linesize[2] / 2, s[0].data(), f.w, s[1].data(), f.w / 2,
                            s[2].data(), f.w / 2, f.w, f.h);
         libyuv::I422ToUYVY(s[0].data(), f.w, s[1].data(), f.w / 2, s[2].data(), f.w / 2,
                            f.dst[0].data(), int(f.dst[0].pitch), f.w, f.h);
       }});
#endif
#if TQCS_HAVE_LIBYUV
  all[3].peers.push_back({"libyuv", [](Frame &f, Tools &) {
                            std::vector<Plane> &l = f.low;
                            libyuv::I010ToARGBMatrix(l[0].u16(), l[0].samples(), l[1].u16(),
                                                     l[1].samples(), l[2].u16(), l[2].samples(),
                                                     f.dst[0].data(), int(f.dst[0].pitch),
                                                     &libyuv::kYuvF709Constants, f.w, f.h);
                          }});
#endif
  return all;
}

const std::vector<Conversion> &Conversions() {
  static const std::vector<Conversion> all = MakeConversions();
  return all;
}

Frame MakeFrame(const Conversion &c, int32_t w, int32_t h) {
  Frame f{w, h, {}, {}, {}, {}};
  uint32_t seed = 1;
  for (const PlaneSpec &s : c.src) {
    f.src.push_back(MakePlane(s, w, h, seed));
    PlaneSpec low = s;
    if (low.fill == Fill::High10) low.fill = Fill::Low10;
    f.low.push_back(MakePlane(low, w, h, seed++));
  }
  for (const PlaneSpec &s : c.dst) f.dst.push_back(MakePlane(s, w, h, 0));
  // 16-bit planar 4:2:2: room for the 8-bit planes too.
  for (const PlaneSpec &s : {kLuma16, kChroma422_16, kChroma422_16})
    f.scratch.push_back(MakePlane(s, w, h, 0));
  return f;
}

size_t BytesMoved(const Frame &f) {
  size_t n = 0;
  for (const auto *planes : {&f.src, &f.dst})
    for (const Plane &p : *planes) n += p.bytes.size() - kPadding;
  return n;
}

enum class Side { Ours, Peer, Memcpy };

void Run(benchmark::State &state, const Conversion &c, Side side, const Peer *peer, int32_t w,
         int32_t h) {
  Frame f = MakeFrame(c, w, h);
  const size_t moved = BytesMoved(f);
  std::vector<uint8_t> a(moved / 2, 1), b(moved / 2);
  const TCS_FrameDesc dst = Desc(f.dst, c.dst_code), src = Desc(f.src, c.src_code);
  Tools tools;
  for (auto _ : state) {
    switch (side) {
      case Side::Ours:
        if (!Api().pGeneral->TCS_ColorConvFrameEx(&dst, &src, TCS_MATRIX_HD, w, h, 0)) {
          state.SkipWithError("the conversion was refused");
          return;
        }
        break;
      case Side::Memcpy:
        std::memcpy(b.data(), a.data(), a.size());
        break;
      case Side::Peer:
        try {
          peer->run(f, tools);
        } catch (const std::exception &e) {
          state.SkipWithError(e.what());
          return;
        }
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(moved));
  state.counters["repack"] = c.repack;
}

const bool g_registered = [] {
  const struct {
    const char *name;
    int32_t w, h;
  } sizes[] = {{"1080p", 1920, 1080}, {"2160p", 3840, 2160}};
  auto add = [](const std::string &name, auto fn) {
    benchmark::RegisterBenchmark(name.c_str(), fn)->Unit(benchmark::kMillisecond)->UseRealTime();
  };
  for (const auto &size : sizes)
    for (const Conversion &c : Conversions()) {
      const std::string row = std::string("deep/") + c.name + "/" + size.name + "/";
      const int32_t w = size.w, h = size.h;
      add(row + "tqcs",
          [&c, w, h](benchmark::State &st) { Run(st, c, Side::Ours, nullptr, w, h); });
      for (const Peer &p : c.peers)
        add(row + p.name,
            [&c, &p, w, h](benchmark::State &st) { Run(st, c, Side::Peer, &p, w, h); });
      add(row + "memcpy",
          [&c, w, h](benchmark::State &st) { Run(st, c, Side::Memcpy, nullptr, w, h); });
    }
  return true;
}();

}  // namespace
