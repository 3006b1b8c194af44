/* The tqcsconvert element under GstHarness: negotiation of every pair it
 * offers, passthrough, frames equal to the library's own conversion, ranges,
 * threads, fields, refusals and the log. */
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>
#include <gst/check/gstcheck.h>
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <string.h>
#include <uchar.h>

/* The formats the element may offer, with the library's codes for their
 * progressive frames and for their interleaved fields, and what they hold
 * (grey, last, is written by the 8-bit RGB drivers only and has no code).
 * The 8-bit ones are always offered; the others where the library converts
 * them. */
enum Kind { YUV, RGB8, RGB16, GRAY };
static const struct {
  const char *name;
  int32_t code, field_code;
  enum Kind kind;
} kFormats[] = {{"BGRA", TCS_FORMAT_RGB32, TCS_FORMAT_RGB32, RGB8},
                {"RGBA", TCS_FORMAT_RGB32_SWAP, TCS_FORMAT_RGB32_SWAP, RGB8},
                {"BGR", TCS_FORMAT_RGB24, TCS_FORMAT_RGB24, RGB8},
                {"RGB", TCS_FORMAT_RGB24_SWAP, TCS_FORMAT_RGB24_SWAP, RGB8},
                {"YUY2", TCS_FORMAT_YUV16, TCS_FORMAT_YUV16, YUV},
                {"UYVY", TCS_FORMAT_YUV16_SWAP, TCS_FORMAT_YUV16_SWAP, YUV},
                {"Y42B", TCS_FORMAT_YUV422, TCS_FORMAT_YUV422, YUV},
                {"I420", TCS_FORMAT_YUV420_FRAME, TCS_FORMAT_YUV420, YUV},
                {"v308", TCS_FORMAT_YUV, TCS_FORMAT_YUV, YUV},
                {"NV12", TCS_FORMAT_NV12_FRAME, TCS_FORMAT_NV12, YUV},
                {"NV16", TCS_FORMAT_NV16, TCS_FORMAT_NV16, YUV},
                {"v210", TCS_FORMAT_V210, TCS_FORMAT_V210, YUV},
                {"Y210", TCS_FORMAT_YUV16_10BIT, TCS_FORMAT_YUV16_10BIT, YUV},
                {"P010_10LE", TCS_FORMAT_P010_FRAME, TCS_FORMAT_P010, YUV},
                {"I420_10LE", TCS_FORMAT_YUV420_10BIT_LOW_FRAME, TCS_FORMAT_YUV420_10BIT_LOW, YUV},
                {"I422_10LE", TCS_FORMAT_YUV422_10BIT_LOW, TCS_FORMAT_YUV422_10BIT_LOW, YUV},
                {"BGRA64_LE", TCS_FORMAT_RGB64, TCS_FORMAT_RGB64, RGB16},
                {"RGBA64_LE", TCS_FORMAT_RGB64_SWAP, TCS_FORMAT_RGB64_SWAP, RGB16},
                {"GRAY8", -1, -1, GRAY}};
static const guint kEightBit = 9; /* the first nine, and grey */
#define COUNT(a) (sizeof(a) / sizeof((a)[0]))

static gchar *caps_of(const char *format, int width, int height, const char *extra) {
  return g_strdup_printf("video/x-raw,format=%s,width=%d,height=%d,framerate=25/1%s%s", format,
                         width, height, extra ? "," : "", extra ? extra : "");
}

/* A frame of the caps filled by `fill(x, y, plane, user)` (or seeded noise). */
typedef guint8 (*Fill)(int x, int y, int plane, const void *user);
static GstBuffer *make_frame(const gchar *caps_str, Fill fill, const void *user) {
  GstVideoInfo info;
  GstCaps *caps = gst_caps_from_string(caps_str);
  fail_unless(gst_video_info_from_caps(&info, caps));
  gst_caps_unref(caps);
  GstBuffer *buf = gst_buffer_new_allocate(NULL, GST_VIDEO_INFO_SIZE(&info), NULL);
  GstVideoFrame frame;
  fail_unless(gst_video_frame_map(&frame, &info, buf, GST_MAP_WRITE));
  GRand *rand = g_rand_new_with_seed(21);
  for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(&frame); ++p) {
    guint8 *data = GST_VIDEO_FRAME_PLANE_DATA(&frame, p);
    const gint stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, p);
    const gint rows = GST_VIDEO_FRAME_COMP_HEIGHT(&frame, p);
    for (gint y = 0; y < rows; ++y)
      for (gint x = 0; x < stride; ++x)
        data[y * stride + x] = fill ? fill(x, y, p, user) : (guint8)g_rand_int(rand);
  }
  g_rand_free(rand);
  gst_video_frame_unmap(&frame);
  return buf;
}

