#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavik {

/// A JSON text in which the numbers with a fraction or an exponent are such that Boost.JSON reads them as what they
/// are: it rounds `800.0000000000000001` to 800, `1e-400` to 0 and `9223372036854775807.0` out of its range, and gives
/// up a whole text for the exponent of `1e99999999999`. A number that is not whole becomes `0.5`, nothing becomes `0`,
/// one of more than 64 bits `1e99`, and another its digits where there is room for them (without it, there are too few
/// to be rounded past the ends of the range); each with blanks up to the length that it had, so that places in the text
/// stay. Nothing when there is no such number, which is the rule.
std::optional<std::string> withPlainNumbers(std::string_view json);

}  // namespace tavik
