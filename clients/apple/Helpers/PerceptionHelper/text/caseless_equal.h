#pragma once

#include <string_view>

namespace tavik::text {

/// True when two texts differ at most in letter case (NSString caseInsensitiveCompare: giving NSOrderedSame): full case
/// folding under canonical equivalence, the canonical caseless match of the Unicode Standard, definition D145. An e
/// with acute accent equals an e with a combining acute accent, but not a bare e. A text that is not valid UTF-8 equals
/// nothing.
bool caselessEqual(std::string_view left, std::string_view right);

}  // namespace tavik::text
