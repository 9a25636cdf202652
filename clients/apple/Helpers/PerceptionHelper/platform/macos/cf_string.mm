#include "platform/macos/cf_string.h"

#include <iterator>

namespace tavik::platform::macos {

std::string utf8Of(CFStringRef string) {
  if (string == nullptr) return {};
  constexpr char kLossByte = '?';
  constexpr CFIndex kMostBytesOfAUnit = 3;
  const CFIndex length = CFStringGetLength(string);
  std::string utf8(static_cast<std::size_t>(length * kMostBytesOfAUnit), '\0');
  CFIndex count = 0;
  for (CFIndex unit = 0; unit < length;) {
    CFIndex used = 0;
    // From strings that have UTF-16 in one place it takes no loss byte: it ends at an unpaired surrogate.
    unit += CFStringGetBytes(string, CFRangeMake(unit, length - unit), kCFStringEncodingUTF8, kLossByte, false,
                             reinterpret_cast<UInt8*>(utf8.data()) + count, std::ssize(utf8) - count, &used);
    count += used;
    if (unit == length) break;
    utf8[static_cast<std::size_t>(count++)] = kLossByte;
    ++unit;
  }
  utf8.resize(static_cast<std::size_t>(count));
  return utf8;
}

CFRef<CFStringRef> makeString(std::string_view utf8) {
  return adopted(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                         static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

}  // namespace tavik::platform::macos
