// The shapes every frame driver shares, written once.
//
// A conversion is a small struct (see the source-format units) that names its
// image layouts, its parameter check, which side its _Frame form flips, when
// the whole image goes through one kernel call, what an odd height does in the
// field forms, and how its options pick a row operation. The adapters below
// turn such a struct into the three C functions of its table slots, with the
// exact signatures of the public slot list, and into the description of their
// images (slot_layouts.hpp); the walkers do the rest.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "base/log.hpp"
#include "base/plane.hpp"
#include "base/scratch.hpp"
#include "base/slot_shape.hpp"
#include "base/state.hpp"
#include "base/table_entries.hpp"
#include "drivers/slot_layouts.hpp"
#include "frame/views.hpp"

namespace tqcs::drivers {

using frame::FitsOneCall;

// Row pointers handed to a row operation, one per plane.
using Rows = uint8_t *const *;

// ---------------------------------------------------------------------------
// Image layouts: how many planes, the row bytes of each plane for a width and
// its rows for a height (slot_layouts.hpp).

template <PlaneLayout... kPlane>
struct Layout {
  static constexpr int kPlanes = sizeof...(kPlane);
  static constexpr ImageLayout kImage{kPlanes, {kPlane...}};
  static constexpr int64_t RowBytes(int plane, int32_t width) {
    return kImage.plane[plane].RowBytes(width);
  }
};

// A plane of one row for every luma row, of width samples; a 4:2:2 chroma
// plane (width / 2 samples, rounded down); a 4:2:0 one (also height / 2 rows).
constexpr PlaneLayout Whole(int32_t sampleBytes) { return {sampleBytes}; }
constexpr PlaneLayout Chroma422(int32_t sampleBytes) { return {sampleBytes, true}; }
constexpr PlaneLayout Chroma420(int32_t sampleBytes) { return {sampleBytes, true, true}; }

template <int32_t kBytes>
using Packed = Layout<Whole(kBytes)>;

// Packed 4:2:2: 2 bytes a pixel.
using PackedYUV16 = Packed<2>;

// Planar 4:2:2 and 4:2:0 with 8-bit (kSample = 1) or 16-bit samples.
template <int32_t kSample>
using Planar422 = Layout<Whole(kSample), Chroma422(kSample), Chroma422(kSample)>;
template <int32_t kSample>
using Planar420 = Layout<Whole(kSample), Chroma420(kSample), Chroma420(kSample)>;

// Hue (16-bit), saturation and value planes.
using HSVPlanes = Layout<Whole(2), Whole(1), Whole(1)>;

// The two chroma planes of planar 4:2:2 or 4:2:0.
using ChromaPlanes422 = Layout<Chroma422(1), Chroma422(1)>;
using ChromaPlanes420 = Layout<Chroma420(1), Chroma420(1)>;

// Three arrays of 256 32-bit counts.
inline constexpr PlaneLayout kCounts{4, false, false, 256};
using HistogramCounts = Layout<kCounts, kCounts, kCounts>;

// ---------------------------------------------------------------------------
// Parameter checks.

enum class Style {
  kLogReturn,    // one level-1 record, nothing converted
  kSilent,       // nothing logged, nothing converted
  kLogContinue,  // one record, then the conversion runs anyway
};

struct Rule {
  Style style = Style::kLogReturn;
  bool pitches = true;  // every pitch must be above 0
  bool size = true;     // width and height must reach their minimums
  int32_t minWidth = 1;
  int32_t minHeight = 1;
};

inline constexpr Rule kLogged{};
inline constexpr Rule kSilentRule{Style::kSilent};

enum class Side { kSource, kDestination };
enum class Fast { kNone, kNatural, kNaturalEvenWidth };

struct Names {
  const char16_t *frame;
  const char16_t *split;
  const char16_t *compose;
};
#define TQCS_DRIVER_NAMES(base)                                                    \
  static constexpr ::tqcs::drivers::Names kNames {                                 \
    u"TCS_" #base "_Frame()", u"TCS_" #base "_Split()", u"TCS_" #base "_Compose()" \
  }

// The log name of one form.
constexpr const char16_t *NameOf(const Names &names, Form form) {
  return form == Form::kSplit ? names.split : form == Form::kCompose ? names.compose : names.frame;
}

// What a conversion inherits unless it says otherwise.
struct Defaults {
  static constexpr const char16_t *kUnit = log::unit::kVideoColor;
  static constexpr Side kFrameFlip = Side::kSource;
  static constexpr Fast kFast = Fast::kNone;
  static constexpr Odd kOdd = Odd::kCopyToField2;
  static constexpr Rule RuleFor(Form) { return kLogged; }
  template <class... Opts>
  static bool OptionsPass(Form, Opts...) {
    return true;
  }
};

// What the conversions with a 4:2:0 walk of their own share (frame::WalkTo420,
// frame::WalkFrom420): each field is an image of its own rows, field 1 taking
// the extra row of an odd height.
struct Defaults420 : Defaults {
  static constexpr Odd kOdd = Odd::kField1Only;
};

// A triple that exists only as a name: its layouts are those the public
// header gives its images. TQCS_NAME_ONLY(base, source layout, destination
// layout[, defaults]) declares its struct.
template <class SrcLayout, class DstLayout, class Base = Defaults>
struct NameOnly : Base {
  using Src = SrcLayout;
  using Dst = DstLayout;
};
#define TQCS_NAME_ONLY(base, ...)                        \
  struct base : ::tqcs::drivers::NameOnly<__VA_ARGS__> { \
    TQCS_DRIVER_NAMES(base);                             \
  }

// The matrix test of the checks: a signed comparison with 4, so 2 and negative
// values pass and select no coefficient set.
inline bool MatrixBelow4(int32_t matrix) { return matrix < 4; }

// ---------------------------------------------------------------------------
// Coefficient rows picked by the matrix selector (0 HD, 1 SD, 3 UHD) and the
// channel order of the RGB side. Any other selector gives null rows.

struct RgbToYuvRows {
  const int16_t *y = nullptr, *u = nullptr, *v = nullptr;
};
struct YuvToRgbRows {
  const int16_t *rv = nullptr, *gu = nullptr, *gv = nullptr, *bu = nullptr;
};

// Rows in the per-component layout: luma from element 2, chroma from element 0.
RgbToYuvRows RgbToYuv(int32_t matrix, uint8_t bgrOrder);
// The same limited to the sets 0 and 1 (the planar 4:2:2 destinations).
RgbToYuvRows RgbToYuvHdSd(int32_t matrix, uint8_t bgrOrder);
// Rows in the component-pair layout of the RGB32 to packed 4:2:2 kernels.
RgbToYuvRows RgbToYuvPairs(int32_t matrix, uint8_t bgrOrder);
YuvToRgbRows YuvToRgb(int32_t matrix);
// True for the selectors that name a set.
bool NamesASet(int32_t matrix);

// Whether a conversion has coefficient rows to compute with: a selector that
// names no set (2, negatives, or UHD where only HD and SD are known) passes the
// checks but converts nothing.
inline bool Usable(const RgbToYuvRows &r) { return r.y && r.u && r.v; }
inline bool Usable(const YuvToRgbRows &t) { return t.rv && t.gu && t.gv && t.bu; }

// A row operation when `ok`, none otherwise.
template <class Row>
std::optional<Row> RowIf(bool ok, Row row) {
  return ok ? std::optional(row) : std::nullopt;
}

// Packed 4:2:2 rows written from full-resolution pixels. The kernels turn an
// odd last pixel into a whole pair (4 bytes: its luma twice and its chroma),
// while a row of odd width is 2 x width bytes long. The row operation is run on
// the even part of the row, the lone pixel is converted into a scratch pair,
// and only the pair's first two bytes (Y, U for YUYV; U, Y for UYVY) are
// stored: the pixel keeps its luma and U, its V has no room in the row.
template <class SrcLayout, class Row>
auto WithinOddRow(Row row) {
  return [row](Rows d, Rows s, int32_t n) {
    if (n < 1 || !(n & 1)) return row(d, s, n);
    if (n > 1) row(d, s, n - 1);
    uint8_t pair[4];
    uint8_t *const dTail[] = {pair};
    uint8_t *const sTail[] = {s[0] + SrcLayout::RowBytes(0, n - 1)};
    row(dTail, sTail, 1);
    std::memcpy(d[0] + 2 * int64_t{n - 1}, pair, 2);
  };
}

// ---------------------------------------------------------------------------
// Working buffers of the 4:2:0 conversions (base/scratch.hpp): allocated per
// call, released on every path.

using tqcs::AllocateScratch;
using tqcs::FreeScratch;
using tqcs::SetScratchAllocatorForTesting;

// ---------------------------------------------------------------------------
// The checks and walkers.

void WriteRecord(log::Level level, const char16_t *unit, const char16_t *function,
                 const char16_t *message);

// The scratch rows of the 4:2:0 conversions: 2 x width bytes holding four
// half-width chroma rows, U of row a, U of row b, V of row a, V of row b.
struct ChromaScratch {
  uint8_t *base;
  int32_t width;
  uint8_t *ua() const { return base; }
  uint8_t *ub() const { return base + width / 2; }
  uint8_t *va() const { return base + width; }
  uint8_t *vb() const { return base + width + width / 2; }
};

// Allocates the scratch of a conversion, or writes its failure record.
template <class Conv>
uint8_t *ScratchOrRecord(Form form, size_t bytes, const char16_t *message) {
  uint8_t *scratch = AllocateScratch(bytes);
  if (!scratch) {
    WriteRecord(log::kFailure, Conv::kUnit, NameOf(Conv::kNames, form), message);
  }
  return scratch;
}

// Copies the converted row y of field 1 into row y of field 2, plane by plane,
// with TQMemProc's byte copy.
template <class Layout, size_t N>
void CopyRowToField2(const std::array<Plane, N> &f1, const std::array<Plane, N> &f2, int64_t y,
                     int32_t width) {
  for (size_t i = 0; i < N; ++i)
    g_pMemProcRoot->pMem->TMP_MemCopy(f2[i].Row(y), f1[i].Row(y),
                                      Layout::RowBytes(static_cast<int>(i), width));
}

template <class Conv, size_t ND, size_t NS>
bool NaturalPitches(const std::array<Plane, ND> &dst, const std::array<Plane, NS> &src,
                    int32_t width) {
  if (Conv::kFast == Fast::kNone) return false;
  if (Conv::kFast == Fast::kNaturalEvenWidth && (width & 1)) return false;
  for (size_t i = 0; i < ND; ++i)
    if (dst[i].pitch != Conv::Dst::RowBytes(static_cast<int>(i), width)) return false;
  for (size_t i = 0; i < NS; ++i)
    if (src[i].pitch != Conv::Src::RowBytes(static_cast<int>(i), width)) return false;
  return true;
}

// The generic _Frame walk: the side the conversion names flipped; one kernel
// call per row, or one for the whole image at natural pitches.
template <class Conv, class Row, size_t ND, size_t NS>
void WalkFrame(std::array<Plane, ND> dst, std::array<Plane, NS> src, int32_t width, int32_t height,
               uint8_t flip, const Row &row) {
  if (flip) {
    if constexpr (Conv::kFrameFlip == Side::kSource)
      frame::TurnUpsideDown(src, height);
    else
      frame::TurnUpsideDown(dst, height);
  }
  frame::WalkFrame(dst, src, width, height,
                   NaturalPitches<Conv>(dst, src, width) && FitsOneCall(width, height), row);
}

// The generic _Split and _Compose walk: the frame flipped when asked, walked
// against the two fields; an odd last row is converted into (or from) field 1
// unless the conversion drops it, and a split copies it on into field 2 when
// the conversion says so.
template <class Conv, Form F, class Row, size_t NF, size_t NG>
void WalkFields(std::array<Plane, NF> whole, const std::array<Plane, NG> &field1,
                const std::array<Plane, NG> &field2, int32_t width, int32_t height, uint8_t flip,
                const Row &row) {
  if (flip) frame::TurnUpsideDown(whole, height);
  frame::WalkFields<F>(whole, field1, field2,
                       frame::FieldWalkRows(height, Conv::kOdd != Odd::kDrop),
                       [&](Rows d, Rows s) { row(d, s, width); });
  if ((height & 1) && F == Form::kSplit && Conv::kOdd == Odd::kCopyToField2)
    CopyRowToField2<typename Conv::Dst>(field1, field2, height >> 1, width);
}

// ---------------------------------------------------------------------------
// From C arguments to planes, options and flip.

// Planes kFirst to kFirst + N - 1 of a slot's arguments, placed by its shape.
template <class Shape, size_t kFirst, size_t N, class Tuple>
std::array<Plane, N> TakePlanes(const Tuple &args) {
  return [&]<size_t... I>(std::index_sequence<I...>) {
    return std::array<Plane, N>{Plane{Bytes(std::get<Shape::PointerAt(kFirst + I)>(args)),
                                      std::get<Shape::PitchAt(kFirst + I)>(args)}...};
  }
  (std::make_index_sequence<N>{});
}

// Elements kBegin to kEnd - 1 of a tuple, copied.
template <size_t kBegin, size_t kEnd, class Tuple>
auto Slice(const Tuple &t) {
  return [&]<size_t... I>(std::index_sequence<I...>) {
    return std::make_tuple(std::get<kBegin + I>(t)...);
  }
  (std::make_index_sequence<kEnd - kBegin>{});
}

template <size_t N>
bool AllPresent(const std::array<Plane, N> &planes, bool pitches) {
  for (const Plane &pl : planes)
    if (!pl.p || (pitches && pl.pitch <= 0)) return false;
  return true;
}

// The parameter check of a driver: true when the conversion goes ahead.
template <class Conv, Form F, class Opts, class... Images>
bool Check(int32_t width, int32_t height, const Opts &opts, const Images &...images) {
  constexpr Rule rule = Conv::RuleFor(F);
  bool ok = (AllPresent(images, rule.pitches) && ...);
  if (rule.size) ok = ok && width >= rule.minWidth && height >= rule.minHeight;
  ok = ok && std::apply([](auto... o) { return Conv::OptionsPass(F, o...); }, opts);
  if (ok) return true;
  const char16_t *name = NameOf(Conv::kNames, F);
  switch (rule.style) {
    case Style::kLogReturn:
      WriteRecord(log::kInvalid, Conv::kUnit, name, log::msg::kInvalidParams);
      return false;
    case Style::kSilent:
      return false;
    case Style::kLogContinue:
      WriteRecord(log::kInvalid, Conv::kUnit, name, log::msg::kInvalidParamKey);
      return true;
  }
  return false;
}

// Runs one form of a conversion on the C arguments of its slot: the checks,
// then Walk<form>(width, height, flip, images, options...), the images a tuple
// in argument order. A conversion with a walk of its own (the 4:2:0 ones)
// provides Walk; the others provide MakeRow(form, options...) and use the
// generic walkers.
template <class Conv, Form F, class Sig, class Tuple>
void Run(const Tuple &args) {
  using Shape = SlotShape<Sig>;
  static_assert(Shape::kFrameShaped);
  constexpr size_t ND = Conv::Dst::kPlanes, NS = Conv::Src::kPlanes;
  const int32_t width = std::get<Shape::kWidth>(args);
  const int32_t height = std::get<Shape::kHeight>(args);
  const auto opts = Slice<Shape::kFirstOption, Shape::kFlip>(args);
  const uint8_t flip = std::get<Shape::kFlip>(args);

  auto go = [&](const auto &...images) {
    if (!Check<Conv, F>(width, height, opts, images...)) return;
    std::apply(
        [&](auto... o) {
          Conv::template Walk<F>(width, height, flip, std::make_tuple(images...), o...);
        },
        opts);
  };
  if constexpr (F == Form::kFrame) {
    go(TakePlanes<Shape, 0, ND>(args), TakePlanes<Shape, ND, NS>(args));
  } else if constexpr (F == Form::kSplit) {
    go(TakePlanes<Shape, 0, ND>(args), TakePlanes<Shape, ND, ND>(args),
       TakePlanes<Shape, 2 * ND, NS>(args));
  } else {
    go(TakePlanes<Shape, 0, ND>(args), TakePlanes<Shape, ND, NS>(args),
       TakePlanes<Shape, ND + NS, NS>(args));
  }
}

// The generic walk of a conversion that provides MakeRow(form, options...):
// the row operation is made once before the loop; no operation (a selector
// that the driver refuses silently) means nothing is converted.
template <class Conv, class Base = Defaults>
struct Generic : Base {
  template <Form F, class Images, class... Opts>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Images &images,
                   Opts... opts) {
    const auto row = Conv::MakeRow(F, opts...);
    if (!row) return;
    const auto &a = std::get<0>(images);
    const auto &b = std::get<1>(images);
    if constexpr (F == Form::kFrame) {
      WalkFrame<Conv>(a, b, width, height, flip, *row);
    } else if constexpr (F == Form::kSplit) {
      WalkFields<Conv, F>(std::get<2>(images), a, b, width, height, flip, *row);
    } else {
      WalkFields<Conv, F>(a, b, std::get<2>(images), width, height, flip, *row);
    }
  }
};

