#pragma once

#include <string>
#include <string_view>

#include "platform/macos/cf_ref.h"

namespace tavik::platform::macos {

/// The string as valid UTF-8, with '?' in place of every unpaired surrogate. Empty for null.
std::string utf8Of(CFStringRef string);

/// A string of these bytes; none when they are not valid UTF-8.
CFRef<CFStringRef> makeString(std::string_view utf8);

}  // namespace tavik::platform::macos
