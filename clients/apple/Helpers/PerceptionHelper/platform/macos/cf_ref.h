#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <utility>

namespace tavik::platform::macos {

template <class Ref>
class CFRef;

/// Takes over a reference that the caller owns: what Create and Copy functions return.
template <class Ref>
[[nodiscard]] CFRef<Ref> adopted(Ref owned);

/// Adds a reference to a borrowed object: what Get functions return. None for null.
template <class Ref>
[[nodiscard]] CFRef<Ref> retained(Ref borrowed);

/// One reference to an object of Core Foundation or of a framework that builds on it, or none.
template <class Ref>
class CFRef {
 public:
  CFRef() = default;
  CFRef(const CFRef& other) : CFRef(retained(other.object_)) {}
  CFRef(CFRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CFRef& operator=(CFRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~CFRef() {
    if (object_ != nullptr) CFRelease(object_);
  }

  Ref get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  /// Where a Copy function puts its result, which it may set even when it fails. Call it only while nothing is held.
  Ref* out() { return &object_; }

 private:
  friend CFRef adopted<Ref>(Ref owned);
  explicit CFRef(Ref owned) : object_(owned) {}

  Ref object_ = nullptr;
};

template <class Ref>
CFRef<Ref> adopted(Ref owned) {
  return CFRef<Ref>(owned);
}

template <class Ref>
CFRef<Ref> retained(Ref borrowed) {
  if (borrowed != nullptr) CFRetain(borrowed);
  return adopted(borrowed);
}

}  // namespace tavik::platform::macos
