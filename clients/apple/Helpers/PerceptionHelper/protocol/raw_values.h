#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tavik {

/// The wire spellings of an enumeration whose values count from 0: a specialisation holds a static array `kSpellings`,
/// in the order of the enumerators.
template <class Enumeration>
struct RawValues;

/// The wire spelling of `value`.
template <class Enumeration>
constexpr std::string_view rawValue(Enumeration value) {
  return RawValues<Enumeration>::kSpellings.at(static_cast<std::size_t>(value));
}

/// The value that is spelled exactly so, letter case included, or nothing.
template <class Enumeration>
constexpr std::optional<Enumeration> fromRawValue(std::string_view spelling) {
  constexpr const auto& kSpellings = RawValues<Enumeration>::kSpellings;
  const auto found = std::ranges::find(kSpellings, spelling);
  if (found == kSpellings.end()) return std::nullopt;
  return static_cast<Enumeration>(found - kSpellings.begin());
}

}  // namespace tavik
