#include "tools/mcp/json_rpc.h"

#include <utility>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

namespace tavik::mcp {
namespace {

namespace json = boost::json;

BadMessage invalid(const json::value& id, std::string message) {
  return {.id = id, .error = {.code = ErrorCode::invalidRequest, .message = std::move(message)}};
}

bool isID(const json::value& value) { return value.is_string() || value.is_int64() || value.is_uint64(); }

std::string line(const json::object& message) {
  auto text = json::serialize(message);
  text += '\n';
  return text;
}

Message requestOf(const json::object& message, std::optional<json::value> id) {
  const auto known = id.value_or(json::value());
  const auto* const version = message.if_contains("jsonrpc");
  const auto* const method = message.if_contains("method");
  if (version == nullptr || *version != "2.0") return invalid(known, R"("jsonrpc" is not "2.0")");
  if (!method->is_string()) return invalid(known, "the method is no string");
  RPCRequest request{.id = std::move(id), .method = std::string(method->get_string())};
  if (const auto* const params = message.if_contains("params")) {
    const RPCError noObject{.code = ErrorCode::invalidParams, .message = "the params are no object"};
    if (!params->is_object()) return BadMessage{.id = known, .error = noObject};
    request.params = params->get_object();
  }
  return request;
}

}  // namespace

Message parseMessage(std::string_view text) {
  json::error_code error;
  const auto message = json::parse(text, error);
  if (error) return BadMessage{.error = {.code = ErrorCode::parseError, .message = error.message()}};
  const auto* const object = message.if_object();
  if (object == nullptr) return invalid(nullptr, "a message is one JSON object");
  const auto* const id = object->if_contains("id");
  if (object->contains("method")) {
    if (id == nullptr) return requestOf(*object, std::nullopt);
    return isID(*id) ? requestOf(*object, *id) : invalid(nullptr, "the id is neither a string nor a whole number");
  }
  if (object->contains("result") || object->contains("error")) return StrayResponse();
  return invalid(id != nullptr && isID(*id) ? *id : json::value(), "the message has no method");
}

std::string resultLine(const json::value& id, json::object result) {
  return line({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
}

std::string errorLine(const json::value& id, const RPCError& error) {
  json::object body{{"code", static_cast<int>(error.code)}, {"message", error.message}};
  if (!error.data.is_null()) body["data"] = error.data;
  return line({{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(body)}});
}

}  // namespace tavik::mcp
