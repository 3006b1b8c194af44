// The format-code dispatcher (slots 0 to 2) and its descriptor-based forms
// (slots 16 to 18). A pair of format codes names one route (video/routes.hpp);
// the frame, split and compose forms share every route and differ only in the
// images they hand on and how they check their arguments.
#include <array>
#include <optional>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include "base/log.hpp"
#include "base/slot_shape.hpp"
#include "base/state.hpp"
#include "video/descriptor_routes.hpp"
#include "video/general.hpp"
#include "video/routes.hpp"

namespace tqcs::video {
namespace {

// One image: a packed plane, or the Y, U and V planes of a planar format.
struct Image {
  std::array<Plane, 3> planes{};
  int count = 1;
};

// The planes of an image held in one buffer: Y at the base, U after `rows`
// luma rows with half the pitch, V after U's rows (all `rows` of them for
// 4:2:2, rows / 2 for 4:2:0). `rows` is the frame height for a frame buffer and
// half of it for a field buffer. With `narrowOffset` the offset of U is a
// 32-bit product (the same-code planar field copies, kept for compatibility).
Image Derive(int32_t code, const uint8_t *base, int64_t pitch, int32_t rows, bool narrowOffset) {
  if (!Planar(code)) return {{Plane{Bytes(base), pitch}}, 1};
  const int64_t chromaPitch = pitch >> 1;
  const int32_t chromaRows = code == kYUV422 ? rows : rows >> 1;
  uint8_t *u = Offset(Bytes(base), narrowOffset ? Mul32(pitch, rows) : pitch * rows);
  uint8_t *v = Offset(u, chromaPitch * chromaRows);
  return {{Plane{Bytes(base), pitch}, Plane{u, chromaPitch}, Plane{v, chromaPitch}}, 3};
}

// ---------------------------------------------------------------------------
// Calling a driver slot with the exact signature of its typed table member.

struct DriverCall {
  std::array<Plane, 9> planes{};  // in the driver's argument order
  size_t planeCount = 0;
  std::array<int32_t, 4> extras{};
  size_t extraCount = 0;
  int32_t width = 0, height = 0;
  uint8_t flip = 0;
};
using Forwarder = void (*)(const DriverCall &);

// A forwarded call's arguments, by role (see SlotShape).
struct FromCall {
  const DriverCall &c;
  uint8_t *Pointer(size_t plane) const { return c.planes[plane].p; }
  int64_t Pitch(size_t plane) const { return c.planes[plane].pitch; }
  int32_t Width() const { return c.width; }
  int32_t Height() const { return c.height; }
  int32_t Option(size_t index) const { return c.extras[index]; }
  uint8_t Flip() const { return c.flip; }
};

template <class R, class... P>
void Invoke(R (*fn)(P...), const DriverCall &c) {
  SlotShape<R (*)(P...)>::Call(fn, FromCall{c});  // the empty stub takes nothing
}

// What a route may do with one slot: call it through `forward`, handing on
// `planes` planes and `extras` options; no forwarder for a shape no route
// reaches (descriptors, histogram ...). The empty stub takes 0 and 0.
struct Slot {
  Forwarder forward = nullptr;
  bool routable = false;
  int planes = 0, extras = 0;
};

// Reads the slot through the root structure at every call.
template <auto kRoot, auto kMember>
void Forward(const DriverCall &c) {
  Invoke((g_pColorSpaceAPI->*kRoot)->*kMember, c);
}

// The shapes a route can reach: frame-shaped slots, and the empty stub's,
// which takes no parameters at all.
template <auto kRoot, auto kMember>
constexpr Slot SlotOf() {
  using Shape = MemberShape<decltype(kMember)>;
  if constexpr (Shape::kFrameShaped || Shape::kParams == 0) {
    return {&Forward<kRoot, kMember>, true, static_cast<int>(Shape::kPlanes),
            static_cast<int>(Shape::kOptions)};
  } else {
    return {};
  }
}

#define TQCS_SLOT(n, name, ret, params) SlotOf<kRoot, &Table::name>(),
#define TQCS_SLOTS_OF(ns, TableType, member, SLOTS) \
  namespace ns {                                    \
  using Table = TableType;                          \
  constexpr auto kRoot = &TCS_APIStu::member;       \
  constexpr Slot kSlots[] = {SLOTS(TQCS_SLOT)};     \
  }
TQCS_SLOTS_OF(general, TCS_GeneralTable, pGeneral, TCS_GENERAL_SLOTS)
TQCS_SLOTS_OF(rgb32, TCS_RGB32Table, pRGB32, TCS_RGB32_SLOTS)
TQCS_SLOTS_OF(rgb24, TCS_RGB24Table, pRGB24, TCS_RGB24_SLOTS)
TQCS_SLOTS_OF(yuva, TCS_YUVATable, pYUVA, TCS_YUVA_SLOTS)
TQCS_SLOTS_OF(yuv16, TCS_YUV16Table, pYUV16, TCS_YUV16_SLOTS)
TQCS_SLOTS_OF(yuv422, TCS_YUV422Table, pYUV422, TCS_YUV422_SLOTS)
TQCS_SLOTS_OF(yuv420, TCS_YUV420Table, pYUV420, TCS_YUV420_SLOTS)
TQCS_SLOTS_OF(yuv, TCS_YUVTable, pYUV, TCS_YUV_SLOTS)
#undef TQCS_SLOTS_OF
#undef TQCS_SLOT

// By root position.
constexpr std::span<const Slot> kSlots[] = {general::kSlots, rgb32::kSlots, rgb24::kSlots,
                                            yuva::kSlots,    yuv16::kSlots, yuv422::kSlots,
                                            yuv420::kSlots,  yuv::kSlots};

// Every route fits the typed slots it reaches in all three forms: the planes
// its images give and the options it lists are exactly what each slot takes
// (or the slot is the empty stub, which takes nothing).
constexpr bool RoutesFitTheirSlots() {
  for (int s = 0; s < kFormatCount; ++s)
    for (int d = 0; d < kFormatCount; ++d) {
      const Route &r = kRoutes[s][d];
      if (r.kind != Kind::kDriver && r.kind != Kind::kLumaChroma) continue;
      const bool chroma = r.kind == Kind::kLumaChroma;
      const int out = chroma ? 2 : Planar(d) ? 3 : 1, in = chroma ? 2 : Planar(s) ? 3 : 1;
      const int planes[3] = {out + in, 2 * out + in, out + 2 * in};
      for (int f = 0; f < 3; ++f) {
        if (r.table < 0 || r.table >= 8 || r.slot + f >= static_cast<int>(kSlots[r.table].size()))
          return false;
        const Slot &slot = kSlots[r.table][r.slot + f];
        const bool stub = slot.routable && slot.planes == 0 && slot.extras == 0;
        if (!slot.routable || (!stub && (slot.planes != planes[f] || slot.extras != r.extraCount)))
          return false;
      }
    }
  return true;
}
static_assert(RoutesFitTheirSlots());

// ---------------------------------------------------------------------------
// Running a route.

// One call: the images in the order of the arguments (frame: destination,
// source; split: field 1, field 2, source; compose: destination, field 1,
// field 2).
struct Job {
  Form form;
  int32_t srcCode, dstCode, matrix, width, height;
  uint8_t flip;
  std::array<Image, 3> images;
};

int ImageCount(Form form) { return form == Form::kFrame ? 2 : 3; }
int Outputs(Form form) { return form == Form::kSplit ? 2 : 1; }
int SlotOffset(Form form) { return form == Form::kFrame ? 0 : form == Form::kSplit ? 1 : 2; }

// Planes `first` to `last` of every image, image by image: a split hands on
// field 1's Y, U, V, then field 2's, then the source's; a compose the frame's,
// then field 1's, then field 2's. This follows the drivers' signatures, which
// win over a plane-major order (Y of both fields, then U, then V) that older
// notes on this dispatcher give.
void CallDriver(int table, int slot, const Job &j, int first, int last,
                std::span<const Extra> extras) {
  DriverCall c;
  for (int i = 0; i < ImageCount(j.form); ++i)
    for (int k = first; k <= last && k < j.images[i].count; ++k)
      c.planes[c.planeCount++] = j.images[i].planes[k];
  for (Extra e : extras) c.extras[c.extraCount++] = OptionValue(e, j.srcCode, j.dstCode, j.matrix);
  c.width = j.width;
  c.height = j.height;
  c.flip = j.flip;
  kSlots[table][slot + SlotOffset(j.form)].forward(c);
}

// Plane k of every image copied: a plane copy for the frame form, the field
// split or compose of slots 12 and 13 for the others. Width and height in
// pixels of that plane.
void CopyPlane(const Job &j, int k, int32_t width, int32_t height, int32_t bytesPerPixel) {
  const Plane &a = j.images[0].planes[k], &b = j.images[1].planes[k], &c = j.images[2].planes[k];
  switch (j.form) {
    case Form::kFrame:
      g_pMemProcRoot->pMem->TMP_PlaneCopy(a.p, a.pitch, b.p, b.pitch, Mul32(width, bytesPerPixel),
                                          height, j.flip);
      return;
    case Form::kSplit:
      g_pColorSpaceAPI->pGeneral->TCS_SplitFrame(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, width,
                                                 height, bytesPerPixel, j.flip);
      return;
    default:
      g_pColorSpaceAPI->pGeneral->TCS_ComposeFields(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, width,
                                                    height, bytesPerPixel, j.flip);
      return;
  }
}

// Every plane of an equal-code pair: a packed plane at its bytes per pixel;
// Y, then U and V at width / 2 and the chroma height, one byte a sample.
void CopyImage(const Job &j) {
  if (!Planar(j.srcCode)) return CopyPlane(j, 0, j.width, j.height, kBytesPerPixel[j.srcCode]);
  const int32_t chromaHeight = j.srcCode == kYUV422 ? j.height : j.height >> 1;
  CopyPlane(j, 0, j.width, j.height, 1);
  CopyPlane(j, 1, j.width / 2, chromaHeight, 1);
  CopyPlane(j, 2, j.width / 2, chromaHeight, 1);
}

// Each output image filled with 255, width bytes a row: the frame's height,
// or half of it for each field.
void FillAlpha(const Job &j) {
  const int32_t rows = j.form == Form::kSplit ? j.height >> 1 : j.height;
  for (int i = 0; i < Outputs(j.form); ++i) {
    const Plane &pl = j.images[i].planes[0];
    g_pMemProcRoot->pFill->TMP_PlaneFill(pl.p, pl.pitch, j.width, 255, rows);
  }
}

// The frame of a field form: the split's source, the compose's destination.
Image &FrameOf(Job &j) { return j.images[j.form == Form::kSplit ? 2 : 0]; }
int32_t FrameCode(const Job &j) { return j.form == Form::kSplit ? j.srcCode : j.dstCode; }
int32_t FieldCode(const Job &j) { return j.form == Form::kSplit ? j.dstCode : j.srcCode; }

// Field buffers of a planar code hold height / 2 rows each: their chroma planes
// start right after that many luma rows. With an odd height the route runs on
// height - 1 rows of the frame, so nothing is converted into (or read from) a
// field row the layout has no room for: the last row of an odd frame is left
// out, as the same-code planar field copies leave it out (under flip the rows
// left out is row 0, the last one in the flipped picture). For a 4:2:0 frame
// the chroma rows stay where they are: height - 1 rows use all height / 2 of
// them.
void LeaveOutTheOddRow(Job &j) {
  Image &frame = FrameOf(j);
  if (j.flip) {
    for (int k = 0; k < frame.count; ++k)
      if (k == 0 || FrameCode(j) == kYUV422) frame.planes[k].p = frame.planes[k].Row(1);
  }
  --j.height;
}

// Runs the route; 1 once it was handed on (whatever the callee did), 0 for a
// pair that has no conversion.
uint64_t Execute(const Route &r, Job j) {
  if (r.kind == Kind::kRefuse) return 0;
  const bool converts = r.kind == Kind::kDriver || r.kind == Kind::kLumaChroma;
  if (converts && j.form != Form::kFrame && (j.height & 1) && Planar(FieldCode(j))) {
    if (j.height == 1) return 1;  // fields of no rows: nothing to convert
    LeaveOutTheOddRow(j);
  }
  switch (r.kind) {
    case Kind::kRefuse:
      return 0;
    case Kind::kCopy:
      CopyImage(j);
      break;
    case Kind::kFill:
      FillAlpha(j);
      break;
    case Kind::kDriver:
      CallDriver(r.table, r.slot, j, 0, 2, std::span(r.extras).first(r.extraCount));
      break;
    case Kind::kLumaChroma:
      CopyPlane(j, 0, j.width, j.height, 1);
      CallDriver(r.table, r.slot, j, 1, 2, {});
      break;
  }
  return 1;
}

const Route &RouteOf(int32_t srcCode, int32_t dstCode) { return kRoutes[srcCode][dstCode]; }

// Field buffers of the same-code planar copies place U with a 32-bit offset.
bool NarrowFieldOffsets(const Route &r) { return r.kind == Kind::kCopy; }

bool Present(const uint8_t *p, int64_t pitch) { return p && pitch > 0; }

// The descriptor forms take each plane from the descriptor: a packed format
// plane 0, a planar one planes 0, 1 and 2 for Y, U and V. Null when the
// descriptor is missing, its code is not one of 0 to 10, or a plane the format
// uses is null or has a pitch below 1.
std::optional<Image> FromDescriptor(const TCS_FrameDesc *d) {
  if (!d || !Known(d->format)) return std::nullopt;
  Image image;
  image.count = Planar(d->format) ? 3 : 1;
  for (int k = 0; k < image.count; ++k) {
    if (!Present(d->plane[k].data, d->plane[k].pitch)) return std::nullopt;
    image.planes[k] = {d->plane[k].data, d->plane[k].pitch};
  }
  return image;
}

// The checks shared by the silent forms after their images.
bool OptionsPass(int32_t matrix, int32_t width, int32_t height) {
  return matrix < 4 && width >= 1 && height >= 1;
}

const log::Site kFrameSite{log::unit::kVideoColor, TQCS_FN_NAME(TCS_ColorConvFrame)};

}  // namespace

uint64_t TCS_ColorConvFrame(uint8_t *dst, int64_t dstPitch, int32_t dstFormat, const uint8_t *src,
                            int64_t srcPitch, int32_t srcFormat, int32_t matrix, int32_t width,
                            int32_t height, uint8_t flip) {
  if (!Present(dst, dstPitch) || dstFormat >= INT32_MAX || !Present(src, srcPitch) ||
      srcFormat >= INT32_MAX || matrix >= 4 || width <= 0 || height <= 0) {
    log::Write(log::kInvalid, kFrameSite, log::msg::kInvalidParams);
    return 0;
  }
  if (!Known(srcFormat) || !Known(dstFormat)) return 0;
  const Route &r = RouteOf(srcFormat, dstFormat);
  return Execute(r, {Form::kFrame,
                     srcFormat,
                     dstFormat,
                     matrix,
                     width,
                     height,
                     flip,
                     {Derive(dstFormat, dst, dstPitch, height, false),
                      Derive(srcFormat, src, srcPitch, height, false)}});
}

namespace {

// The field forms check silently. Field buffers hold height / 2 rows; the
// frame is the split's source or the compose's destination.
uint64_t FieldForm(Form form, const uint8_t *frame, int64_t framePitch, int32_t frameCode,
                   const uint8_t *field1, int64_t field1Pitch, const uint8_t *field2,
                   int64_t field2Pitch, int32_t fieldCode, int32_t matrix, int32_t width,
                   int32_t height, uint8_t flip) {
  if (!Present(field1, field1Pitch) || !Present(field2, field2Pitch) ||
      !Present(frame, framePitch) || !OptionsPass(matrix, width, height) || !Known(frameCode) ||
      !Known(fieldCode))
    return 0;
  const bool split = form == Form::kSplit;
  const int32_t srcCode = split ? frameCode : fieldCode, dstCode = split ? fieldCode : frameCode;
  const Route &r = RouteOf(srcCode, dstCode);
  const bool narrow = NarrowFieldOffsets(r);
  // Field buffers whose 32-bit chroma offset wraps are not supported: nothing
  // is written to them.
  auto wraps = [&](int64_t pitch) {
    return narrow && Planar(fieldCode) && Mul32(pitch, height >> 1) != pitch * (height >> 1);
  };
  if (wraps(field1Pitch) || wraps(field2Pitch)) return 0;
  const Image whole = Derive(frameCode, frame, framePitch, height, false);
  const Image f1 = Derive(fieldCode, field1, field1Pitch, height >> 1, narrow);
  const Image f2 = Derive(fieldCode, field2, field2Pitch, height >> 1, narrow);
  return Execute(
      r, {form, srcCode, dstCode, matrix, width, height, flip,
          split ? std::array<Image, 3>{f1, f2, whole} : std::array<Image, 3>{whole, f1, f2}});
}

}  // namespace

uint64_t TCS_ColorConvSplit(uint8_t *field1, int64_t field1Pitch, uint8_t *field2,
                            int64_t field2Pitch, int32_t dstFormat, const uint8_t *src,
                            int64_t srcPitch, int32_t srcFormat, int32_t matrix, int32_t width,
                            int32_t height, uint8_t flip) {
  return FieldForm(Form::kSplit, src, srcPitch, srcFormat, field1, field1Pitch, field2, field2Pitch,
                   dstFormat, matrix, width, height, flip);
}

uint64_t TCS_ColorConvCompose(uint8_t *dst, int64_t dstPitch, int32_t dstFormat,
                              const uint8_t *field1, int64_t field1Pitch, const uint8_t *field2,
                              int64_t field2Pitch, int32_t srcFormat, int32_t matrix, int32_t width,
                              int32_t height, uint8_t flip) {
  return FieldForm(Form::kCompose, dst, dstPitch, dstFormat, field1, field1Pitch, field2,
                   field2Pitch, srcFormat, matrix, width, height, flip);
}

namespace {

// Whether a call's codes are both 0 to 10, which route exactly as above; any
// other code goes to the conversions of the extended format space.
bool EightBitPair(const TCS_FrameDesc *a, const TCS_FrameDesc *b) {
  return !a || !b || (Known(a->format) && Known(b->format));
}

}  // namespace

// The descriptor forms: codes 0 to 10 route exactly as above with the planes
// taken from the descriptors (planar planes need not share a buffer); pairs
// with any other code convert through video/descriptor_routes.cpp. Every
// failed check returns 0 silently without writing.
uint64_t TCS_ColorConvFrameEx(const TCS_FrameDesc *dst, const TCS_FrameDesc *src, int32_t matrix,
                              int32_t width, int32_t height, uint8_t flip) {
  if (!EightBitPair(dst, src)) {
    const TCS_FrameDesc *images[3] = {dst, src, nullptr};
    return ConvertDescriptors(Form::kFrame, images, matrix, width, height, flip);
  }
  const auto d = FromDescriptor(dst), s = FromDescriptor(src);
  if (!d || !s || !OptionsPass(matrix, width, height)) return 0;
  return Execute(RouteOf(src->format, dst->format),
                 {Form::kFrame, src->format, dst->format, matrix, width, height, flip, {*d, *s}});
}

uint64_t TCS_ColorConvSplitEx(const TCS_FrameDesc *field1, const TCS_FrameDesc *field2,
                              const TCS_FrameDesc *src, int32_t matrix, int32_t width,
                              int32_t height, uint8_t flip) {
  if (!EightBitPair(field1, src) || !EightBitPair(field2, src)) {
    const TCS_FrameDesc *images[3] = {field1, field2, src};
    return ConvertDescriptors(Form::kSplit, images, matrix, width, height, flip);
  }
  const auto f1 = FromDescriptor(field1), f2 = FromDescriptor(field2), s = FromDescriptor(src);
  // Both fields are written in one format: the first field's code names it.
  if (!f1 || !f2 || !s || field2->format != field1->format || !OptionsPass(matrix, width, height))
    return 0;
  return Execute(
      RouteOf(src->format, field1->format),
      {Form::kSplit, src->format, field1->format, matrix, width, height, flip, {*f1, *f2, *s}});
}

uint64_t TCS_ColorConvComposeEx(const TCS_FrameDesc *dst, const TCS_FrameDesc *field1,
                                const TCS_FrameDesc *field2, int32_t matrix, int32_t width,
                                int32_t height, uint8_t flip) {
  if (!EightBitPair(dst, field1) || !EightBitPair(dst, field2)) {
    const TCS_FrameDesc *images[3] = {dst, field1, field2};
    return ConvertDescriptors(Form::kCompose, images, matrix, width, height, flip);
  }
  const auto d = FromDescriptor(dst), f1 = FromDescriptor(field1), f2 = FromDescriptor(field2);
  // Both fields are read in one format: the first field's code names it.
  if (!d || !f1 || !f2 || field2->format != field1->format || !OptionsPass(matrix, width, height))
    return 0;
  return Execute(
      RouteOf(field1->format, dst->format),
      {Form::kCompose, field1->format, dst->format, matrix, width, height, flip, {*d, *f1, *f2}});
}

}  // namespace tqcs::video
