#pragma once

#include <string_view>

namespace tavik::text {

/// `text` without the horizontal tabs and space separators (Unicode category Zs) at its ends.
std::string_view trimmedOfWhitespace(std::string_view text);

/// `text` without the members of Foundation's set `whitespacesAndNewlines` at its ends: horizontal tab, U+000A to
/// U+000D, U+0085 and the Unicode categories Zs, Zl and Zp.
std::string_view trimmedOfWhitespaceAndNewlines(std::string_view text);

}  // namespace tavik::text
