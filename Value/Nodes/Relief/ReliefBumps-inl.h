// SPDX-License-Identifier: Apache-2.0
//
// The shapes of the bumps, one for each profile: their heights by the definition, and a quick look at whether one can
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
// Guard(w)                     what the comparisons below compare with; grows with w, finite
// Prepare(q)                   what they need of the bump
// Excess(bump, d2, guard)      not above 0 only where w at the squared distance d2 is at most the guarded one; no NaN
// Approach(bump, dx2)          the bump for pixels in columns at a squared distance
// IsAbove(beside, dy2, guard)  as Excess in many rows of such columns: takes less and is true a little more often
// Level(t)                     the definition
//
// Prepare(q, i, table) keeps what is prepared of the pixels of a block, and Get(table, i) takes it from there.
//
// The definition's roundings keep the order of their operands, so that w as computed never falls with q and never rises
// with the distance, except for Smooth, whose margin covers the difference. It is never above q.

/// What w is cut to where it is guarded, so that its square is finite with a square of the radius on top.
inline float GetLargestGuarded(float radius) { return std::min(1e15F, 4e18F / radius); }

/// What is prepared of the pixels of a block.
struct alignas(64) OneNumberTable : std::array<float, 16> {};

inline V Square(V v) { return hn::Mul(v, v); }

struct Linear {
  struct Beside {
    V number;
    V dx2;
  };
  explicit Linear(const Reach& reach)
      : radius_(hn::Set(D(), reach.radius)),
        wide_(hn::Set(D(), reach.radius * (1.0F + kMargin))),
        limit_(hn::Set(D(), reach.limit)),
        largest_(hn::Set(D(), GetLargestGuarded(reach.radius))) {}
  using Prepared = V;
  using Table = OneNumberTable;

  HWY_INLINE V Guard(V w) const { return hn::Mul(hn::Min(w, largest_), radius_); }
  HWY_INLINE Prepared Prepare(V q) const { return hn::Mul(q, wide_); }
  HWY_INLINE void Prepare(V q, std::size_t i, Table& table) const { hn::Store(Prepare(q), D(), table.data() + i); }
  HWY_INLINE Prepared Get(const Table& table, std::size_t i) const { return hn::Set(D(), table[i]); }
  // r q - r w > distance, squared.
  HWY_INLINE V Excess(const Prepared& rq, V d2, V guard) const {
    const V left = hn::Max(hn::Min(hn::Sub(rq, guard), limit_), hn::Zero(D()));
    return hn::Sub(Square(left), d2);
  }
  HWY_INLINE Beside Approach(const Prepared& rq, V dx2) const { return {rq, dx2}; }
  HWY_INLINE M IsAbove(const Beside& bump, V dy2, V guard) const {
    const V left = hn::Max(hn::Sub(bump.number, guard), hn::Zero(D()));
    return hn::Gt(Square(left), hn::Add(bump.dx2, dy2));
  }
  HWY_INLINE V Level(V t) const { return hn::Sub(hn::Set(D(), 1.0F), t); }

 private:
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
  using Table = OneNumberTable;

  HWY_INLINE V Guard(V w) const { return Square(hn::Mul(hn::Min(w, largest_), radius_)); }
  HWY_INLINE Prepared Prepare(V q) const { return Square(hn::Mul(q, wide_)); }
  HWY_INLINE void Prepare(V q, std::size_t i, Table& table) const { hn::Store(Prepare(q), D(), table.data() + i); }
  HWY_INLINE Prepared Get(const Table& table, std::size_t i) const { return hn::Set(D(), table[i]); }
  // (r q)^2 - (r w)^2 > distance^2.
  HWY_INLINE V Excess(const Prepared& rq2, V d2, V guard) const {
    return hn::Sub(hn::Min(hn::Sub(rq2, guard), limit_), d2);
  }
  using Beside = V;
  HWY_INLINE Beside Approach(const Prepared& rq2, V dx2) const { return hn::Sub(rq2, dx2); }
  HWY_INLINE M IsAbove(const Beside& bump, V dy2, V guard) const { return hn::Gt(hn::Sub(bump, dy2), guard); }
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
      : inverse_radius_(hn::Set(D(), 1.0F / reach.radius)), largest_(hn::Set(D(), GetLargestGuarded(reach.radius))) {}
  struct Prepared {
    V inverse;
    V inverse_rq;
  };

