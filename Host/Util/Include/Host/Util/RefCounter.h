// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

/// An intrusive reference count: one unsigned 32-bit number, 0 at construction, no virtual operations.
///
/// `T` derives from `RefCounter<T>`. Whoever keeps an object raises the count by one; whoever lowers it to zero
/// destroys the object through `T`'s own destructor. The count is not atomic: an object must not be shared between
/// threads while references to it are taken or released.
template <class T>
class RefCounter {
 public:
  RefCounter() = default;
  /// A copy is a new object and starts with no references.
  RefCounter(const RefCounter&) noexcept {}
  RefCounter& operator=(const RefCounter&) noexcept { return *this; }

  [[nodiscard]] std::uint32_t GetRefCount() const { return ref_count_; }
  void AddRef() const { ++ref_count_; }
  /// Lowers the count and destroys the object when it reaches zero.
  void Release() const {
    if (--ref_count_ == 0) delete static_cast<const T*>(this);
  }

 protected:
  ~RefCounter() = default;

 private:
  mutable std::uint32_t ref_count_ = 0;
};

namespace ScEng {

/// Holds one counted reference to a `RefCounter` object, or nothing.
template <class T>
class RefPtr {
 public:
  RefPtr() = default;
  RefPtr(std::nullptr_t) {}
  explicit RefPtr(T* object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  RefPtr(const RefPtr& other) : RefPtr(other.object_) {}
  RefPtr(RefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  RefPtr& operator=(RefPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~RefPtr() { Reset(); }

  /// Releases the reference; the pointer is null before the object can be destroyed.
  void Reset() {
    if (T* released = std::exchange(object_, nullptr)) released->Release();
  }
  void Reset(T* object) { *this = RefPtr(object); }

  [[nodiscard]] T* Get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }
  friend bool operator==(const RefPtr& pointer, std::nullptr_t) { return pointer.object_ == nullptr; }

 private:
  T* object_ = nullptr;
};

/// A new object with one reference to it.
template <class T, class... Arguments>
RefPtr<T> MakeRef(Arguments&&... arguments) {
  return RefPtr<T>(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace ScEng