// The C function of one slot: its exact signature comes from the typed table
// member it is stored in.
template <class Conv, Form F, class Sig>
struct Adapter;
template <class Conv, Form F, class Ret, class... A>
struct Adapter<Conv, F, Ret (*)(A...)> {
  static Ret Call(A... args) {
    if constexpr (F == Form::kSingle) {
      return Conv::Single(args...);
    } else {
      Run<Conv, F, Ret (*)(A...)>(std::tuple<A...>(args...));
      return Ret();
    }
  }
};

// A slot whose operation exists only as a name: one "Not Implemented" record.
template <class Conv, Form F, class Sig>
struct NotImplementedAdapter;
template <class Conv, Form F, class... A>
struct NotImplementedAdapter<Conv, F, void (*)(A...)> {
  static void Call(A...) {
    WriteRecord(log::kInvalid, log::unit::kVideoColor, NameOf(Conv::kNames, F),
                log::msg::kNotImplemented);
  }
};

// Table entries: the slot is the member's position in its typed table.
template <class Table, class M>
int32_t SlotOf(M Table::*member) {
  static const Table probe{};
  return static_cast<int32_t>(
      (reinterpret_cast<const char *>(&(probe.*member)) - reinterpret_cast<const char *>(&probe)) /
      sizeof(Fn));
}

