#include "text/quoted.h"

#include <array>
#include <cstdio>

#include <utf8proc.h>

#include "text/code_points.h"

namespace tavik::text {
namespace {

bool isVisible(std::int32_t codePoint) {
  switch (utf8proc_category(codePoint)) {
    case UTF8PROC_CATEGORY_CN:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_CS:
    case UTF8PROC_CATEGORY_CO:
      return false;
    default:
      return true;
  }
}

std::string byNumber(const char* format, std::int32_t number) {
  std::array<char, 16> buffer{};
  std::snprintf(buffer.data(), buffer.size(), format, static_cast<unsigned>(number));
  return buffer.data();
}

}  // namespace

std::string quoted(std::string_view text) {
  constexpr std::size_t kMostCodePoints = 80;
  std::string result = "\"";
  for (std::size_t written = 0; !text.empty();) {
    const auto [value, length] = firstCodePoint(text);
    const bool visible = value >= 0 && isVisible(value);
    const auto piece = visible     ? std::string(text.substr(0, length))
                       : value < 0 ? byNumber("\\x%02X", static_cast<unsigned char>(text.front()))
                                   : byNumber("\\u{%X}", value);
    written += visible ? 1 : piece.size();
    if (written > kMostCodePoints) {
      result += "\u2026";
      break;
    }
    result += piece;
    text.remove_prefix(length);
  }
  return result + "\"";
}

}  // namespace tavik::text
