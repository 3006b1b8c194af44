// tqcsconvert: a GstVideoFilter that converts the pixel format of raw video
// through TQColorSpace, field by field where the caps or the buffer say the
// frame is interlaced, with the matrix and range of the caps' colorimetry.
#include <TQCPUBase.h>
#include <gst/gst.h>
#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>

#include "../../tools/thread_pool.hpp"  // the command-line tool's pool, shared
#include "engine.hpp"

GST_DEBUG_CATEGORY_STATIC(tqcs_debug);
#define GST_CAT_DEFAULT tqcs_debug

namespace {

using tqgst::kGrayCode;
using tqgst::Layout;
using tqgst::Sampling;

// Every format the element can offer, with the library's layout of it; it is
// offered where the library converts its code. A format the library learns to
// convert is one more line here.
struct FormatEntry {
  GstVideoFormat gst;
  Layout layout;
};
constexpr FormatEntry kFormats[] = {
    {GST_VIDEO_FORMAT_BGRA, {TCS_FORMAT_RGB32, TCS_FORMAT_RGB32, Sampling::Rgb}},
    {GST_VIDEO_FORMAT_RGBA, {TCS_FORMAT_RGB32_SWAP, TCS_FORMAT_RGB32_SWAP, Sampling::Rgb}},
    {GST_VIDEO_FORMAT_BGR, {TCS_FORMAT_RGB24, TCS_FORMAT_RGB24, Sampling::Rgb}},
    {GST_VIDEO_FORMAT_RGB, {TCS_FORMAT_RGB24_SWAP, TCS_FORMAT_RGB24_SWAP, Sampling::Rgb}},
    {GST_VIDEO_FORMAT_YUY2, {TCS_FORMAT_YUV16, TCS_FORMAT_YUV16, Sampling::C422}},
    {GST_VIDEO_FORMAT_UYVY, {TCS_FORMAT_YUV16_SWAP, TCS_FORMAT_YUV16_SWAP, Sampling::C422}},
    {GST_VIDEO_FORMAT_Y42B, {TCS_FORMAT_YUV422, TCS_FORMAT_YUV422, Sampling::C422}},
    {GST_VIDEO_FORMAT_I420, {TCS_FORMAT_YUV420_FRAME, TCS_FORMAT_YUV420, Sampling::C420}},
    {GST_VIDEO_FORMAT_v308, {TCS_FORMAT_YUV, TCS_FORMAT_YUV, Sampling::C444}},
    {GST_VIDEO_FORMAT_GRAY8, {kGrayCode, kGrayCode, Sampling::Gray}},
    {GST_VIDEO_FORMAT_NV12, {TCS_FORMAT_NV12_FRAME, TCS_FORMAT_NV12, Sampling::C420}},
    {GST_VIDEO_FORMAT_NV16, {TCS_FORMAT_NV16, TCS_FORMAT_NV16, Sampling::C422}},
    {GST_VIDEO_FORMAT_v210, {TCS_FORMAT_V210, TCS_FORMAT_V210, Sampling::C422}},
    {GST_VIDEO_FORMAT_Y210, {TCS_FORMAT_YUV16_10BIT, TCS_FORMAT_YUV16_10BIT, Sampling::C422}},
    {GST_VIDEO_FORMAT_P010_10LE, {TCS_FORMAT_P010_FRAME, TCS_FORMAT_P010, Sampling::C420}},
    {GST_VIDEO_FORMAT_I420_10LE,
     {TCS_FORMAT_YUV420_10BIT_LOW_FRAME, TCS_FORMAT_YUV420_10BIT_LOW, Sampling::C420}},
    {GST_VIDEO_FORMAT_I422_10LE,
     {TCS_FORMAT_YUV422_10BIT_LOW, TCS_FORMAT_YUV422_10BIT_LOW, Sampling::C422}},
    {GST_VIDEO_FORMAT_BGRA64_LE, {TCS_FORMAT_RGB64, TCS_FORMAT_RGB64, Sampling::Rgb}},
    {GST_VIDEO_FORMAT_RGBA64_LE, {TCS_FORMAT_RGB64_SWAP, TCS_FORMAT_RGB64_SWAP, Sampling::Rgb}},
};

// The formats the element offers: those whose codes the library converts.
const std::vector<const FormatEntry *> &offered() {
  static const std::vector<const FormatEntry *> formats = [] {
    std::vector<const FormatEntry *> out;
    for (const FormatEntry &e : kFormats)
      if (e.layout.code == kGrayCode || tqgst::converts(e.layout.code) ||
          tqgst::converts(e.layout.fieldCode))
        out.push_back(&e);
    return out;
  }();
  return formats;
}

const FormatEntry *findFormat(GstVideoFormat f) {
  for (const FormatEntry *e : offered())
    if (e->gst == f) return e;
  return nullptr;
}
const FormatEntry *findFormat(const gchar *name) {
  return name ? findFormat(gst_video_format_from_string(name)) : nullptr;
}
// The library converts nothing from grey: it is an output only.
bool acceptedAsInput(const FormatEntry &e) { return e.layout.sampling != Sampling::Gray; }
// Grey is written from 8-bit RGB only.
bool reachable(const FormatEntry &in, const FormatEntry &out) {
  return out.layout.sampling != Sampling::Gray || tqgst::isByteRgb(in.layout.code);
}

// Property values.
enum Fields { FIELDS_AUTO, FIELDS_PROGRESSIVE, FIELDS_INTERLACED };
enum MatrixChoice { MATRIX_AUTO, MATRIX_SD, MATRIX_HD, MATRIX_UHD };
enum RangeChoice { RANGE_AUTO, RANGE_FULL, RANGE_LIMITED };

std::string utf8(const char16_t *s) {
  if (!s) return {};
  gchar *u = g_utf16_to_utf8(reinterpret_cast<const gunichar2 *>(s), -1, nullptr, nullptr, nullptr);
  std::string out = u ? u : "";
  g_free(u);
  return out;
}

// The sink the process had before the plug-in loaded, which still gets every
// record the element does not keep to itself.
struct PreviousSink {
  TCB_LogSink sink = nullptr;
  void *context = nullptr;
} previousSink;

// Every record of the library, whatever its level, reaches the tqcs category.
void logSink(void *, int32_t level, const char16_t *file, const char16_t *function,
             const char16_t *format, const char16_t *message) {
  const std::string text = utf8(file) + ": " + utf8(function) + ": " + utf8(message);
  const GstDebugLevel gstLevel = level == 0   ? GST_LEVEL_INFO
                                 : level == 1 ? GST_LEVEL_WARNING
                                 : level == 3 ? GST_LEVEL_ERROR
                                              : GST_LEVEL_LOG;
  tqgst::Capture *capture = tqgst::currentCapture();
  if (!capture || !capture->quiet)
    GST_CAT_LEVEL_LOG(tqcs_debug, gstLevel, nullptr, "%s", text.c_str());
  if (capture) capture->note(level, text);
  if (previousSink.sink && (!capture || !capture->quiet))
    previousSink.sink(previousSink.context, level, file, function, format, message);
}

}  // namespace

