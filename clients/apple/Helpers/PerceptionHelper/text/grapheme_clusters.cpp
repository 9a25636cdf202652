#include "text/grapheme_clusters.h"

#include <cstddef>

#include <utf8proc.h>

#include "text/code_points.h"

namespace tavik::text {
namespace {

bool isASCII(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

/// True when there is a boundary between two neighbouring bytes for certain: both are ASCII and not CR LF, the one pair
/// that ASCII joins.
bool isPlainBoundary(char before, char after) {
  return isASCII(before) && isASCII(after) && !(before == '\r' && after == '\n');
}

}  // namespace

std::string_view firstCharacter(std::string_view text) {
  if (text.size() < 2 || isPlainBoundary(text[0], text[1])) return text.substr(0, 1);
  auto [previous, end] = firstCodePoint(text);
  utf8proc_int32_t state = 0;
  while (end < text.size() && previous >= 0) {
    const auto [next, length] = firstCodePoint(text.substr(end));
    if (next < 0 || utf8proc_grapheme_break_stateful(previous, next, &state)) break;
    previous = next;
    end += length;
  }
  return text.substr(0, end);
}

std::string_view lastCharacter(std::string_view text) {
  if (text.size() >= 2 && isPlainBoundary(text[text.size() - 2], text.back())) return text.substr(text.size() - 1);
  std::string_view last;
  while (!text.empty()) {
    last = firstCharacter(text);
    text.remove_prefix(last.size());
  }
  return last;
}

std::int64_t characterCount(std::string_view text) {
  std::int64_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) {
    const bool isPlain = at + 1 < text.size() && isPlainBoundary(text[at], text[at + 1]);
    at += isPlain ? 1 : firstCharacter(text.substr(at)).size();
  }
  return count;
}

}  // namespace tavik::text
