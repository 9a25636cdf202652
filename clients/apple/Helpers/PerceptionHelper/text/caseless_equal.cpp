#include "text/caseless_equal.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include <utf8proc.h>

#include "text/code_points.h"

namespace tavik::text {
namespace {

using CodePoints = std::u32string;

std::optional<CodePoints> decoded(std::string_view text) {
  CodePoints codePoints;
  while (!text.empty()) {
    const auto [value, length] = firstCodePoint(text);
    if (value < 0) return std::nullopt;
    codePoints.push_back(static_cast<char32_t>(value));
    text.remove_prefix(length);
  }
  return codePoints;
}

int combiningClass(char32_t codePoint) {
  return utf8proc_get_property(static_cast<utf8proc_int32_t>(codePoint))->combining_class;
}

/// Puts every run of combining marks into canonical order. utf8proc's own ordering takes quadratic time on long runs.
void orderCanonically(CodePoints& codePoints) {
  const auto isStarter = [](char32_t codePoint) { return combiningClass(codePoint) == 0; };
  for (auto run = codePoints.begin(); run != codePoints.end();) {
    run = std::ranges::find_if_not(run, codePoints.end(), isStarter);
    const auto end = std::ranges::find_if(run, codePoints.end(), isStarter);
    std::ranges::stable_sort(run, end, {}, combiningClass);
    run = end;
  }
}

/// Full canonical decomposition of each code point, after case folding when `options` has UTF8PROC_CASEFOLD.
CodePoints decomposed(const CodePoints& codePoints, int options) {
  CodePoints result;
  result.reserve(codePoints.size());
  for (const char32_t codePoint : codePoints) {
    constexpr utf8proc_ssize_t kLongestDecomposition = 32;
    std::array<utf8proc_int32_t, kLongestDecomposition> parts{};
    int boundClass = 0;
    const auto count =
        utf8proc_decompose_char(static_cast<utf8proc_int32_t>(codePoint), parts.data(), kLongestDecomposition,
                                static_cast<utf8proc_option_t>(options | UTF8PROC_DECOMPOSE), &boundClass);
    const auto end = parts.begin() + std::clamp<utf8proc_ssize_t>(count, 0, kLongestDecomposition);
    result.append(parts.begin(), end);
  }
  orderCanonically(result);
  return result;
}

}  // namespace

/// NFD(toCasefold(NFD(text))).
CaselessKey caselessKey(std::string_view text) {
  const auto codePoints = decoded(text);
  if (!codePoints) return std::nullopt;
  return decomposed(decomposed(*codePoints, 0), UTF8PROC_CASEFOLD);
}

/// Neither a decomposition nor a folding is more than three times as long in UTF-8 as what it is made from (UAX #15,
/// "Detecting Normalization Forms"; Unicode Standard, 5.18), so that a text of many megabytes need not be folded to
/// differ from a name.
bool caselessEqual(std::string_view left, std::string_view right) {
  constexpr std::size_t kLargestGrowth = std::size_t{3} * 3 * 3;
  const auto [shorter, longer] = std::minmax({left.size(), right.size()});
  if (longer / kLargestGrowth > shorter) return false;
  const auto key = caselessKey(left);
  return key && key == caselessKey(right);
}

}  // namespace tavik::text