G_BEGIN_DECLS
#define GST_TYPE_TQCS_CONVERT (gst_tqcs_convert_get_type())
G_DECLARE_FINAL_TYPE(GstTqcsConvert, gst_tqcs_convert, GST, TQCS_CONVERT, GstVideoFilter)
G_END_DECLS

struct _GstTqcsConvert {
  GstVideoFilter parent;
  // Properties.
  gint fields;
  gint matrixChoice;
  gint inRange, outRange;
  guint nThreads;
  // Negotiated: the plans for progressive frames (0) and for interleaved
  // fields (1), each built when the caps say such frames may come.
  const FormatEntry *in, *out;
  tqgst::Plan *plans[2];
  bool planned[2];
  unsigned parts;
  tqcs::ThreadPool *pool;
};

G_DEFINE_TYPE(GstTqcsConvert, gst_tqcs_convert, GST_TYPE_VIDEO_FILTER)

enum { PROP_0, PROP_FIELDS, PROP_MATRIX, PROP_INPUT_RANGE, PROP_OUTPUT_RANGE, PROP_N_THREADS };

namespace {

GType enumType(GType *type, const char *name, const GEnumValue *values) {
  if (g_once_init_enter(type)) g_once_init_leave(type, g_enum_register_static(name, values));
  return *type;
}
GType fieldsType() {
  static GType type = 0;
  static const GEnumValue values[] = {
      {FIELDS_AUTO, "From the caps and the buffer's interlaced flag", "auto"},
      {FIELDS_PROGRESSIVE, "Every frame as one picture", "progressive"},
      {FIELDS_INTERLACED, "Every frame as two fields", "interlaced"},
      {0, nullptr, nullptr}};
  return enumType(&type, "GstTqcsFields", values);
}
GType matrixType() {
  static GType type = 0;
  static const GEnumValue values[] = {{MATRIX_AUTO, "From the caps' colorimetry", "auto"},
                                      {MATRIX_SD, "SD (BT.601)", "sd"},
                                      {MATRIX_HD, "HD (BT.709)", "hd"},
                                      {MATRIX_UHD, "UHD (BT.2020)", "uhd"},
                                      {0, nullptr, nullptr}};
  return enumType(&type, "GstTqcsMatrix", values);
}
GType rangeType() {
  static GType type = 0;
  static const GEnumValue values[] = {{RANGE_AUTO, "From the caps' colorimetry", "auto"},
                                      {RANGE_FULL, "Full range (0-255)", "full"},
                                      {RANGE_LIMITED, "Video range (16-235, 16-240)", "limited"},
                                      {0, nullptr, nullptr}};
  return enumType(&type, "GstTqcsRange", values);
}

GstCaps *templateCaps(bool inputs) {
  GValue list = G_VALUE_INIT, item = G_VALUE_INIT;
  g_value_init(&list, GST_TYPE_LIST);
  g_value_init(&item, G_TYPE_STRING);
  for (const FormatEntry *e : offered()) {
    if (inputs && !acceptedAsInput(*e)) continue;
    g_value_set_static_string(&item, gst_video_format_to_string(e->gst));
    gst_value_list_append_value(&list, &item);
  }
  GstCaps *caps = gst_caps_from_string(
      "video/x-raw, width=(int)[1, 2147483647], height=(int)[1, 2147483647], "
      "framerate=(fraction)[0/1, 2147483647/1]");
  gst_structure_take_value(gst_caps_get_structure(caps, 0), "format", &list);
  g_value_unset(&item);
  return caps;
}

// The formats a structure's format field names (all of them when it has none).
std::vector<const FormatEntry *> formatsOf(const GstStructure *s) {
  std::vector<const FormatEntry *> out;
  const GValue *v = gst_structure_get_value(s, "format");
  if (!v) {
    out = offered();
  } else if (G_VALUE_HOLDS_STRING(v)) {
    if (const FormatEntry *e = findFormat(g_value_get_string(v))) out.push_back(e);
  } else if (GST_VALUE_HOLDS_LIST(v)) {
    for (guint i = 0; i < gst_value_list_get_size(v); ++i) {
      const GValue *item = gst_value_list_get_value(v, i);
      if (G_VALUE_HOLDS_STRING(item))
        if (const FormatEntry *e = findFormat(g_value_get_string(item))) out.push_back(e);
    }
  }
  return out;
}

// The formats on the other side of the element from `known`: the known
// formats themselves first (so that passthrough is preferred), then the rest.
void setOtherFormats(GstStructure *s, const std::vector<const FormatEntry *> &known,
                     GstPadDirection direction) {
  GValue list = G_VALUE_INIT, item = G_VALUE_INIT;
  g_value_init(&list, GST_TYPE_LIST);
  g_value_init(&item, G_TYPE_STRING);
  auto append = [&](const FormatEntry &e) {
    g_value_set_static_string(&item, gst_video_format_to_string(e.gst));
    gst_value_list_append_value(&list, &item);
  };
  auto pairs = [&](const FormatEntry &other) {
    for (const FormatEntry *k : known)
      if (direction == GST_PAD_SINK ? reachable(*k, other)
                                    : acceptedAsInput(other) && reachable(other, *k))
        return true;
    return false;
  };
  for (const FormatEntry *k : known)
    if (pairs(*k)) append(*k);
  for (const FormatEntry *e : offered())
    if (std::find(known.begin(), known.end(), e) == known.end() && pairs(*e)) append(*e);
  gst_structure_take_value(s, "format", &list);
  g_value_unset(&item);
}

GstCaps *transformCaps(GstBaseTransform *, GstPadDirection direction, GstCaps *caps,
                       GstCaps *filter) {
  GstCaps *result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
    const GstStructure *in = gst_caps_get_structure(caps, i);
    const std::vector<const FormatEntry *> known = formatsOf(in);
    if (known.empty()) continue;
    GstStructure *s = gst_structure_copy(in);
    gst_structure_remove_fields(s, "format", "colorimetry", "chroma-site", nullptr);
    setOtherFormats(s, known, direction);
    result = gst_caps_merge_structure_full(result, s,
                                           gst_caps_features_copy(gst_caps_get_features(caps, i)));
  }
  if (filter) {
    GstCaps *both = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(result);
    result = both;
  }
  return result;
}

