#include "protocol/write_response.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <boost/json/serializer.hpp>

#include "text/utf8.h"

namespace tavik {
namespace {

namespace json = boost::json;

bool isExpressible(const json::value& value);

bool isExpressible(const json::object& object) {
  return std::ranges::all_of(
      object, [](const auto& member) { return text::isValidUTF8(member.key()) && isExpressible(member.value()); });
}

/// Boost.JSON writes strings and numbers unchecked.
bool isExpressible(const json::value& value) {
  switch (value.kind()) {
    case json::kind::string:
      return text::isValidUTF8(value.get_string());
    case json::kind::double_:
      return std::isfinite(value.get_double());
    case json::kind::object:
      return isExpressible(value.get_object());
    case json::kind::array:
      return std::ranges::all_of(value.get_array(), [](const auto& element) { return isExpressible(element); });
    default:
      return true;
  }
}

/// The text of a whole response. Written into one buffer that doubles: json::serialize appends small pieces, which
/// takes twenty times as long for the text of a picture.
std::string compactText(const json::object& response) {
  json::serializer serializer;
  serializer.reset(&response);
  std::string text;
  std::size_t length = 0;
  while (!serializer.done()) {
    text.resize(std::max(std::size_t{64} << 10U, 2 * text.size()));
    length += serializer.read(text.data() + length, text.size() - length).size();
  }
  text.resize(length);
  return text;
}

/// The response as text, empty when it has none.
std::string serialized(const json::object& response) {
  try {
    return isExpressible(response) ? compactText(response) : std::string();
  } catch (...) {
    return {};
  }
}

ResponseDictionary envelopeOf(const ErrorReply& reply) {
  ResponseDictionary response{{"ok", false}, {"code", reply.code}, {"error", reply.error}};
  if (reply.hint) response["hint"] = *reply.hint;
  return response;
}

void writeLine(std::string_view bytes, platform::StandardStreams& streams) {
  streams.writeOutput(bytes);
  streams.writeOutput("\n");
}

}  // namespace

void writeResponse(const ResponseDictionary& response, platform::StandardStreams& streams) noexcept {
  const auto bytes = serialized(response);
  if (bytes.empty()) return writeSerializationFailure(streams);
  writeLine(bytes, streams);
}

std::string errorText(const ErrorReply& reply) { return serialized(envelopeOf(reply)); }

void writeError(const ErrorReply& reply, platform::StandardStreams& streams) {
  writeResponse(envelopeOf(reply), streams);
}

void writeSerializationFailure(platform::StandardStreams& streams) noexcept {
  writeLine(kSerializationFailure, streams);
}

}  // namespace tavik
