#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

/// JSON-RPC 2.0 (jsonrpc.org), a message a line, as the Model Context Protocol's stdio transport has it.
namespace tavik::mcp {

/// The codes of JSON-RPC's errors, and of those that MCP's revision 2026-07-28 adds.
enum class ErrorCode : int {
  parseError = -32700,
  invalidRequest = -32600,
  methodNotFound = -32601,
  invalidParams = -32602,
  internalError = -32603,
  unsupportedProtocolVersion = -32022,
};

/// An answer that is no result.
struct RPCError {
  ErrorCode code = ErrorCode::internalError;
  std::string message = {};
  boost::json::value data = {};  ///< left out when null
};

/// One that wants an answer, or, without an id, a notification.
struct RPCRequest {
  std::optional<boost::json::value> id = {};  ///< a string or a whole number
  std::string method = {};
  boost::json::object params = {};
};

/// What a line is that cannot be taken for a request; the id is null where it has none that can be read.
struct BadMessage {
  boost::json::value id = {};
  RPCError error = {};
};

/// An answer to a question that this server has never asked.
struct StrayResponse {};

using Message = std::variant<RPCRequest, BadMessage, StrayResponse>;

Message parseMessage(std::string_view line);

/// The lines that answer, with their line feed.
std::string resultLine(const boost::json::value& id, boost::json::object result);
std::string errorLine(const boost::json::value& id, const RPCError& error);

}  // namespace tavik::mcp