/* Pushes `in` through the element described by `launch` between the two caps;
 * returns the output (NULL when the element refused), and the flow result. */
static GstBuffer *convert(const char *launch, const gchar *in_caps, const gchar *out_caps,
                          GstBuffer *in, GstFlowReturn *flow, GstBus **bus) {
  GstHarness *h = gst_harness_new_parse(launch);
  GstBus *b = gst_bus_new();
  gst_element_set_bus(h->element, b);
  gst_harness_set_sink_caps_str(h, out_caps);
  gst_harness_set_src_caps_str(h, in_caps);
  GstFlowReturn ret = gst_harness_push(h, gst_buffer_ref(in));
  GstBuffer *out = ret == GST_FLOW_OK ? gst_harness_pull(h) : NULL;
  if (flow) *flow = ret;
  gst_harness_teardown(h);
  if (bus)
    *bus = b;
  else
    gst_object_unref(b);
  return out;
}

static gboolean same_bytes(GstBuffer *a, GstBuffer *b) {
  GstMapInfo ma, mb;
  gst_buffer_map(a, &ma, GST_MAP_READ);
  gst_buffer_map(b, &mb, GST_MAP_READ);
  const gboolean same = ma.size == mb.size && memcmp(ma.data, mb.data, ma.size) == 0;
  gst_buffer_unmap(a, &ma);
  gst_buffer_unmap(b, &mb);
  return same;
}

/* Whether the element's source pad offers the format. */
static gboolean offered(const char *name) {
  GstElementFactory *factory = gst_element_factory_find("tqcsconvert");
  fail_unless(factory != NULL);
  gboolean found = FALSE;
  for (const GList *t = gst_element_factory_get_static_pad_templates(factory); t; t = t->next) {
    const GstStaticPadTemplate *tmpl = t->data;
    if (tmpl->direction != GST_PAD_SRC) continue;
    GstCaps *caps = gst_static_caps_get((GstStaticCaps *)&tmpl->static_caps);
    gchar *text = gst_caps_to_string(caps);
    gchar *needle = g_strdup_printf(" %s,", name), *last = g_strdup_printf(" %s }", name);
    found = strstr(text, needle) || strstr(text, last);
    g_free(needle);
    g_free(last);
    g_free(text);
    gst_caps_unref(caps);
  }
  gst_object_unref(factory);
  return found;
}

/* The same caps pass the buffer through, at sizes the conversions refuse as
 * well; the same format in another range is converted. */
GST_START_TEST(same_caps_pass_through) {
  static const struct {
    int width;
    const char *out;
  } cases[] = {{63, "colorimetry=bt709"}, {64, "colorimetry=bt709"}, {64, "colorimetry=1:3:5:1"}};
  for (guint i = 0; i < COUNT(cases); ++i) {
    const gboolean same = strcmp(cases[i].out, "colorimetry=bt709") == 0;
    gchar *caps = caps_of("I420", cases[i].width, 48, "colorimetry=bt709");
    gchar *out_caps = caps_of("I420", cases[i].width, 48, cases[i].out);
    GstBuffer *in = make_frame(caps, NULL, NULL);
    GstBuffer *out = convert("tqcsconvert", caps, out_caps, in, NULL, NULL);
    fail_unless(out != NULL && (out == in) == same, "case %u: passed through %d", i, out == in);
    fail_unless(same || !same_bytes(out, in), "the range was not converted");
    gst_buffer_unref(out);
    gst_buffer_unref(in);
    g_free(caps);
    g_free(out_caps);
  }
}
GST_END_TEST;

