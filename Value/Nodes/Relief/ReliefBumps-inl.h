// SPDX-License-Identifier: Apache-2.0
//
// The shapes of the bumps, one for each profile: their heights by the definition, and quick looks at whether one can
// raise anything at all.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_BUMPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_BUMPS_INL_H_
#undef VALUE_NODES_RELIEF_BUMPS_INL_H_
#else
#define VALUE_NODES_RELIEF_BUMPS_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Eight lanes at most: a wider division takes as long per lane, and small groups of pixels prune better.
using D = hn::CappedTag<float, 8>;
using V = hn::Vec<D>;
using M = hn::Mask<D>;
// How much a comparison that only decides whether to look closer gives away, relative to the values compared. Rounding
// takes less than a quarter of it.
inline constexpr float kMargin = 1.0F / 262144.0F;

inline unsigned GetBits(D d, M mask) {
  std::array<std::uint8_t, 8> bytes{};
  hn::StoreMaskBits(d, mask, bytes.data());
  return bytes[0];
}

/// How far bumps reach.
struct Reach {
  float radius;
  /// The same for comparisons that only decide whether to look closer: greater where squared distances are rounded.
  float limit;
};

// Each profile says these things, all with w = level * q, what a bump adds above `low` in units of the range:
//
// Guard(w)                       what the comparisons below compare with; grows with w, finite
// Prepare(q)                     what Excess needs of the bump
// Excess(bump, d2, guard)        not above 0 only where w at the squared distance d2 is at most the guarded one; no NaN
// FindChords(q, held, i, chords) the chords of bumps, kept from place i on
// GetTangent(q, highest, d2, held)  see `Tangent`; only where kHasTangent says so
// Level(t)                       the definition
//
// The definition's roundings keep the order of their operands, so that w as computed never falls with q and never rises
// with the distance, except for Smooth, whose margin covers the difference. It is never above q.

/// The least and the most w that a group of pixels holds. Those that nothing can raise do not count for the most.
struct Held {
  float least;
  float most;
};

/// For each bump of a block a straight line in what a pixel has guarded: where the bump raises the pixel at a squared
/// distance d2,
///
///     base - slope * guard > d2.
///
/// The square of the distance up to which a bump is above w is a convex function of w, or of its square, so that the
/// chord between the least and the most that the pixels hold lies above it. A pixel that holds more needs others.
struct Chords {
  alignas(64) std::array<float, 16> base;
  alignas(64) std::array<float, 16> slope;
};

/// A plane that touches what bumps offer: where a bump q raises a pixel that holds w at a distance d, and the tangent
/// was taken for a squared distance near d2,
///
///     radius * (of_q * q - of_w * w) > of_way * d0 * d
///
/// with d0 the root of d2. The distance up to which a bump is above w is a homogeneous function of q and w, so that the
/// plane goes through the origin, and where that function is concave the plane lies above it, whatever q and w of a
/// block and a group of pixels are. The bell is not concave everywhere; see there.
struct Tangent {
  V of_q;
  V of_w;
  V of_way;
};

/// What w is cut to where it is guarded, so that its square is finite with a square of the radius on top.
inline float GetLargestGuarded(float radius) { return std::min(1e15F, 4e18F / radius); }

inline V Square(V v) { return hn::Mul(v, v); }

struct Linear {
  explicit Linear(const Reach& reach)
      : radius_(hn::Set(D(), reach.radius)),
        wide_(hn::Set(D(), reach.radius * (1.0F + kMargin))),
        limit_(hn::Set(D(), reach.limit)),
        largest_(hn::Set(D(), GetLargestGuarded(reach.radius))) {}
  using Prepared = V;

