#pragma once

#include <string>
#include <string_view>

namespace tavik::text {

/// True for the second to last bytes of the sequences that spell one code point.
constexpr bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// True when every byte belongs to a well-formed UTF-8 sequence (Unicode, table 3-7: no surrogates, no overlong forms).
bool isValidUTF8(std::string_view bytes);

/// `bytes` with U+FFFD in the place of every byte that belongs to no well-formed sequence.
std::string toValidUTF8(std::string_view bytes);

}  // namespace tavik::text
