#pragma once

#import <Foundation/Foundation.h>
#include <optional>
#include <string>
#include <string_view>

#include "platform/macos/cf_string.h"
#include "platform/macos/objc_ref.h"

namespace tavik::platform::macos {

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wold-style-cast"  // a bridging cast has no other form
/// The string as valid UTF-8; nothing for nil.
inline std::optional<std::string> utf8Of(NSString* string) {
  return string != nil ? std::optional(utf8Of((__bridge CFStringRef)string)) : std::nullopt;
}
#pragma clang diagnostic pop

/// A string of these bytes; nil when they are not valid UTF-8.
inline ObjCRef<NSString*> makeNSString(std::string_view utf8) {
  return adopted([[NSString alloc] initWithBytes:utf8.data() length:utf8.size() encoding:NSUTF8StringEncoding]);
}

}  // namespace tavik::platform::macos