  HWY_INLINE V Guard(V w) const { return hn::Mul(hn::Min(w, largest_), radius_); }
  HWY_INLINE Prepared Prepare(V q) const { return hn::Mul(q, wide_); }
  // r q - r w > distance, squared.
  HWY_INLINE V Excess(const Prepared& rq, V d2, V guard) const {
    const V left = hn::Max(hn::Min(hn::Sub(rq, guard), limit_), hn::Zero(D()));
    return hn::Sub(Square(left), d2);
  }
  HWY_INLINE void FindChords(V q, const Held& held, std::size_t i, Chords& chords) const {
    const D d;
    // Finite, and above what any guarded w takes from it.
    const V rq = Prepare(hn::Min(q, hn::Mul(hn::Set(d, 4.0F), largest_)));
    const V least = Guard(hn::Set(d, held.least));
    const V at_least = hn::Max(hn::Sub(rq, least), hn::Zero(d));
    const V at_most = hn::Max(hn::Sub(rq, Guard(hn::Set(d, held.most))), hn::Zero(d));
    const V slope = hn::Add(at_least, at_most);
    const V base = hn::MulAdd(slope, least, Square(at_least));
    hn::Store(hn::MulAdd(base, hn::Set(d, 4 * kMargin), base), d, chords.base.data() + i);
    hn::Store(slope, d, chords.slope.data() + i);
  }
  static constexpr bool kHasTangent = true;
  HWY_INLINE Tangent GetTangent(V, V, V d2, const Held&) const {
    const D d;
    const V one = hn::Set(d, 1.0F);
    // A distance of 0 has no direction, and none is as good as any.
    return {one, one, hn::Div(one, hn::Sqrt(hn::Max(d2, hn::Set(d, kLeastSquare))))};
  }
  HWY_INLINE V Level(V t) const { return hn::Sub(hn::Set(D(), 1.0F), t); }

 private:
  static constexpr float kLeastSquare = 1e-6F;

  V radius_;
  V wide_;
  V limit_;
  V largest_;
};

struct ArcOut {
  explicit ArcOut(const Reach& reach)
      : radius_(hn::Set(D(), reach.radius)),
        wide_(hn::Set(D(), reach.radius * (1.0F + kMargin))),
        limit_(hn::Set(D(), reach.limit * reach.limit)),
        largest_(hn::Set(D(), GetLargestGuarded(reach.radius))) {}
  using Prepared = V;

  HWY_INLINE V Guard(V w) const { return Square(hn::Mul(hn::Min(w, largest_), radius_)); }
  HWY_INLINE Prepared Prepare(V q) const { return Square(hn::Mul(q, wide_)); }
  // (r q)^2 - (r w)^2 > distance^2.
  HWY_INLINE V Excess(const Prepared& rq2, V d2, V guard) const {
    return hn::Sub(hn::Min(hn::Sub(rq2, guard), limit_), d2);
  }
  HWY_INLINE void FindChords(V q, const Held&, std::size_t i, Chords& chords) const {
    hn::Store(Prepare(q), D(), chords.base.data() + i);
    hn::Store(hn::Set(D(), 1.0F), D(), chords.slope.data() + i);
  }
  // The distance is r sqrt(q^2 - w^2), and with q = 1, where w = L at t, the derivatives are 1 / t and -L / t. They are
  // taken times t.
  static constexpr bool kHasTangent = true;
  HWY_INLINE Tangent GetTangent(V q, V, V d2, const Held&) const {
    const D d;
    const V one = hn::Set(d, 1.0F);
    constexpr float kMostT = 0.98F;
    const V distance = hn::Sqrt(d2);
    const V inverse = hn::Max(hn::Mul(q, radius_), hn::Mul(distance, hn::Set(d, 1.0F / kMostT)));
    const V of_way = hn::Div(one, inverse);
    const V t = hn::Mul(of_way, distance);
    return {one, Level(t), of_way};
  }
  HWY_INLINE V Level(V t) const { return hn::Sqrt(hn::Sub(hn::Set(D(), 1.0F), Square(t))); }

 private:
  V radius_;
  V wide_;
  V limit_;
  V largest_;
};

/// What the profiles share for which 1 - t must be known.
struct Curved {
  explicit Curved(const Reach& reach)
      : radius_(hn::Set(D(), reach.radius)),
        inverse_radius_(hn::Set(D(), 1.0F / reach.radius)),
        largest_(hn::Set(D(), GetLargestGuarded(reach.radius))) {}
  struct Prepared {
    V inverse;
    V inverse_rq;
  };

