#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavik::text {

/// What all texts have in common that differ at most in letter case; nothing for a text that is not valid UTF-8.
using CaselessKey = std::optional<std::u32string>;
CaselessKey caselessKey(std::string_view text);

/// True when two texts differ at most in letter case (NSString caseInsensitiveCompare: giving NSOrderedSame): full case
/// folding under canonical equivalence, the canonical caseless match of the Unicode Standard, definition D145. An e
/// with acute accent equals an e with a combining acute accent, but not a bare e. A text that is not valid UTF-8 equals
/// nothing.
bool caselessEqual(std::string_view left, std::string_view right);

}  // namespace tavik::text
