#include "protocol/plain_numbers.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace tavik {
namespace {

constexpr std::string_view kDigits = "0123456789";

std::string_view leadingDigits(std::string_view text) {
  return text.substr(0, std::min(text.find_first_not_of(kDigits), text.size()));
}

/// A number as JSON spells it (RFC 8259, section 6), without its sign.
struct Spelling {
  std::string_view whole, fraction, exponent;  ///< digits; the exponent with its sign
};

/// Nothing when it is no number; the reader of the text will say so.
std::optional<Spelling> spelling(std::string_view number) {
  Spelling result;
  const auto take = [&number](std::string_view oneOf) {
    const bool isThere = !number.empty() && oneOf.find(number.front()) != std::string_view::npos;
    if (isThere) number.remove_prefix(1);
    return isThere;
  };
  const auto takeDigits = [&number](std::string_view& digits) {
    digits = leadingDigits(number);
    number.remove_prefix(digits.size());
    return !digits.empty();
  };
  take("-");
  if (!takeDigits(result.whole) || (result.whole.size() > 1 && result.whole.front() == '0')) return std::nullopt;
  if (take(".") && !takeDigits(result.fraction)) return std::nullopt;
  if (take("eE")) {
    const auto sign = number.starts_with('-') ? number.substr(0, 1) : std::string_view();
    take("+-");
    if (!takeDigits(result.exponent)) return std::nullopt;
    result.exponent = {result.exponent.data() - sign.size(), result.exponent.size() + sign.size()};
  }
  return number.empty() ? std::optional(result) : std::nullopt;
}

/// How far an exponent moves the point; more than any number here has room for is cut off.
std::int64_t valueOf(std::string_view exponent) {
  constexpr std::int64_t kMost = std::int64_t{1} << 40U;
  const bool isNegative = exponent.starts_with('-');
  std::int64_t value = 0;
  const auto result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), value);
  if (result.ec == std::errc::result_out_of_range) value = isNegative ? -kMost : kMost;
  return std::clamp(value, -kMost, kMost);
}

/// What stands for this number, which has a fraction or an exponent; empty when it can stay.
std::string plainForm(std::string_view number) {
  constexpr std::int64_t kMostDigits = 19;  // of a signed 64-bit number
  const auto parts = spelling(number);
  if (!parts) return "";
  std::string digits = std::string(parts->whole) + std::string(parts->fraction);
  const auto first = digits.find_first_not_of('0'), last = digits.find_last_not_of('0');
  if (last == std::string::npos) return "0";
  const auto point = static_cast<std::int64_t>(parts->whole.size()) + valueOf(parts->exponent);
  if (static_cast<std::int64_t>(last) >= point) return "0.5";
  if (point - static_cast<std::int64_t>(first) > kMostDigits) return "1e99";
  digits.resize(static_cast<std::size_t>(point), '0');
  return std::string(number.starts_with('-') ? "-" : "").append(digits, first);
}

/// Behind the string that begins here.
std::size_t endOfString(std::string_view json, std::size_t start) {
  auto end = json.find_first_of("\"\\", start + 1);
  while (end != std::string_view::npos && json[end] == '\\') end = json.find_first_of("\"\\", end + 2);
  return std::min(end, json.size() - 1) + 1;
}

}  // namespace

std::optional<std::string> withPlainNumbers(std::string_view json) {
  std::optional<std::string> changed;
  for (std::size_t place = 0; place < json.size();) {
    place = std::min(json.find_first_of("\"-0123456789", place), json.size());
    if (place < json.size() && json[place] == '"') {
      place = endOfString(json, place);
      continue;
    }
    const auto end = std::min(json.find_first_not_of("+-.0123456789eE", place), json.size());
    const auto number = json.substr(place, end - place);
    const auto plain = number.find_first_of(".eE") != std::string_view::npos ? plainForm(number) : std::string();
    if (!plain.empty() && plain.size() <= number.size()) {
      if (!changed) changed = json;
      changed->replace(place, number.size(), number.size(), ' ').replace(place, plain.size(), plain);
    }
    place = end;
  }
  return changed;
}

}  // namespace tavik