/* The library's own conversion of a frame, in one call of its descriptor
 * table: the frame form, or with interleaved fields the form that splits a
 * 4:2:0 frame into its fields or composes one from them. NULL when the
 * library has no direct route for the pair (it refuses it, or leaves the
 * destination as it was). */
/* field: 0 the frame, 1 its even rows, 2 its odd rows. */
static TCS_FrameDesc describe(GstVideoFrame *frame, int32_t code, int field) {
  TCS_FrameDesc d;
  memset(&d, 0, sizeof d);
  d.format = code;
  for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(frame); ++p) {
    const gint stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame, p);
    d.plane[p].data = (guint8 *)GST_VIDEO_FRAME_PLANE_DATA(frame, p) + (field == 2) * stride;
    d.plane[p].pitch = stride * (field ? 2 : 1);
  }
  return d;
}
static void video_info(GstVideoInfo *info, const gchar *caps_str) {
  GstCaps *caps = gst_caps_from_string(caps_str);
  fail_unless(gst_video_info_from_caps(info, caps), "%s", caps_str);
  gst_caps_unref(caps);
}
static GstBuffer *library_frame(const gchar *in_caps, GstBuffer *in, const gchar *out_caps,
                                int in_format, int out_format, gboolean fields) {
  GstVideoInfo ii, oi;
  video_info(&ii, in_caps);
  video_info(&oi, out_caps);
  GstBuffer *out = gst_buffer_new_allocate(NULL, GST_VIDEO_INFO_SIZE(&oi), NULL);
  gst_buffer_memset(out, 0, 0xEE, GST_VIDEO_INFO_SIZE(&oi));
  GstBuffer *untouched = gst_buffer_copy_deep(out);
  GstVideoFrame fi, fo;
  gst_video_frame_map(&fi, &ii, in, GST_MAP_READ);
  gst_video_frame_map(&fo, &oi, out, GST_MAP_WRITE);
  const int32_t sc = fields ? kFormats[in_format].field_code : kFormats[in_format].code;
  const int32_t dc = fields ? kFormats[out_format].field_code : kFormats[out_format].code;
  const int32_t w = GST_VIDEO_INFO_WIDTH(&ii), h = GST_VIDEO_INFO_HEIGHT(&ii);
  const TCS_GeneralTable *g = TCS_GetAPIStuPtr()->pGeneral;
  const TCS_FrameDesc s = describe(&fi, sc, 0), d = describe(&fo, dc, 0);
  uint64_t done;
  if (fields && dc == TCS_FORMAT_YUV420) {
    const TCS_FrameDesc f1 = describe(&fi, sc, 1), f2 = describe(&fi, sc, 2);
    done = g->TCS_ColorConvComposeEx(&d, &f1, &f2, TCS_MATRIX_HD, w, h, 0);
  } else if (fields && sc == TCS_FORMAT_YUV420) {
    const TCS_FrameDesc f1 = describe(&fo, dc, 1), f2 = describe(&fo, dc, 2);
    done = g->TCS_ColorConvSplitEx(&f1, &f2, &s, TCS_MATRIX_HD, w, h, 0);
  } else {
    done = g->TCS_ColorConvFrameEx(&d, &s, TCS_MATRIX_HD, w, h, 0);
  }
  gst_video_frame_unmap(&fi);
  gst_video_frame_unmap(&fo);
  if (same_bytes(out, untouched)) done = 0;
  gst_buffer_unref(untouched);
  if (!done) gst_buffer_unref(out);
  return done ? out : NULL;
}

/* Every pair the element offers, progressive, interleaved in either field
 * order and mixed (with and without the buffer's interlaced flag), on one
 * thread and on three: it negotiates with only the format changed, and a
 * full-range frame comes out as the library's table converts it where the
 * library converts the pair in one call. Grey is offered from RGB only. */
static const struct {
  const char *caps;
  gboolean interlaced_flag, fields;
} kFrameKinds[] = {{"interlace-mode=progressive", FALSE, FALSE},
                   {"interlace-mode=interleaved,field-order=top-field-first", FALSE, TRUE},
                   {"interlace-mode=interleaved,field-order=bottom-field-first", FALSE, TRUE},
                   {"interlace-mode=mixed", TRUE, TRUE},
                   {"interlace-mode=mixed", FALSE, FALSE}};
