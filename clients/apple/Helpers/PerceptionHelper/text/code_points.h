#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavik::text {

/// The code point at the start of a text, and how many bytes spell it.
struct CodePoint {
  std::int32_t value = -1;  ///< -1 for a byte that begins no well-formed UTF-8 sequence
  std::size_t length = 0;   ///< 1 for such a byte, 0 only at the end of the text
};

/// Reads the code point at the start of `text`. Never reads past its end.
CodePoint firstCodePoint(std::string_view text);

}  // namespace tavik::text
