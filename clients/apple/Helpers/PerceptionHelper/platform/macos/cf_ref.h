#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <utility>

namespace tavik::platform::macos {

/// One reference to an object of Core Foundation or of a framework that builds on it, or none.
template <class Ref>
class CFRef {
 public:
  CFRef() = default;
  /// Takes over a reference that the caller owns: what Create and Copy functions return.
  explicit CFRef(Ref owned) : object_(owned) {}
  /// A reference of its own to a borrowed object: what Get functions return. None to null.
  static CFRef retaining(Ref borrowed) {
    if (borrowed != nullptr) CFRetain(borrowed);
    return CFRef(borrowed);
  }
  CFRef(const CFRef& other) : CFRef(retaining(other.object_)) {}
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
  /// Where a Copy function puts its result, which may be set even when the function fails. Holds nothing yet.
  Ref* out() { return &object_; }

 private:
  Ref object_ = nullptr;
};

}  // namespace tavik::platform::macos