GST_START_TEST(every_pair_converts_as_the_library_does) {
  int compared = 0;
  gboolean on_offer[COUNT(kFormats)];
  for (guint f = 0; f < COUNT(kFormats); ++f) {
    on_offer[f] = offered(kFormats[f].name);
    fail_unless(on_offer[f] || (f >= kEightBit && kFormats[f].kind != GRAY), "%s not offered",
                kFormats[f].name);
  }
  for (guint i = 0; i < COUNT(kFormats) - 1; ++i)
    for (guint o = 0; o < COUNT(kFormats); ++o)
      for (guint k = 0; k < COUNT(kFrameKinds); ++k)
        for (int threads = 1; threads <= 3; threads += 2) {
          if (i == o || !on_offer[i] || !on_offer[o]) continue;
          /* YUV in full range, as the library's YUV is. */
          gchar *extra = g_strdup_printf("%s%s", kFrameKinds[k].caps,
                                         kFormats[i].kind != YUV ? "" : ",colorimetry=1:3:5:1");
          gchar *in_caps = caps_of(kFormats[i].name, 96, 128, extra);
          gchar *out_caps = g_strdup_printf("video/x-raw,format=%s%s", kFormats[o].name,
                                            kFormats[o].kind != YUV ? "" : ",colorimetry=1:3:5:1");
          gchar *launch = g_strdup_printf("tqcsconvert n-threads=%d", threads);
          GstBuffer *in = make_frame(in_caps, NULL, NULL);
          if (kFrameKinds[k].interlaced_flag)
            GST_BUFFER_FLAG_SET(in, GST_VIDEO_BUFFER_FLAG_INTERLACED);
          GstHarness *h = gst_harness_new_parse(launch);
          gst_harness_set_sink_caps_str(h, out_caps);
          gst_harness_set_src_caps_str(h, in_caps);
          const GstFlowReturn flow = gst_harness_push(h, gst_buffer_ref(in));
          if (kFormats[o].kind == GRAY && kFormats[i].kind != RGB8) {
            fail_unless(flow == GST_FLOW_NOT_NEGOTIATED, "%s to GRAY8 offered", kFormats[i].name);
          } else {
            fail_unless(flow == GST_FLOW_OK, "%s to %s (%s): flow %d", kFormats[i].name,
                        kFormats[o].name, extra, flow);
            GstBuffer *out = gst_harness_pull(h);
            /* Only the format changed. */
            GstCaps *caps = gst_pad_get_current_caps(h->sinkpad);
            GstStructure *st = gst_structure_copy(gst_caps_get_structure(caps, 0));
            fail_unless_equals_string(gst_structure_get_string(st, "format"), kFormats[o].name);
            gst_caps_unref(caps);
            GstCaps *expected_caps = gst_caps_from_string(in_caps);
            GstStructure *want = gst_caps_get_structure(expected_caps, 0);
            gst_structure_remove_fields(st, "format", "colorimetry", "chroma-site",
                                        "pixel-aspect-ratio", NULL);
            gst_structure_remove_fields(want, "format", "colorimetry", "chroma-site", NULL);
            fail_unless(gst_structure_is_equal(st, want), "%s to %s: caps %s", kFormats[i].name,
                        kFormats[o].name, gst_structure_to_string(st));
            gst_structure_free(st);
            gst_caps_unref(expected_caps);
            gchar *full_out = caps_of(kFormats[o].name, 96, 128, kFrameKinds[k].caps);
            GstBuffer *expected = kFormats[o].code < 0 ? NULL
                                                       : library_frame(in_caps, in, full_out, i, o,
                                                                       kFrameKinds[k].fields);
            if (expected) {
              fail_unless(same_bytes(out, expected),
                          "%s to %s (%s, %d threads) differs from the library", kFormats[i].name,
                          kFormats[o].name, extra, threads);
              gst_buffer_unref(expected);
              ++compared;
            }
            g_free(full_out);
            gst_buffer_unref(out);
          }
          gst_harness_teardown(h);
          gst_buffer_unref(in);
          g_free(launch);
          g_free(extra);
          g_free(in_caps);
          g_free(out_caps);
        }
  /* Most pairs have a direct route; those without one go through others. */
  fail_unless(compared > 400, "only %d conversions compared with the library", compared);
}
GST_END_TEST;