  HWY_INLINE V Guard(V w) const { return hn::Min(w, largest_); }
  HWY_INLINE Prepared Prepare(V q) const {
    const V inverse = hn::Div(hn::Set(D(), 1.0F), hn::Max(q, hn::Set(D(), 1e-15F)));
    return {inverse, hn::Mul(inverse, inverse_radius_)};
  }
  struct Table {
    OneNumberTable inverse;
    OneNumberTable inverse_rq;
  };
  HWY_INLINE void Prepare(V q, std::size_t i, Table& table) const {
    const Prepared bump = Prepare(q);
    hn::Store(bump.inverse, D(), table.inverse.data() + i);
    hn::Store(bump.inverse_rq, D(), table.inverse_rq.data() + i);
  }
  HWY_INLINE Prepared Get(const Table& table, std::size_t i) const {
    return {hn::Set(D(), table.inverse[i]), hn::Set(D(), table.inverse_rq[i])};
  }
  /// At most 1, and 0 only where t is 1.
  HWY_INLINE V GetU(const Prepared& bump, V d2) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F + 4 * kMargin), hn::Mul(hn::Sqrt(d2), bump.inverse_rq));
    return hn::Max(hn::Min(u, hn::Set(D(), 1.0F)), hn::Zero(D()));
  }

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
  struct Beside {
    V inverse;
    V rq2;
    V dx2;
  };
  HWY_INLINE Beside Approach(const Prepared& bump, V dx2) const {
    const V rq = hn::Div(hn::Set(D(), 1.0F + kMargin), bump.inverse_rq);
    return {hn::Mul(bump.inverse, hn::Set(D(), 1.0F - 4 * kMargin)), Square(rq), dx2};
  }
  // With z = 1 - w / q, the level is above w / q where t is below the root of z = 3 t^2 - 2 t^3. The square of that
  // root is at most this polynomial of z, which is up to 5 percent above it as far as t = 0.6.
  HWY_INLINE M IsAbove(const Beside& bump, V dy2, V guard) const {
    const D d;
    const V z = hn::Max(hn::NegMulAdd(guard, bump.inverse, hn::Set(d, 1.0F)), hn::Zero(d));
    V square = hn::MulAdd(hn::Set(d, 1.36837F), z, hn::Set(d, -1.37177F));
    square = hn::MulAdd(square, z, hn::Set(d, 0.662841F));
    square = hn::MulAdd(square, z, hn::Set(d, 0.340661F));
    return hn::Gt(hn::Mul(hn::Mul(square, z), bump.rq2), hn::Add(bump.dx2, dy2));
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
  struct Beside {
    Prepared bump;
    V dx2;
  };
  HWY_INLINE Beside Approach(const Prepared& bump, V dx2) const { return {bump, dx2}; }
  HWY_INLINE M IsAbove(const Beside& beside, V dy2, V guard) const {
    return hn::Gt(Excess(beside.bump, hn::Add(beside.dx2, dy2), guard), hn::Zero(D()));
  }
  HWY_INLINE V Level(V t) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F), t);
    return hn::Sub(hn::Set(D(), 1.0F), hn::Sqrt(hn::Sub(hn::Set(D(), 1.0F), Square(u))));
  }
};

/// All profiles of a field that is flat, see `IsFlat`.
struct Flat {
  explicit Flat(const Reach&) {}
  using Prepared = V;
  using Table = OneNumberTable;

  HWY_INLINE V Guard(V w) const { return hn::Min(w, hn::Set(D(), std::numeric_limits<float>::max())); }
  HWY_INLINE Prepared Prepare(V q) const { return q; }
  HWY_INLINE void Prepare(V q, std::size_t i, Table& table) const { hn::Store(Prepare(q), D(), table.data() + i); }
  HWY_INLINE Prepared Get(const Table& table, std::size_t i) const { return hn::Set(D(), table[i]); }
  HWY_INLINE V Excess(const Prepared& q, V, V guard) const { return hn::Sub(q, guard); }
  using Beside = V;
  HWY_INLINE Beside Approach(const Prepared& q, V) const { return q; }
  HWY_INLINE M IsAbove(const Beside& q, V, V guard) const { return hn::Gt(q, guard); }
  HWY_INLINE V Level(V) const { return hn::Set(D(), 1.0F); }
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