// One line of a unit's slot table: the entry start-up stores and the layout
// of the slot's images, from the conversion the line names.
struct DriverSlot {
  SlotEntry entry;
  SlotLayout layout;
};

template <class Conv, Form F, class Sig>
constexpr SlotLayout LayoutOf() {
  using Shape = SlotShape<Sig>;
  using Dst = typename Conv::Dst;
  using Src = typename Conv::Src;
  static_assert(Shape::kDestinations == (F == Form::kSplit ? 2 : 1) * size_t{Dst::kPlanes} &&
                    Shape::kSources == (F == Form::kCompose ? 2 : 1) * size_t{Src::kPlanes},
                "the conversion's layouts are not its slot's planes");
  Odd odd = Odd::kCopyToField2;
  if constexpr (requires { Conv::kOdd; }) odd = Conv::kOdd;
  return {F == Form::kSingle ? Form::kFrame : F, Dst::kImage, Src::kImage, odd};
}

template <class Conv, Form F, class Table, class M>
DriverSlot Entry(M Table::*member) {
  return {{SlotOf(member), Erase(&Adapter<Conv, F, M>::Call)}, LayoutOf<Conv, F, M>()};
}

template <class Conv, Form F, class Table, class M>
DriverSlot NotImplementedEntry(M Table::*member) {
  return {{SlotOf(member), Erase(&NotImplementedAdapter<Conv, F, M>::Call)},
          LayoutOf<Conv, F, M>()};
}

