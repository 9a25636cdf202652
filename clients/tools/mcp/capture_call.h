#pragma once

#include <string>
#include <variant>

#include <boost/json/object.hpp>

#include "tools/mcp/tree_lines.h"

namespace tavik::mcp {

/// What a call of the capture tool asks of the helper, and how its answer is to be told.
struct CaptureCall {
  boost::json::object request = {};  ///< the helper's; unchecked, it says itself what it cannot take
  Places places = Places::none;
  std::string find = {};
};

/// Takes the tool's own arguments out of these, and limits the picture to what models look at. A sentence for the model
/// where they are of another type than they should be.
std::variant<CaptureCall, std::string> captureCall(const boost::json::object& arguments);

/// A result of tools/call, without what belongs to a revision of the protocol.
using ToolResult = boost::json::object;

ToolResult textResult(std::string text, bool isError = false);

/// What the helper said: text first, then its picture. Of an application that the policy calls sensitive the tree is
/// left out as well as the picture. What the helper wrote to standard error goes with an error.
ToolResult captureResult(const CaptureCall& call, std::string_view response, std::string_view diagnostics);

}  // namespace tavik::mcp
