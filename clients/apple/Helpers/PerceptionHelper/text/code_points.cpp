#include "text/code_points.h"

#include <algorithm>

#include <utf8proc.h>

namespace tavik::text {

CodePoint firstCodePoint(std::string_view text) {
  if (text.empty()) return {};
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {.value = lead, .length = 1};
  constexpr std::size_t kLongestSequence = 4;
  utf8proc_int32_t value = -1;
  const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                       static_cast<utf8proc_ssize_t>(std::min(text.size(), kLongestSequence)), &value);
  if (length < 1) return {.value = -1, .length = 1};
  return {.value = value, .length = static_cast<std::size_t>(length)};
}

}  // namespace tavik::text