/* Video range in, full range out: black, white, mid grey and peak land where
 * the range definitions put them, in luma and chroma (-1: not checked, on a
 * rounding tie). Every sample holds the level; 10-bit formats hold it times
 * four, in their top bits (shift 6) or their bottom ones, and are scaled in
 * an 8-bit twin of their layout. */
static const int kLevels[][3] = {{16, 0, -1}, {235, 255, 250}, {126, 128, 126}, {240, 255, 255}};
typedef struct {
  int level, shift; /* shift < 0: bytes */
} Sample;
static guint8 level_fill(int x, int y, int plane, const void *user) {
  (void)y, (void)plane;
  const Sample *s = user;
  const int v = s->shift < 0 ? s->level : (s->level * 4) << s->shift;
  return (guint8)(s->shift < 0 || x % 2 ? v >> (s->shift < 0 ? 0 : 8) : v & 0xFF);
}
GST_START_TEST(limited_range_is_expanded) {
  static const struct {
    const char *name;
    int shift;
  } formats[] = {{"I420", -1}, {"Y42B", -1},     {"UYVY", -1},     {"v308", -1},
                 {"NV12", -1}, {"P010_10LE", 6}, {"I420_10LE", 0}, {"Y210", 6}};
  for (guint f = 0; f < COUNT(formats); ++f)
    for (guint l = 0; l < COUNT(kLevels); ++l) {
      if (!offered(formats[f].name)) continue;
      const Sample sample = {kLevels[l][0], formats[f].shift};
      gchar *in_caps = caps_of(formats[f].name, 64, 8, "colorimetry=bt709");
      gchar *out_caps = caps_of("Y42B", 64, 8, "colorimetry=1:3:5:1");
      GstBuffer *in = make_frame(in_caps, level_fill, &sample);
      GstBuffer *out = convert("tqcsconvert", in_caps, out_caps, in, NULL, NULL);
      fail_unless(out != NULL, "%s refused", formats[f].name);
      GstMapInfo map;
      gst_buffer_map(out, &map, GST_MAP_READ);
      /* Y42B: 64 x 8 luma bytes, then the U plane. */
      fail_unless(map.data[0] == kLevels[l][1], "%s: luma %d became %d", formats[f].name,
                  kLevels[l][0], map.data[0]);
      fail_unless(kLevels[l][2] < 0 || map.data[64 * 8] == kLevels[l][2], "%s: chroma %d became %d",
                  formats[f].name, kLevels[l][0], map.data[64 * 8]);
      gst_buffer_unmap(out, &map);
      gst_buffer_unref(out);
      gst_buffer_unref(in);
      g_free(in_caps);
      g_free(out_caps);
    }
}
GST_END_TEST;

/* The output caps carry the colorimetry written; the properties stand for the
 * caps they override. */
