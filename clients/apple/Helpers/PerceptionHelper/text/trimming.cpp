#include "text/trimming.h"

#include <utf8proc.h>

#include "text/code_points.h"

namespace tavik::text {
namespace {

bool isWhitespace(std::int32_t codePoint) {
  return codePoint == '\t' || utf8proc_category(codePoint) == UTF8PROC_CATEGORY_ZS;
}

bool isWhitespaceOrNewline(std::int32_t codePoint) {
  const auto category = utf8proc_category(codePoint);
  return isWhitespace(codePoint) || (codePoint >= 0x0A && codePoint <= 0x0D) || codePoint == 0x85 ||
         category == UTF8PROC_CATEGORY_ZL || category == UTF8PROC_CATEGORY_ZP;
}

bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

std::size_t startOfLastCodePoint(std::string_view text) {
  std::size_t start = text.size() - 1;
  while (start > 0 && isContinuationByte(text[start])) --start;
  return start;
}

template <class Predicate>
std::string_view trimmed(std::string_view text, Predicate isTrimmed) {
  while (!text.empty()) {
    const auto [value, length] = firstCodePoint(text);
    if (value < 0 || !isTrimmed(value)) break;
    text.remove_prefix(length);
  }
  while (!text.empty()) {
    const auto start = startOfLastCodePoint(text);
    const auto [value, length] = firstCodePoint(text.substr(start));
    if (value < 0 || start + length != text.size() || !isTrimmed(value)) break;
    text.remove_suffix(length);
  }
  return text;
}

}  // namespace

std::string_view trimmedOfWhitespace(std::string_view text) { return trimmed(text, isWhitespace); }

std::string_view trimmedOfWhitespaceAndNewlines(std::string_view text) { return trimmed(text, isWhitespaceOrNewline); }

}  // namespace tavik::text
