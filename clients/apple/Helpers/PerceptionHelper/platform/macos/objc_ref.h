#pragma once

#import <Foundation/Foundation.h>
#include <concepts>
#include <utility>

namespace tavik::platform::macos {

template <std::convertible_to<id> Object>
class ObjCRef;

/// Takes over a reference that the caller owns: what alloc, new and copy return.
template <std::convertible_to<id> Object>
[[nodiscard]] ObjCRef<Object> adopted(Object owned);

/// Adds a reference to a borrowed object: what every other method returns. None for nil.
template <std::convertible_to<id> Object>
[[nodiscard]] ObjCRef<Object> retained(Object borrowed);

/// One reference to an Objective-C object, or none.
template <std::convertible_to<id> Object>
class ObjCRef {
 public:
  ObjCRef() = default;
  ObjCRef(const ObjCRef& other) : object_([other.object_ retain]) {}
  ObjCRef(ObjCRef&& other) noexcept : object_(std::exchange(other.object_, nil)) {}
  ObjCRef& operator=(ObjCRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ObjCRef() { [object_ release]; }

  Object get() const { return object_; }

 private:
  friend ObjCRef adopted<Object>(Object owned);
  explicit ObjCRef(Object owned) : object_(owned) {}

  Object object_ = nil;
};

template <std::convertible_to<id> Object>
ObjCRef<Object> adopted(Object owned) {
  return ObjCRef<Object>(owned);
}

template <std::convertible_to<id> Object>
ObjCRef<Object> retained(Object borrowed) {
  return adopted([borrowed retain]);
}

}  // namespace tavik::platform::macos
