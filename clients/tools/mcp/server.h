#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <boost/asio/io_context.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "tools/mcp/capture_call.h"
#include "tools/mcp/child_process.h"
#include "tools/mcp/json_rpc.h"
#include "tools/mcp/session_environment.h"
#include "tools/mcp/tool_work.h"

namespace tavik::mcp {

/// Where lines go: with their line feed, one call each.
struct Output {
  std::function<void(std::string_view)> answer = {};  ///< to the client
  std::function<void(std::string_view)> audit = {};   ///< a line a call, of what was asked for and how it ended
};

/// A server of the Model Context Protocol (modelcontextprotocol.io), revisions 2026-07-28, of which every request says
/// so itself, and 2025-11-25 with those before it that begin with `initialize`. Calls are answered side by side, four
/// at once, in the order in which they are done; each starts a program.
class Server {
 public:
  Server(boost::asio::io_context& context, Programs programs, SessionEnvironment session, Output output);

  /// Takes one message, without its line feed.
  void receive(std::string_view line);

 private:
  /// A call of a tool that has not been answered.
  struct Call {
    boost::json::value id = {};
    bool isModern = false;  ///< it was asked for in the revision 2026-07-28
    std::string tool = {};
    ToolWork work = {};
    std::shared_ptr<ChildProcess> process = {};
  };

  void answer(const RPCRequest& request);
  void notice(const RPCRequest& notification);
  void answerCall(const RPCRequest& request, bool isModern);
  void begin(const std::shared_ptr<Call>& call);
  void end(const std::shared_ptr<Call>& call, const ToolResult& result);
  void startWaiting();
  void say(const boost::json::value& id, boost::json::object result, bool isModern);
  void refuse(const boost::json::value& id, const RPCError& error) { output_.answer(errorLine(id, error)); }

  boost::asio::io_context& context_;
  Programs programs_;
  SessionEnvironment session_;
  Output output_;
  std::map<std::string, std::shared_ptr<Call>> calls_;  ///< by id, as JSON
  std::deque<std::shared_ptr<Call>> waiting_;
  int running_ = 0;
};

}  // namespace tavik::mcp
