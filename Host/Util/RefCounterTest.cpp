// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/RefCounter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace {

using ScEng::RefPtr;

/// Counts its destructions and, where asked, looks at the pointer that let it go.
class Counted : public RefCounter<Counted> {
 public:
  explicit Counted(int* destroyed) : destroyed_(destroyed) {}
  Counted(const Counted&) = default;
  ~Counted() {
    ++*destroyed_;
    if (holder != nullptr) holder_was_null = holder->Get() == nullptr;
  }

  RefPtr<Counted>* holder = nullptr;
  inline static bool holder_was_null = false;

 private:
  int* destroyed_;
};

static_assert(!std::is_polymorphic_v<RefCounter<Counted>>);
static_assert(sizeof(RefCounter<Counted>) == 4);

TEST(RefCounter, StartsAtZeroAndCounts) {
  int destroyed = 0;
  auto* object = new Counted(&destroyed);
  EXPECT_EQ(object->GetRefCount(), 0U);
  object->AddRef();
  object->AddRef();
  EXPECT_EQ(object->GetRefCount(), 2U);
  object->Release();
  EXPECT_EQ(object->GetRefCount(), 1U);
  EXPECT_EQ(destroyed, 0);
  object->Release();
  EXPECT_EQ(destroyed, 1);
}

TEST(RefCounter, IsTheFirst32BitsOfTheObject) {
  int destroyed = 0;
  Counted object(&destroyed);
  object.AddRef();
  object.AddRef();
  object.AddRef();
  std::uint32_t first = 0;
  std::memcpy(&first, static_cast<const void*>(&object), sizeof(first));
  EXPECT_EQ(first, 3U);
}

TEST(RefCounter, CopiesStartWithoutReferences) {
  int destroyed = 0;
  Counted object(&destroyed);
  object.AddRef();
  const Counted copy(object);
  EXPECT_EQ(copy.GetRefCount(), 0U);
  EXPECT_EQ(object.GetRefCount(), 1U);
}

TEST(RefCounter, AssignmentLeavesTheCountAlone) {
  struct Plain : RefCounter<Plain> {};
  Plain a;
  Plain b;
  a.AddRef();
  a.AddRef();
  b.AddRef();
  b = a;
  EXPECT_EQ(a.GetRefCount(), 2U);
  EXPECT_EQ(b.GetRefCount(), 1U);
}

TEST(RefPtr, HoldsOneReference) {
  int destroyed = 0;
  {
    RefPtr<Counted> first(new Counted(&destroyed));
    EXPECT_EQ(first->GetRefCount(), 1U);
    const RefPtr<Counted> second = first;
    EXPECT_EQ(first->GetRefCount(), 2U);
    EXPECT_EQ(second.Get(), first.Get());
    const RefPtr<Counted> moved = std::move(first);
    EXPECT_EQ(moved->GetRefCount(), 2U);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(RefPtr, AssignmentReleasesWhatItHeld) {
  int destroyed_a = 0;
  int destroyed_b = 0;
  RefPtr<Counted> a(new Counted(&destroyed_a));
  RefPtr<Counted> b(new Counted(&destroyed_b));
  a = b;
  EXPECT_EQ(destroyed_a, 1);
  EXPECT_EQ(b->GetRefCount(), 2U);
  const RefPtr<Counted>& same = a;
  a = same;
  EXPECT_EQ(a->GetRefCount(), 2U);
  a = nullptr;
  b.Reset();
  EXPECT_EQ(destroyed_b, 1);
}

TEST(RefPtr, ResetTakesANewObject) {
  int destroyed = 0;
  RefPtr<Counted> pointer(new Counted(&destroyed));
  pointer.Reset(new Counted(&destroyed));
  EXPECT_EQ(destroyed, 1);
  EXPECT_TRUE(pointer);
  pointer.Reset();
  EXPECT_FALSE(pointer);
  EXPECT_EQ(destroyed, 2);
  pointer.Reset();
  EXPECT_EQ(destroyed, 2);
}

TEST(RefPtr, IsNullBeforeTheObjectIsDestroyed) {
  int destroyed = 0;
  RefPtr<Counted> pointer(new Counted(&destroyed));
  pointer->holder = &pointer;
  Counted::holder_was_null = false;
  pointer.Reset();
  EXPECT_EQ(destroyed, 1);
  EXPECT_TRUE(Counted::holder_was_null);
}

}  // namespace