static gchar *negotiated_colorimetry(const char *launch, const gchar *in_caps,
                                     const gchar *out_caps) {
  GstHarness *h = gst_harness_new_parse(launch);
  gst_harness_set_sink_caps_str(h, out_caps);
  gst_harness_set_src_caps_str(h, in_caps);
  GstCaps *caps = gst_pad_get_current_caps(h->sinkpad);
  gchar *c =
      caps ? g_strdup(gst_structure_get_string(gst_caps_get_structure(caps, 0), "colorimetry"))
           : NULL;
  if (caps) gst_caps_unref(caps);
  gst_harness_teardown(h);
  return c;
}
GST_START_TEST(colorimetry_written_and_overridden) {
  static const struct {
    const char *launch, *in, *in_extra, *out, *written;
  } cases[] = {{"tqcsconvert", "I420", "colorimetry=bt601", "UYVY", "bt601"},
               {"tqcsconvert", "BGRA", NULL, "I420", "bt709"},
               {"tqcsconvert matrix=uhd output-range=full", "BGRA", NULL, "Y42B", "1:6:5:1"}};
  for (guint i = 0; i < COUNT(cases); ++i) {
    gchar *in_caps = caps_of(cases[i].in, 1280, 720, cases[i].in_extra);
    gchar *out_caps = g_strdup_printf("video/x-raw,format=%s", cases[i].out);
    gchar *written = negotiated_colorimetry(cases[i].launch, in_caps, out_caps);
    fail_unless(g_strcmp0(written, cases[i].written) == 0, "%s: wrote %s", cases[i].launch,
                written);
    g_free(written);
    g_free(in_caps);
    g_free(out_caps);
  }
  /* matrix=sd on bt709 caps converts as bt601 caps do; input-range=full as
   * full-range caps. */
  static const char *overrides[][3] = {
      {"tqcsconvert matrix=sd", "colorimetry=bt709", "colorimetry=bt601"},
      {"tqcsconvert input-range=full", "colorimetry=bt709", "colorimetry=1:3:5:1"}};
  for (guint i = 0; i < COUNT(overrides); ++i) {
    gchar *a = caps_of("UYVY", 64, 48, overrides[i][1]);
    gchar *b = caps_of("UYVY", 64, 48, overrides[i][2]);
    gchar *out_caps = caps_of("BGRA", 64, 48, NULL);
    GstBuffer *in = make_frame(a, NULL, NULL);
    GstBuffer *x = convert(overrides[i][0], a, out_caps, in, NULL, NULL);
    GstBuffer *y = convert("tqcsconvert", b, out_caps, in, NULL, NULL);
    fail_unless(x && y && same_bytes(x, y), "%s differs from the caps", overrides[i][0]);
    gst_buffer_unref(x);
    gst_buffer_unref(y);
    gst_buffer_unref(in);
    g_free(a);
    g_free(b);
    g_free(out_caps);
  }
}
GST_END_TEST;

/* The downstream's first choice of format; with any format allowed, the
 * input's own (passthrough). */
GST_START_TEST(downstream_first_choice) {
  static const char *cases[][3] = {{"video/x-raw,format={UYVY,BGRA}", "I420", "UYVY"},
                                   {"video/x-raw,format={GRAY8,Y42B}", "I420", "Y42B"},
                                   {"video/x-raw,format={BGRA,UYVY}", "I420", "BGRA"},
                                   {"video/x-raw", "YUY2", "YUY2"}};
  for (guint i = 0; i < COUNT(cases); ++i) {
    gchar *in_caps = caps_of(cases[i][1], 64, 48, NULL);
    GstHarness *h = gst_harness_new("tqcsconvert");
    gst_harness_set_sink_caps_str(h, cases[i][0]);
    gst_harness_set_src_caps_str(h, in_caps);
    GstCaps *caps = gst_pad_get_current_caps(h->sinkpad);
    fail_unless(caps != NULL);
    fail_unless_equals_string(gst_structure_get_string(gst_caps_get_structure(caps, 0), "format"),
                              cases[i][2]);
    gst_caps_unref(caps);
    gst_harness_teardown(h);
    g_free(in_caps);
  }
}
GST_END_TEST;

/* Two fields of different saturated colours: converted field by field, no row
 * takes chroma from the other field; the framework's own converter, told the
 * frame is progressive, mixes them. Returns the rows that differ from their
 * field's flat colour. */