  HWY_INLINE V Guard(V w) const { return hn::Min(w, largest_); }
  HWY_INLINE Prepared Prepare(V q) const {
    const V inverse = GetInverse(q);
    return {inverse, hn::Mul(inverse, inverse_radius_)};
  }

 protected:
  /// At most 1, and 0 only where t is 1.
  HWY_INLINE V GetU(const Prepared& bump, V d2) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F + 4 * kMargin), hn::Mul(hn::Sqrt(d2), bump.inverse_rq));
    return hn::Max(hn::Min(u, hn::Set(D(), 1.0F)), hn::Zero(D()));
  }

  /// Chords of the square of t as a function of the level v from 0 to 1, which is convex. `square(v)` may be a little
  /// more. q is not less than 1e-15, since the tree keeps no bump so small.
  ///
  /// The definition subtracts from 1, so that its level is off by a few roundings of 1, however small it is. For that
  /// the whole function is moved by the margin.
  template <class SquareOfT>
  HWY_INLINE void FindChordsOf(V q, const Held& held, std::size_t i, Chords& chords, const SquareOfT& square) const {
    const D d;
    const V zero = hn::Zero(d);
    const V one = hn::Set(d, 1.0F);
    const V margin = hn::Set(d, kMargin);
    const V inverse = GetInverse(q);
    const auto get_level = [&](float w) {
      return hn::Max(hn::Sub(hn::Min(hn::Mul(Guard(hn::Set(d, w)), inverse), one), margin), zero);
    };
    const V least = get_level(held.least);
    const V most = get_level(held.most);
    const V at_least = square(least);
    const V fall = hn::Max(hn::Sub(at_least, square(most)), zero);
    // A line that falls less from the least on is a little higher, and its slope is not all rounding.
    const V slope = hn::Div(fall, hn::Max(hn::Sub(most, least), hn::Set(d, 1e-3F)));
    const V base = hn::MulAdd(slope, hn::Add(least, margin), hn::Add(at_least, hn::Set(d, 8 * kMargin)));
    const V rq = hn::Mul(q, radius_);
    // Such a bump raises whatever is in reach, and the squares would overflow.
    const M is_large = hn::Gt(rq, hn::Set(d, 1e15F));
    const V infinity = hn::Set(d, std::numeric_limits<float>::infinity());
    hn::Store(hn::IfThenElse(is_large, infinity, hn::Mul(Square(rq), base)), d, chords.base.data() + i);
    hn::Store(hn::IfThenZeroElse(is_large, hn::Mul(hn::Mul(rq, radius_), slope)), d, chords.slope.data() + i);
  }

  V radius_;

 private:
  static HWY_INLINE V GetInverse(V q) { return hn::Div(hn::Set(D(), 1.0F), hn::Max(q, hn::Set(D(), 1e-15F))); }

  V inverse_radius_;
  V largest_;
};

struct Smooth : Curved {
  using Curved::Curved;