int32_t matrixByChoice(gint choice) {
  return choice == MATRIX_SD    ? TCS_MATRIX_SD
         : choice == MATRIX_UHD ? TCS_MATRIX_UHD
                                : TCS_MATRIX_HD;
}
GstVideoColorMatrix gstMatrix(gint choice) {
  return choice == MATRIX_SD    ? GST_VIDEO_COLOR_MATRIX_BT601
         : choice == MATRIX_UHD ? GST_VIDEO_COLOR_MATRIX_BT2020
                                : GST_VIDEO_COLOR_MATRIX_BT709;
}
// SD below 1280x720, HD from there up, when nothing says otherwise.
gint choiceBySize(gint width, gint height) {
  return width >= 1280 || height >= 720 ? MATRIX_HD : MATRIX_SD;
}

// The colorimetry the element writes for a YUV output: the input's when it is
// YUV as well, the default for the size otherwise, with the properties over
// either.
GstVideoColorimetry outputColorimetry(GstTqcsConvert *self, const GstVideoInfo &in,
                                      GstVideoFormat outFormat) {
  GstVideoInfo info;
  gst_video_info_set_format(&info, outFormat, GST_VIDEO_INFO_WIDTH(&in),
                            GST_VIDEO_INFO_HEIGHT(&in));
  GstVideoColorimetry c = GST_VIDEO_INFO_IS_YUV(&in) ? in.colorimetry : info.colorimetry;
  if (self->matrixChoice != MATRIX_AUTO) c.matrix = gstMatrix(self->matrixChoice);
  if (self->outRange != RANGE_AUTO)
    c.range =
        self->outRange == RANGE_FULL ? GST_VIDEO_COLOR_RANGE_0_255 : GST_VIDEO_COLOR_RANGE_16_235;
  return c;
}

