#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

/// Members of objects that others wrote. What is missing, or of another type, counts as empty, or false.
namespace tavik::mcp {

inline std::string_view string(const boost::json::object& object, std::string_view key) {
  const auto* const value = object.if_contains(key);
  const auto* const text = value != nullptr ? value->if_string() : nullptr;
  return text != nullptr ? std::string_view(*text) : "";
}

inline bool isTrue(const boost::json::object& object, std::string_view key) {
  const auto* const value = object.if_contains(key);
  return value != nullptr && value->is_bool() && value->get_bool();
}

inline const boost::json::object& object(const boost::json::object& holder, std::string_view key) {
  static const boost::json::object kNone;
  const auto* const value = holder.if_contains(key);
  return value != nullptr && value->is_object() ? value->get_object() : kNone;
}

inline const boost::json::array& array(const boost::json::object& object, std::string_view key) {
  static const boost::json::array kNone;
  const auto* const value = object.if_contains(key);
  return value != nullptr && value->is_array() ? value->get_array() : kNone;
}

/// The numbers in an array; none where something else is in it, too.
inline std::vector<double> numbers(const boost::json::array& values) {
  std::vector<double> numbers;
  for (const auto& value : values) {
    if (!value.is_number()) return {};
    numbers.push_back(value.to_number<double>());
  }
  return numbers;
}

/// The text as a JSON string: it stays on its line, whatever it holds.
inline std::string quoted(std::string_view text) { return boost::json::serialize(boost::json::value(text)); }

}  // namespace tavik::mcp
