#include "platform/macos/cf_string.h"

namespace tavik::platform::macos {

std::string utf8Of(CFStringRef string) {
  if (string == nullptr) return {};
  constexpr UInt8 kLossByte = '?';
  const CFRange whole = CFRangeMake(0, CFStringGetLength(string));
  const auto convert = [&](UInt8* buffer, CFIndex room) {
    CFIndex count = 0;
    CFStringGetBytes(string, whole, kCFStringEncodingUTF8, kLossByte, false, buffer, room, &count);
    return count;
  };
  std::string utf8(static_cast<std::size_t>(convert(nullptr, 0)), '\0');
  const CFIndex count = convert(reinterpret_cast<UInt8*>(utf8.data()), static_cast<CFIndex>(utf8.size()));
  utf8.resize(static_cast<std::size_t>(count));
  return utf8;
}

CFRef<CFStringRef> makeString(std::string_view utf8) {
  return adopted(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                         static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
}

}  // namespace tavik::platform::macos