// The first format the peer of the source pad names that `s` allows.
const gchar *downstreamFirst(GstBaseTransform *trans, const GstStructure *s) {
  GstCaps *peer = gst_pad_peer_query_caps(GST_BASE_TRANSFORM_SRC_PAD(trans), nullptr);
  const gchar *first = nullptr;
  const GValue *allowed = gst_structure_get_value(s, "format");
  for (guint i = 0; peer && allowed && !first && i < gst_caps_get_size(peer); ++i) {
    const GstStructure *p = gst_caps_get_structure(peer, i);
    if (!gst_structure_has_field(p, "format")) continue;
    for (const FormatEntry *e : formatsOf(p)) {
      GValue v = G_VALUE_INIT;
      g_value_init(&v, G_TYPE_STRING);
      g_value_set_static_string(&v, gst_video_format_to_string(e->gst));
      const bool ok = gst_value_intersect(nullptr, &v, allowed);
      g_value_unset(&v);
      if (ok) {
        first = gst_video_format_to_string(e->gst);
        break;
      }
    }
  }
  if (peer) gst_caps_unref(peer);
  return first;
}

GstCaps *fixateCaps(GstBaseTransform *trans, GstPadDirection direction, GstCaps *caps,
                    GstCaps *othercaps) {
  othercaps = gst_caps_make_writable(gst_caps_truncate(othercaps));
  GstStructure *s = gst_caps_get_structure(othercaps, 0);
  // The downstream's first choice of format (the intersection is in the
  // element's order, the input's own format first).
  if (const gchar *first = direction == GST_PAD_SINK ? downstreamFirst(trans, s) : nullptr)
    gst_structure_fixate_field_string(s, "format", first);
  else
    gst_structure_fixate_field(s, "format");
  GstVideoInfo in;
  const FormatEntry *out = findFormat(gst_structure_get_string(s, "format"));
  if (direction == GST_PAD_SINK && out && gst_video_info_from_caps(&in, caps) &&
      tqgst::isYuv(out->layout)) {
    const GstVideoColorimetry c = outputColorimetry(GST_TQCS_CONVERT(trans), in, out->gst);
    gchar *text = gst_video_colorimetry_to_string(&c);
    if (text && gst_structure_has_field(s, "colorimetry"))
      gst_structure_fixate_field_string(s, "colorimetry", text);
    else if (text)
      gst_structure_set(s, "colorimetry", G_TYPE_STRING, text, nullptr);
    g_free(text);
  }
  return gst_caps_fixate(othercaps);
}

