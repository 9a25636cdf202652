#include "protocol/decode_request.h"

#include <algorithm>
#include <functional>
#include <optional>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/stream_parser.hpp>
#include <boost/json/value.hpp>

#include "protocol/plain_numbers.h"
#include "text/quoted.h"
#include "text/utf8.h"

namespace tavik {
namespace {

namespace json = boost::json;

/// A description of what went wrong, or nothing.
using Failure = std::optional<std::string>;

/// The value of a field, shown so that a person recognises it.
std::string described(const json::value& value) {
  switch (value.kind()) {
    case json::kind::object:
      return "an object";
    case json::kind::array:
      return "an array";
    case json::kind::double_:
      return "a fraction or a larger number";
    case json::kind::string:
      return text::quoted(value.get_string());
    default:
      return json::serialize(value);
  }
}

std::string expected(std::string_view what, std::string_view path, const json::value& found) {
  return std::string(path) + ": expected " + std::string(what) + ", found " + described(found);
}

Failure decode(const json::value& value, std::string_view path, bool& result) {
  if (!value.is_bool()) return expected("true or false", path, value);
  result = value.get_bool();
  return std::nullopt;
}

Failure decode(const json::value& value, std::string_view path, std::int64_t& result) {
  json::error_code error;
  if (value.is_number()) result = value.to_number<std::int64_t>(error);
  if (!value.is_number() || error) return expected("a whole number of the signed 64-bit range", path, value);
  return std::nullopt;
}

Failure decode(const json::value& value, std::string_view path, std::string& result) {
  if (!value.is_string()) return expected("a string", path, value);
  result = value.get_string();
  return std::nullopt;
}

template <class Enumeration>
std::string allSpellings() {
  std::string list;
  for (const auto spelling : RawValues<Enumeration>::kSpellings) {
    if (!list.empty()) list += ", ";
    list += spelling;
  }
  return list;
}

template <class Enumeration>
requires std::is_enum_v<Enumeration> Failure decode(const json::value& value, std::string_view path,
                                                    Enumeration& result) {
  if (!value.is_string()) return expected("a string", path, value);
  const auto known = fromRawValue<Enumeration>(value.get_string());
  if (!known) return std::string(path) + ": " + described(value) + " is not one of " + allSpellings<Enumeration>();
  result = *known;
  return std::nullopt;
}

Failure decode(const json::value& value, std::string_view path, Region& result) {
  const auto* const object = value.if_object();
  if (object == nullptr) return expected("an object", path, value);
  Failure failure;
  const auto member = [&](std::string_view key, std::int64_t& number) {
    if (failure) return;
    const auto memberPath = std::string(path) + "." + std::string(key);
    const auto* const found = object->if_contains(key);
    failure = found != nullptr ? decode(*found, memberPath, number) : memberPath + ": missing";
  };
  member("x", result.x);
  member("y", result.y);
  member("w", result.w);
  member("h", result.h);
  return failure;
}

std::variant<Request, DecodeError> decodeMembers(const json::object& object) {
  Request request;
  Failure failure;
  const auto decodeMember = [&](const auto& row) {
    const auto* const value = failure ? nullptr : object.if_contains(row.key);
    if (value != nullptr && !value->is_null()) failure = decode(*value, row.key, (request.*row.member).emplace());
  };
  std::apply([&](const auto&... rows) { (decodeMember(rows), ...); }, kRequestMembers);
  if (failure) return DecodeError{*failure};
  return request;
}

/// Where parsing stopped: "line 1, column 9", both counted from 1, columns in code points.
std::string position(std::string_view consumed) {
  const auto line = 1 + std::ranges::count(consumed, '\n');
  const auto lineStart = consumed.rfind('\n');
  if (lineStart != std::string_view::npos) consumed.remove_prefix(lineStart + 1);
  const auto column = 1 + std::ranges::count_if(consumed, std::not_fn(text::isContinuationByte));
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace

std::variant<Request, DecodeError> decodeRequest(std::string_view bytes) {
  constexpr std::size_t kDeepestNesting = 512;  // as Foundation's reader; Boost.JSON's own default of 32 is too little
  json::monotonic_resource memory;
  json::stream_parser parser(&memory, json::parse_options{.max_depth = kDeepestNesting});
  json::error_code error;
  const auto plain = withPlainNumbers(bytes);
  const std::string_view text = plain ? *plain : bytes;
  const auto consumed = parser.write(text.data(), text.size(), error);
  if (!error) parser.finish(error);
  if (error) {
    return DecodeError{"invalid JSON at " + position(bytes.substr(0, consumed)) + ": " + error.message()};
  }
  const auto document = parser.release();
  const auto* const object = document.if_object();
  if (object == nullptr) return DecodeError{expected("an object", "request", document)};
  return decodeMembers(*object);
}

}  // namespace tavik