// A unit's slot table, split into the entries start-up stores and their
// layouts, index by index.
template <size_t N>
struct SlotTable {
  std::array<SlotEntry, N> entries;
  std::array<SlotLayout, N> layouts;
};

template <size_t N>
SlotTable<N> TableOf(const DriverSlot (&slots)[N]) {
  SlotTable<N> t{};
  for (size_t i = 0; i < N; ++i) {
    t.entries[i] = slots[i].entry;
    t.layouts[i] = slots[i].layout;
  }
  return t;
}

// The three slots of a conversion triple, named after its base:
// TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_YUV16) stores TCS_RGB24_2_YUV16_Frame,
// _Split and _Compose, all carried by the conversion struct RGB24_2_YUV16.
#define TQCS_TRIPLE_OF(Table, base, entry)                                            \
  ::tqcs::drivers::entry<base, ::tqcs::Form::kFrame>(&Table::TCS_##base##_Frame),     \
      ::tqcs::drivers::entry<base, ::tqcs::Form::kSplit>(&Table::TCS_##base##_Split), \
      ::tqcs::drivers::entry<base, ::tqcs::Form::kCompose>(&Table::TCS_##base##_Compose)
#define TQCS_TRIPLE(Table, base) TQCS_TRIPLE_OF(Table, base, Entry)

// The same for a triple that exists only as a name (a NameOnly struct).
#define TQCS_NOT_IMPLEMENTED(Table, base) TQCS_TRIPLE_OF(Table, base, NotImplementedEntry)

#define TQCS_SINGLE(Table, name) \
  ::tqcs::drivers::Entry<name, ::tqcs::Form::kSingle>(&Table::TCS_##name)

}  // namespace tqcs::drivers