// The library's matrix for the YUV side's colorimetry; -1 for one it lacks.
int32_t matrixOf(const GstVideoInfo &yuv) {
  switch (yuv.colorimetry.matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
      return TCS_MATRIX_SD;
    case GST_VIDEO_COLOR_MATRIX_BT709:
      return TCS_MATRIX_HD;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
      return TCS_MATRIX_UHD;
    case GST_VIDEO_COLOR_MATRIX_UNKNOWN:
      return matrixByChoice(choiceBySize(GST_VIDEO_INFO_WIDTH(&yuv), GST_VIDEO_INFO_HEIGHT(&yuv)));
    default:
      return -1;
  }
}

bool limitedOf(const GstVideoInfo &info, const FormatEntry &f, gint choice) {
  if (!tqgst::isYuv(f.layout)) return false;
  if (choice != RANGE_AUTO) return choice == RANGE_LIMITED;
  return info.colorimetry.range != GST_VIDEO_COLOR_RANGE_0_255;
}

const char *nameOf(const FormatEntry *f) { return f ? gst_video_format_to_string(f->gst) : "?"; }

gboolean setInfo(GstVideoFilter *filter, GstCaps *, GstVideoInfo *inInfo, GstCaps *,
                 GstVideoInfo *outInfo) {
  GstTqcsConvert *self = GST_TQCS_CONVERT(filter);
  self->in = findFormat(GST_VIDEO_INFO_FORMAT(inInfo));
  self->out = findFormat(GST_VIDEO_INFO_FORMAT(outInfo));
  std::string reason;
  if (!self->in || !self->out) {
    reason = "format not offered";
  } else if (GST_VIDEO_INFO_INTERLACE_MODE(inInfo) == GST_VIDEO_INTERLACE_MODE_ALTERNATE) {
    reason = "fields in separate buffers (interlace-mode alternate) are not converted";
  } else {
    const bool inYuv = tqgst::isYuv(self->in->layout), outYuv = tqgst::isYuv(self->out->layout);
    const int32_t matrix = self->matrixChoice != MATRIX_AUTO ? matrixByChoice(self->matrixChoice)
                           : inYuv && !outYuv                ? matrixOf(*inInfo)
                           : outYuv && !inYuv
                               ? matrixOf(*outInfo)
                               : matrixByChoice(choiceBySize(GST_VIDEO_INFO_WIDTH(inInfo),
                                                             GST_VIDEO_INFO_HEIGHT(inInfo)));
    const GstVideoInterlaceMode mode = GST_VIDEO_INFO_INTERLACE_MODE(inInfo);
    GST_OBJECT_LOCK(self);
    const gint fields = self->fields;
    self->parts = MAX(1u, self->nThreads);
    GST_OBJECT_UNLOCK(self);
    // Which kinds of frame the caps let come: progressive, interleaved fields
    // or (mixed) either, unless a property forces one.
    self->planned[0] = fields == FIELDS_PROGRESSIVE ||
                       (fields == FIELDS_AUTO && mode != GST_VIDEO_INTERLACE_MODE_INTERLEAVED);
    self->planned[1] = fields == FIELDS_INTERLACED ||
                       (fields == FIELDS_AUTO && mode != GST_VIDEO_INTERLACE_MODE_PROGRESSIVE);
    if (matrix < 0) {
      reason = "the colorimetry's matrix is none of bt601, bt709 and bt2020";
    } else {
      const tqgst::Side in{self->in->layout, limitedOf(*inInfo, *self->in, self->inRange)};
      const tqgst::Side out{self->out->layout, limitedOf(*outInfo, *self->out, self->outRange)};
      // The same format in the same range passes through, whatever its size.
      const bool same = self->in == self->out && in.limited == out.limited;
      gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), same);
      for (int f = 0; f < 2 && !same && reason.empty(); ++f)
        if (self->planned[f]) {
          self->plans[f]->matrix = matrix;
          reason = self->plans[f]->build(in, out, GST_VIDEO_INFO_WIDTH(inInfo),
                                         GST_VIDEO_INFO_HEIGHT(inInfo), f == 1);
        }
    }
    if (self->parts > 1 && (!self->pool || unsigned(self->pool->Size()) != self->parts)) {
      delete self->pool;
      self->pool = new tqcs::ThreadPool(int(self->parts));
    }
  }
  if (!reason.empty()) {
    GST_ELEMENT_ERROR(self, CORE, NEGOTIATION,
                      ("cannot convert %s to %s at %dx%d", nameOf(self->in), nameOf(self->out),
                       GST_VIDEO_INFO_WIDTH(inInfo), GST_VIDEO_INFO_HEIGHT(inInfo)),
                      ("%s", reason.c_str()));
    return FALSE;
  }
  GST_INFO_OBJECT(self, "%s to %s: %zu library steps%s", nameOf(self->in), nameOf(self->out),
                  self->plans[self->planned[0] ? 0 : 1]->stepCount(),
                  self->planned[0] && self->planned[1] ? ", progressive and interlaced" : "");
  return TRUE;
}

