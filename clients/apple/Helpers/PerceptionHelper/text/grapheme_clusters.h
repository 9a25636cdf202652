#pragma once

#include <cstdint>
#include <string_view>

/// User-perceived characters: extended grapheme clusters by UAX #29. A byte that is not UTF-8 stands as a character of
/// its own.
namespace tavik::text {

/// The first character of `text`; empty only when the text is. Exact wherever `text` begins at a character's boundary.
std::string_view firstCharacter(std::string_view text);

/// The last character of `text`; empty only when the text is. `text` begins at a character's boundary.
std::string_view lastCharacter(std::string_view text);

/// How many characters `text` holds.
std::int64_t characterCount(std::string_view text);

}  // namespace tavik::text