static const guint8 kFieldColour[2][3] = {{81, 90, 240}, {41, 240, 110}}; /* red, blue */
static guint8 field_fill(int x, int y, int plane, const void *user) {
  (void)x;
  const int *flat = user; /* -1: field by field; else one colour everywhere */
  const int colour = *flat >= 0 ? *flat : y % 2;
  return kFieldColour[colour][plane];
}
static GstBuffer *field_frame(const gchar *caps, const char *interlace, const int *colour) {
  GstBuffer *buf = make_frame(caps, field_fill, colour);
  /* Mixed caps: the buffer says whether it is interlaced. */
  if (strcmp(interlace, "mixed") == 0) GST_BUFFER_FLAG_SET(buf, GST_VIDEO_BUFFER_FLAG_INTERLACED);
  return buf;
}
static int rows_mixed(const char *launch, const char *out_format, const char *interlace) {
  gchar *extra = g_strdup_printf("colorimetry=bt601,interlace-mode=%s", interlace);
  gchar *in_caps = caps_of("I420", 64, 64, extra);
  gchar *out_caps = caps_of(out_format, 64, 64, extra);
  GstBuffer *flat[2];
  for (int c = 0; c < 2; ++c) {
    GstBuffer *in = field_frame(in_caps, interlace, &c);
    flat[c] = convert(launch, in_caps, out_caps, in, NULL, NULL);
    gst_buffer_unref(in);
  }
  const int mixed_fill = -1;
  GstBuffer *in = field_frame(in_caps, interlace, &mixed_fill);
  GstBuffer *out = convert(launch, in_caps, out_caps, in, NULL, NULL);
  fail_unless(out && flat[0] && flat[1]);
  GstVideoInfo info;
  GstCaps *caps = gst_caps_from_string(out_caps);
  gst_video_info_from_caps(&info, caps);
  gst_caps_unref(caps);
  GstVideoFrame fo, f0, f1;
  gst_video_frame_map(&fo, &info, out, GST_MAP_READ);
  gst_video_frame_map(&f0, &info, flat[0], GST_MAP_READ);
  gst_video_frame_map(&f1, &info, flat[1], GST_MAP_READ);
  int mixed = 0;
  for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(&fo); ++p) {
    const gint stride = GST_VIDEO_FRAME_PLANE_STRIDE(&fo, p);
    const gint bytes = GST_VIDEO_FRAME_COMP_WIDTH(&fo, p) * GST_VIDEO_FRAME_COMP_PSTRIDE(&fo, p);
    for (gint y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&fo, p); ++y) {
      const GstVideoFrame *own = y % 2 ? &f1 : &f0;
      if (memcmp((guint8 *)GST_VIDEO_FRAME_PLANE_DATA(&fo, p) + y * stride,
                 (guint8 *)GST_VIDEO_FRAME_PLANE_DATA(own, p) + y * stride, bytes) != 0)
        ++mixed;
    }
  }
  gst_video_frame_unmap(&fo);
  gst_video_frame_unmap(&f0);
  gst_video_frame_unmap(&f1);
  gst_buffer_unref(out);
  gst_buffer_unref(in);
  gst_buffer_unref(flat[0]);
  gst_buffer_unref(flat[1]);
  g_free(in_caps);
  g_free(out_caps);
  g_free(extra);
  return mixed;
}

GST_START_TEST(fields_keep_their_chroma) {
  const char *outputs[] = {"Y42B", "BGRA", "UYVY"};
  for (guint o = 0; o < COUNT(outputs); ++o) {
    const int ours = rows_mixed("tqcsconvert", outputs[o], "interleaved") +
                     rows_mixed("tqcsconvert", outputs[o], "mixed");
    const int forced = rows_mixed("tqcsconvert fields=interlaced", outputs[o], "progressive");
    const int theirs = rows_mixed("videoconvert", outputs[o], "progressive");
    g_print(
        "I420 to %s, two coloured fields: rows mixed: tqcsconvert %d, with fields=interlaced "
        "on progressive caps %d, videoconvert on progressive caps %d\n",
        outputs[o], ours, forced, theirs);
    fail_unless(ours == 0 && forced == 0, "%s: a field took chroma from the other", outputs[o]);
    fail_unless(theirs > 0, "%s: the mixing converter did not mix", outputs[o]);
  }
}
GST_END_TEST;

/* Refusals post an error naming both formats and the reason; grey, which the
 * library converts to only, is not accepted at all. */