TCS_FrameDesc describe(GstVideoFrame *frame, const FormatEntry &f) {
  TCS_FrameDesc d{};
  d.format = f.layout.code;
  for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(frame) && p < 4; ++p)
    d.plane[p] = {static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(frame, p)),
                  GST_VIDEO_FRAME_PLANE_STRIDE(frame, p)};
  return d;
}

GstFlowReturn transformFrame(GstVideoFilter *filter, GstVideoFrame *inFrame,
                             GstVideoFrame *outFrame) {
  GstTqcsConvert *self = GST_TQCS_CONVERT(filter);
  // Interleaved fields where the caps or, with mixed caps, the buffer say so
  // (or the property forced them). The field order says which field comes
  // first in time; the rows of each field, and so where its chroma sits, are
  // the same either way.
  const int kind = self->planned[0] && self->planned[1] ? GST_VIDEO_FRAME_IS_INTERLACED(inFrame)
                   : self->planned[1]                   ? 1
                                                        : 0;
  GST_LOG_OBJECT(
      self, "%s frame%s", kind ? "interlaced" : "progressive",
      kind ? (GST_VIDEO_FRAME_IS_TFF(inFrame) ? ", top field first" : ", bottom field first") : "");
  tqgst::Capture capture;
  bool ok;
  {
    tqgst::ScopedCapture scope(&capture);
    const tqgst::Runner runner = [&](unsigned parts, const std::function<void(unsigned)> &work) {
      self->pool->ParallelFor(parts, [&](size_t part) {
        tqgst::ScopedCapture worker(&capture);
        work(unsigned(part));
      });
    };
    ok = self->plans[kind]->run(describe(outFrame, *self->out), describe(inFrame, *self->in),
                                self->parts, runner);
  }
  if (!ok || !capture.reason.empty()) {
    GST_ELEMENT_ERROR(self, STREAM, FAILED,
                      ("could not convert %s to %s", nameOf(self->in), nameOf(self->out)),
                      ("%s", capture.reason.empty() ? "the library refused the conversion"
                                                    : capture.reason.c_str()));
    return GST_FLOW_ERROR;
  }
  return GST_FLOW_OK;
}

void setProperty(GObject *object, guint id, const GValue *value, GParamSpec *pspec) {
  GstTqcsConvert *self = GST_TQCS_CONVERT(object);
  GST_OBJECT_LOCK(self);
  switch (id) {
    case PROP_FIELDS:
      self->fields = g_value_get_enum(value);
      break;
    case PROP_MATRIX:
      self->matrixChoice = g_value_get_enum(value);
      break;
    case PROP_INPUT_RANGE:
      self->inRange = g_value_get_enum(value);
      break;
    case PROP_OUTPUT_RANGE:
      self->outRange = g_value_get_enum(value);
      break;
    case PROP_N_THREADS:
      self->nThreads = g_value_get_uint(value);
      break;
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
  GST_OBJECT_UNLOCK(self);
}

void getProperty(GObject *object, guint id, GValue *value, GParamSpec *pspec) {
  GstTqcsConvert *self = GST_TQCS_CONVERT(object);
  GST_OBJECT_LOCK(self);
  switch (id) {
    case PROP_FIELDS:
      g_value_set_enum(value, self->fields);
      break;
    case PROP_MATRIX:
      g_value_set_enum(value, self->matrixChoice);
      break;
    case PROP_INPUT_RANGE:
      g_value_set_enum(value, self->inRange);
      break;
    case PROP_OUTPUT_RANGE:
      g_value_set_enum(value, self->outRange);
      break;
    case PROP_N_THREADS:
      g_value_set_uint(value, self->nThreads);
      break;
    default:
      G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
  }
  GST_OBJECT_UNLOCK(self);
}

void finalize(GObject *object) {
  GstTqcsConvert *self = GST_TQCS_CONVERT(object);
  delete self->pool;
  for (tqgst::Plan *plan : self->plans) delete plan;
  G_OBJECT_CLASS(gst_tqcs_convert_parent_class)->finalize(object);
}

}  // namespace

