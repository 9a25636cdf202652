#pragma once

#import <Foundation/Foundation.h>
#include <utility>

namespace tavik::platform::macos {

/// One reference to an Objective-C object, or none; with automatic reference counting and without.
template <class Object>
class ObjCRef {
 public:
  ObjCRef() = default;
  /// Takes over a reference that the caller owns: what alloc, new and copy return.
  static ObjCRef owning(Object owned) {
    ObjCRef reference;
    reference.object_ = owned;
    return reference;
  }
#if __has_feature(objc_arc)
  static ObjCRef retaining(Object borrowed) { return owning(borrowed); }
#else
  /// A reference of its own to a borrowed object: what every other method returns. None to nil.
  static ObjCRef retaining(Object borrowed) { return owning([borrowed retain]); }
  ObjCRef(const ObjCRef& other) : object_([other.object_ retain]) {}
  ObjCRef(ObjCRef&& other) noexcept : object_(std::exchange(other.object_, nil)) {}
  ObjCRef& operator=(ObjCRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ObjCRef() { [object_ release]; }
#endif

  Object get() const { return object_; }

 private:
  Object object_ = nil;
};

}  // namespace tavik::platform::macos
