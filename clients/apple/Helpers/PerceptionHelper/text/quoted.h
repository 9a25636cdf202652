#pragma once

#include <string>
#include <string_view>

namespace tavik::text {

/// `text` in double quotes, fit to stand in one line for a person to read: what cannot be seen (control, format and
/// unassigned characters, line separators) and bytes that are not UTF-8 appear by number, and what exceeds 80 code
/// points of output is cut and marked with an ellipsis.
std::string quoted(std::string_view text);

}  // namespace tavik::text