static void gst_tqcs_convert_class_init(GstTqcsConvertClass *klass) {
  GObjectClass *object = G_OBJECT_CLASS(klass);
  GstElementClass *element = GST_ELEMENT_CLASS(klass);
  GstBaseTransformClass *base = GST_BASE_TRANSFORM_CLASS(klass);
  GstVideoFilterClass *video = GST_VIDEO_FILTER_CLASS(klass);
  object->set_property = setProperty;
  object->get_property = getProperty;
  object->finalize = finalize;
  const GParamFlags rw =
      GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_READY);
  g_object_class_install_property(
      object, PROP_FIELDS,
      g_param_spec_enum("fields", "Fields",
                        "Convert each field on its own (interlaced) or the frame as one picture",
                        fieldsType(), FIELDS_AUTO, rw));
  g_object_class_install_property(
      object, PROP_MATRIX,
      g_param_spec_enum("matrix", "Matrix", "Colour matrix of the YUV side", matrixType(),
                        MATRIX_AUTO, rw));
  g_object_class_install_property(
      object, PROP_INPUT_RANGE,
      g_param_spec_enum("input-range", "Input range", "Range of YUV input", rangeType(), RANGE_AUTO,
                        rw));
  g_object_class_install_property(
      object, PROP_OUTPUT_RANGE,
      g_param_spec_enum("output-range", "Output range", "Range of YUV output", rangeType(),
                        RANGE_AUTO, rw));
  g_object_class_install_property(
      object, PROP_N_THREADS,
      g_param_spec_uint("n-threads", "Threads",
                        "Threads converting bands of rows of a frame at once (where, seen on a "
                        "test frame, the bands give the bytes of one call)",
                        1, 64, 1, rw));
  for (const bool sink : {true, false}) {
    GstCaps *caps = templateCaps(sink);
    gst_element_class_add_pad_template(
        element, gst_pad_template_new(sink ? "sink" : "src", sink ? GST_PAD_SINK : GST_PAD_SRC,
                                      GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
  }
  gst_element_class_set_static_metadata(
      element, "TQColorSpace converter", "Filter/Converter/Video",
      "Converts raw video between pixel formats, field by field for interlaced frames",
      "TQColorSpace");
  base->transform_caps = transformCaps;
  base->fixate_caps = fixateCaps;
  base->passthrough_on_same_caps = TRUE;
  video->set_info = setInfo;
  video->transform_frame = transformFrame;
}

static void gst_tqcs_convert_init(GstTqcsConvert *self) {
  self->fields = FIELDS_AUTO;
  self->matrixChoice = MATRIX_AUTO;
  self->inRange = self->outRange = RANGE_AUTO;
  self->nThreads = 1;
  for (tqgst::Plan *&plan : self->plans) plan = new tqgst::Plan;
  self->planned[0] = self->planned[1] = false;
  self->parts = 1;
  self->pool = nullptr;
}

static gboolean pluginInit(GstPlugin *plugin) {
  GST_DEBUG_CATEGORY_INIT(tqcs_debug, "tqcs", 0, "TQColorSpace conversions and its log");
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  if (!api || TCS_CheckAPIStu(api) != TCS_CHECK_OK) {
    GST_ERROR("the TQColorSpace tables are incomplete");
    return FALSE;
  }
  TCB_GetLogSink(&previousSink.sink, &previousSink.context);
  if (previousSink.sink != logSink) TCB_SetLogSink(logSink, nullptr);
  return gst_element_register(plugin, "tqcsconvert", GST_RANK_NONE, GST_TYPE_TQCS_CONVERT);
}

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, tqcs,
                  "Pixel-format conversions of progressive and interlaced video by TQColorSpace",
                  pluginInit, TQCS_VERSION, "Proprietary", "TQColorSpace", "TQColorSpace")
