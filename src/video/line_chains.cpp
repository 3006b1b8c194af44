#include <cstring>
#include <type_traits>
#include <utility>

#include "base/state.hpp"
#include "kernels/sample_moves.hpp"
#include "video/line_chains_run.hpp"

namespace tqcs::video::lines {
namespace {

// What an edge's call takes: the rows, the count and the coefficient rows.
struct Args {
  Row dst, src;
  int32_t count;
  std::array<const int16_t *, 4> coef{};
};

// A parameter's role, from its type: a destination row, a source row, a
// coefficient row, the count, or an alpha byte (opaque here).
enum Role { kDst, kSrc, kCoef, kCount, kAlpha };
template <class T>
constexpr Role RoleOf() {
  if constexpr (std::is_same_v<T, const int16_t *>) {
    return kCoef;
  } else if constexpr (std::is_pointer_v<T>) {
    return std::is_const_v<std::remove_pointer_t<T>> ? kSrc : kDst;
  } else {
    return std::is_same_v<T, int32_t> ? kCount : kAlpha;
  }
}

// Parameter I's place among the parameters of its role.
template <size_t I, class... P>
constexpr size_t RankOf() {
  constexpr std::array<Role, sizeof...(P)> roles{RoleOf<P>()...};
  size_t rank = 0;
  for (size_t j = 0; j < I; ++j) rank += roles[j] == roles[I];
  return rank;
}

template <class T, size_t kRank>
T ArgOf(const Args &a) {
  constexpr Role role = RoleOf<T>();
  if constexpr (role == kDst || role == kSrc) {
    return reinterpret_cast<T>((role == kDst ? a.dst : a.src)[kRank]);
  } else if constexpr (role == kCoef) {
    return a.coef[kRank];
  } else if constexpr (role == kCount) {
    return a.count;
  } else {
    return static_cast<T>(255);
  }
}

template <class... P, size_t... I>
void CallWith(void (*fn)(P...), const Args &a, std::index_sequence<I...>) {
  fn(ArgOf<P, RankOf<I, P...>()>(a)...);
}
template <class... P>
void CallFn(void (*fn)(P...), const Args &a) {
  CallWith(fn, a, std::index_sequence_for<P...>{});
}

// A kernel slot (read from the table in use) or an internal routine.
template <auto kFn>
void Call(const Args &a) {
  if constexpr (std::is_member_pointer_v<decltype(kFn)>) {
    CallFn(Kernels().*kFn, a);
  } else {
    CallFn(kFn, a);
  }
}

bool BlueFirst(Line l) {
  return l == Line::kBGRA8 || l == Line::kBGR8 || l == Line::kBGRA16 || l == Line::kBGR16;
}

// The arguments of an edge's call, with the coefficient rows its kernel takes.
Args ArgsOf(const Edge &e, const Row &d, const Row &s, int32_t count, const Coefficients &c) {
  Args a{d, s, count, {}};
  const Coefficients::ToYuv &y = BlueFirst(e.from) ? c.bgrFirst : c.rgbFirst;
  switch (e.coef) {
    case Coef::kNone:
      break;
    case Coef::kDeep:
      a.coef =
          InfoOf(e.from).rgb ? decltype(a.coef){y.y, y.uv} : decltype(a.coef){c.toRgbA, c.toRgbB};
      break;
    case Coef::kToRgb8:
      a.coef = {c.rv, c.gu, c.gv, c.bu};
      break;
    case Coef::kToYuv8:
      a.coef = {y.y, y.u, y.v};
      break;
  }
  return a;
}

using Run = void (*)(const Edge &, const Row &, const Row &, int32_t, const Coefficients &);

// A slot or routine on the whole row, count = width x kPer.
template <auto kFn, int kPer>
void Whole(const Edge &e, const Row &d, const Row &s, int32_t width, const Coefficients &c) {
  Call<kFn>(ArgsOf(e, d, s, width * kPer, c));
}

// Luma copied; the chroma planes joined or split by a routine taking
// width / 2 samples a plane.
template <auto kFn>
void ChromaOnly(const Edge &e, const Row &d, const Row &s, int32_t width, const Coefficients &c) {
  std::memcpy(d[0], s[0], static_cast<size_t>(PlaneRowBytes(FormatOf(e.from), 0, width)));
  Call<kFn>(ArgsOf(e, {d[1], d[2], nullptr}, {s[1], s[2], nullptr}, width / 2, c));
}

// A sample move on every plane of a planar 4:2:2 row.
template <auto kFn>
void EachPlane(const Edge &e, const Row &d, const Row &s, int32_t width, const Coefficients &c) {
  for (size_t k = 0; k < 3; ++k)
    Call<kFn>(
        ArgsOf(e, {d[k], nullptr, nullptr}, {s[k], nullptr, nullptr}, k ? width / 2 : width, c));
}

// The names the edge table uses.
using moves::DeinterleaveUV16;
using moves::DropFourth16;
using moves::InterleaveUV16;
using moves::LowToHigh10;
constexpr auto UV_Interleave_Row = &TCS_KernelTable::UV_Interleave_Row;
constexpr auto UV_Deinterleave_Row = &TCS_KernelTable::UV_Deinterleave_Row;
constexpr auto TopToLow10 = &TCS_KernelTable::Y16_2_Y10_Row;

#define K(name) &Whole<&TCS_KernelTable::name, 1>
#define K2(name) &Whole<&TCS_KernelTable::name, 2>
#define Move(fn) &Whole<&fn, 1>
#define Chroma(fn) &ChromaOnly<fn>
#define Each(fn) &EachPlane<fn>
#define TQCS_LINE_EDGE_RUN(a, b, c, run) run,
constexpr Run kRuns[] = {TQCS_LINE_EDGES(TQCS_LINE_EDGE_RUN)};
#undef TQCS_LINE_EDGE_RUN
#undef K
#undef K2
#undef Move
#undef Chroma
#undef Each
static_assert(std::size(kRuns) == kEdgeCount);

// Bytes of plane k of a layout's scratch row, rounded up to 64.
size_t ScratchPlaneBytes(Line l, int k, int32_t width) {
  return (static_cast<size_t>(PlaneRowBytes(FormatOf(l), k, width)) + 63) & ~size_t{63};
}

}  // namespace

size_t ChainScratchBytes(const Chain &chain, int32_t width) {
  size_t bytes = 0;
  for (int i = 0; i + 1 < chain.length; ++i) {
    const Line l = kEdges[chain.edges[i]].to;
    for (int k = 0; k < FormatOf(l).planes; ++k) bytes += ScratchPlaneBytes(l, k, width);
  }
  return bytes;
}

PreparedChain PrepareChain(const Chain &chain, Line layout, int32_t width, uint8_t *scratch) {
  PreparedChain p{&chain, layout, width, {}};
  for (int i = 0; i + 1 < chain.length; ++i) {
    const Line l = kEdges[chain.edges[i]].to;
    for (int k = 0; k < FormatOf(l).planes; ++k) {
      p.between[i][k] = scratch;
      scratch += ScratchPlaneBytes(l, k, width);
    }
  }
  return p;
}

void RunChain(const PreparedChain &p, const Row &dst, const Row &src, const Coefficients &c) {
  const Chain &chain = *p.chain;
  if (chain.length == 0) {
    const FormatInfo &f = FormatOf(p.layout);
    for (int k = 0; k < f.planes; ++k)
      std::memcpy(dst[k], src[k], static_cast<size_t>(PlaneRowBytes(f, k, p.width)));
    return;
  }
  for (int i = 0; i < chain.length; ++i) {
    const int16_t id = chain.edges[i];
    kRuns[id](kEdges[id], i + 1 < chain.length ? p.between[i] : dst, i ? p.between[i - 1] : src,
              p.width, c);
  }
}

bool CoefficientsOf(int32_t matrix, Coefficients &out) {
  struct Set {
    const int16_t *yGbr, *yGrb, *uRgb, *vRgb, *uBgr, *vBgr, *rv, *gu, *gv, *bu;
  };
#define TQCS_SET(std)                                                                 \
  Set{g_sY_GBR_##std, g_sY_GRB_##std, g_sU_RGB_##std, g_sV_RGB_##std, g_sU_BGR_##std, \
      g_sV_BGR_##std, g_sR_V_##std,   g_sG_U_##std,   g_sG_V_##std,   g_sB_U_##std}
  Set set;
  switch (matrix) {
    case TCS_MATRIX_HD:
      set = TQCS_SET(HD);
      break;
    case TCS_MATRIX_SD:
      set = TQCS_SET(SD);
      break;
    case TCS_MATRIX_UHD:
      set = TQCS_SET(UHD);
      break;
    default:
      return false;
  }
#undef TQCS_SET
  out.rgbFirst = {set.yGbr, set.uRgb, set.vRgb, {}};
  out.bgrFirst = {set.yGrb, set.uBgr, set.vBgr, {}};
  for (int i = 0; i < 4; ++i) {
    out.rgbFirst.uv[i] = set.uRgb[i];
    out.rgbFirst.uv[4 + i] = set.vRgb[i];
    out.bgrFirst.uv[i] = set.uBgr[i];
    out.bgrFirst.uv[4 + i] = set.vBgr[i];
  }
  out.rv = set.rv;
  out.gu = set.gu;
  out.gv = set.gv;
  out.bu = set.bu;
  out.toRgbA[0] = set.rv[0];
  out.toRgbA[1] = set.gv[0];
  out.toRgbB[0] = set.gu[0];
  out.toRgbB[1] = set.bu[0];
  return true;
}

}  // namespace tqcs::video::lines