static gchar *error_text(GstBus *bus) {
  GstMessage *msg = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
  if (!msg) return NULL;
  GError *err = NULL;
  gchar *debug = NULL;
  gst_message_parse_error(msg, &err, &debug);
  gchar *text = g_strdup_printf("%s | %s", err->message, debug ? debug : "");
  g_error_free(err);
  g_free(debug);
  gst_message_unref(msg);
  return text;
}
GST_START_TEST(bad_caps_are_refused) {
  static const struct {
    const char *in;
    int width, height;
    const char *in_extra, *out, *reason;
  } cases[] = {{"I420", 63, 48, "colorimetry=bt709", "BGRA", "even width"},
               {"BGRA", 63, 48, NULL, "YUY2", "even width"},
               {"UYVY", 64, 48, "colorimetry=smpte240m", "BGRA", "matrix"},
               {"BGRA", 64, 47, NULL, "I420", "even height"},
               {"I420", 64, 50, "interlace-mode=interleaved", "RGB", "multiple of 4"},
               {"BGRA64_LE", 96, 48, NULL, "v210", "8-bit samples"},
               {"v210", 100, 48, "colorimetry=1:3:5:1", "BGRA", "multiple of 6"},
               {"GRAY8", 64, 48, NULL, "BGRA", NULL}};
  for (guint i = 0; i < COUNT(cases); ++i) {
    gchar *in_caps = caps_of(cases[i].in, cases[i].width, cases[i].height, cases[i].in_extra);
    gchar *out_caps = caps_of(cases[i].out, cases[i].width, cases[i].height, NULL);
    GstBuffer *in = make_frame(in_caps, NULL, NULL);
    GstFlowReturn flow;
    GstBus *bus;
    GstBuffer *out = convert("tqcsconvert", in_caps, out_caps, in, &flow, &bus);
    fail_unless(out == NULL && flow == GST_FLOW_NOT_NEGOTIATED, "case %u converted", i);
    gchar *text = error_text(bus);
    fail_unless(!cases[i].reason || (text && strstr(text, cases[i].in) &&
                                     strstr(text, cases[i].out) && strstr(text, cases[i].reason)),
                "error: %s", text ? text : "(none)");
    g_free(text);
    gst_object_unref(bus);
    gst_buffer_unref(in);
    g_free(in_caps);
    g_free(out_caps);
  }
}
GST_END_TEST;

/* The library's records reach the tqcs debug category, and the sink the
 * process had before the plug-in loaded still gets them. */
static gchar *seen;
static int host_records;
static void host_sink(void *context, int32_t level, const char16_t *file, const char16_t *function,
                      const char16_t *format, const char16_t *message) {
  (void)context, (void)level, (void)file, (void)function, (void)format, (void)message;
  ++host_records;
}
static void catch_log(GstDebugCategory *category, GstDebugLevel level, const gchar *file,
                      const gchar *function, gint line, GObject *object, GstDebugMessage *message,
                      gpointer user) {
  (void)level, (void)file, (void)function, (void)line, (void)object, (void)user;
  if (strcmp(gst_debug_category_get_name(category), "tqcs") == 0 && !seen)
    seen = g_strdup(gst_debug_message_get(message));
}
GST_START_TEST(library_records_reach_the_debug_log) {
  TCB_SetLogSink(host_sink, NULL);
  GstElement *e = gst_element_factory_make("tqcsconvert", NULL);
  fail_unless(e != NULL);
  gst_debug_set_threshold_for_name("tqcs", GST_LEVEL_WARNING);
  gst_debug_add_log_function(catch_log, NULL, NULL);
  TCB_WriteLog(1, u"TQVideoColorAPI", u"TCS_ColorConvFrame()", u"%s", u"Invalid Input Parameters");
  gst_debug_remove_log_function(catch_log);
  fail_unless(seen && strstr(seen, "TCS_ColorConvFrame()") &&
              strstr(seen, "Invalid Input Parameters"));
  fail_unless(host_records == 1, "the host's sink got %d records", host_records);
  g_free(seen);
  gst_object_unref(e);
}
GST_END_TEST;

static Suite *tqcsconvert_suite(void) {
  Suite *s = suite_create("tqcsconvert");
  TCase *tc = tcase_create("element");
  tcase_set_timeout(tc, 300);
  tcase_add_test(tc, every_pair_converts_as_the_library_does);
  tcase_add_test(tc, same_caps_pass_through);
  tcase_add_test(tc, downstream_first_choice);
  tcase_add_test(tc, limited_range_is_expanded);
  tcase_add_test(tc, colorimetry_written_and_overridden);
  tcase_add_test(tc, fields_keep_their_chroma);
  tcase_add_test(tc, bad_caps_are_refused);
  tcase_add_test(tc, library_records_reach_the_debug_log);
  suite_add_tcase(s, tc);
  return s;
}

GST_CHECK_MAIN(tqcsconvert)