  HWY_INLINE V Excess(const Prepared& bump, V d2, V guard) const {
    const V u = GetU(bump, d2);
    const V level = hn::Mul(hn::Sub(hn::Set(D(), 3.0F), hn::Add(u, u)), Square(u));
    const V needed = hn::Mul(hn::Mul(guard, bump.inverse), hn::Set(D(), 1.0F - 4 * kMargin));
    return hn::Sub(level, needed);
  }
  // The square of t is s where 1 - v = 3 s - 2 s sqrt(s), which is concave in s, so that s is convex in v. With
  // x^2 = 1 - sqrt(v) it is nearly x^2 (2/3 + 0.36 x), and this polynomial is up to 0.08 percent above it.
  HWY_INLINE void FindChords(V q, const Held& held, std::size_t i, Chords& chords) const {
    FindChordsOf(q, held, i, chords, [](V v) {
      const D d;
      const V x2 = hn::Sub(hn::Set(d, 1.0F), hn::Sqrt(v));
      const V x = hn::Sqrt(x2);
      const V factor = hn::MulAdd(x, hn::Set(d, -0.026175F), hn::Set(d, 0.35895F));
      return hn::Mul(x2, hn::MulAdd(x, factor, hn::Set(d, 0.66723F)));
    });
  }
  // With q = 1 the derivatives of the distance are (1 + t + 4 t^2) / (6 t) and -1 / (6 t u). They are taken times
  // 6 t u.
  //
  // As a function of the level, t is concave up to t = 0.5 only. But the line that touches it at t is above it up to
  // 1.5 - 2 t, where they cross: for t = 0.25 everywhere, and for t = 0.4 up to t = 0.7, where the level is 0.216. No w
  // of the group may be less in units of the block's highest q.
  static constexpr bool kHasTangent = true;
  HWY_INLINE Tangent GetTangent(V q, V highest, V d2, const Held& held) const {
    const D d;
    const V one = hn::Set(d, 1.0F);
    const V distance = hn::Sqrt(d2);
    const M is_higher = hn::Gt(hn::Set(d, held.least), hn::Mul(highest, hn::Set(d, 0.2161F)));
    const V most_t_inverse = hn::IfThenElse(is_higher, hn::Set(d, 1.0F / 0.4F), hn::Set(d, 1.0F / 0.25F));
    const V scale = hn::Div(one, hn::Max(hn::Mul(q, radius_), hn::Mul(distance, most_t_inverse)));
    const V t = hn::Mul(scale, distance);
    const V u = hn::Sub(one, t);
    const V of_q = hn::Mul(hn::MulAdd(t, hn::MulAdd(hn::Set(d, 4.0F), t, one), one), u);
    return {of_q, one, hn::Mul(hn::Mul(hn::Set(d, 6.0F), u), scale)};
  }
  HWY_INLINE V Level(V t) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F), t);
    return hn::Mul(hn::Sub(hn::Set(D(), 3.0F), hn::Mul(hn::Set(D(), 2.0F), u)), Square(u));
  }
};

struct ArcIn : Curved {
  using Curved::Curved;

  // level > v is u^2 > v (2 - v) for v up to 1. The subtractions in the definition make the margin an absolute one,
  // which must not reach beyond the rim.
  HWY_INLINE V Excess(const Prepared& bump, V d2, V guard) const {
    const V u = GetU(bump, d2);
    const V v = hn::Min(hn::Mul(guard, bump.inverse), hn::Set(D(), 1.0F));
    const V needed = hn::Mul(v, hn::Sub(hn::Set(D(), 2.0F), v));
    const V offered = hn::IfThenElseZero(hn::Gt(u, hn::Zero(D())), hn::Add(Square(u), hn::Set(D(), 2 * kMargin)));
    return hn::Sub(offered, needed);
  }
  // t = 1 - sqrt(v (2 - v)) is convex, and so is its square.
  HWY_INLINE void FindChords(V q, const Held& held, std::size_t i, Chords& chords) const {
    FindChordsOf(q, held, i, chords, [](V v) {
      const D d;
      const V u = hn::Sqrt(hn::Mul(v, hn::Sub(hn::Set(d, 2.0F), v)));
      return Square(hn::Max(hn::Sub(hn::Set(d, 1.0F), u), hn::Zero(d)));
    });
  }
  static constexpr bool kHasTangent = false;
  HWY_INLINE V Level(V t) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F), t);
    return hn::Sub(hn::Set(D(), 1.0F), hn::Sqrt(hn::Sub(hn::Set(D(), 1.0F), Square(u))));
  }
};

/// All profiles of a field that is flat, see `IsFlat`.
struct Flat {
  explicit Flat(const Reach&) {}
  using Prepared = V;

  HWY_INLINE V Guard(V w) const { return hn::Min(w, hn::Set(D(), std::numeric_limits<float>::max())); }
  HWY_INLINE Prepared Prepare(V q) const { return q; }
  HWY_INLINE V Excess(const Prepared& q, V, V guard) const { return hn::Sub(q, guard); }
  HWY_INLINE void FindChords(V, const Held&, std::size_t i, Chords& chords) const {
    hn::Store(hn::Set(D(), std::numeric_limits<float>::infinity()), D(), chords.base.data() + i);
    hn::Store(hn::Zero(D()), D(), chords.slope.data() + i);
  }
  static constexpr bool kHasTangent = false;
  HWY_INLINE V Level(V) const { return hn::Set(D(), 1.0F); }
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
