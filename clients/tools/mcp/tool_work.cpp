#include "tools/mcp/tool_work.h"

#include <chrono>
#include <utility>
#include <vector>

#include <boost/json/serialize.hpp>

#include "tools/mcp/application_list.h"

namespace tavik::mcp {
namespace {

namespace json = boost::json;

/// The programs end by themselves before that.
constexpr std::chrono::seconds kPatience{20};

Command command(std::string program, std::vector<std::string> arguments, const SessionEnvironment& session) {
  return {.program = std::move(program),
          .arguments = std::move(arguments),
          .environment = session.variables,
          .patience = kPatience};
}

ToolResult explanation(const ProgramOutput& said, const std::string& note) {
  if (said.output.empty()) return textResult(std::string("The doctor gave no answer. ").append(said.errors), true);
  return textResult(note.empty() ? said.output : std::string(said.output).append("\n").append(note).append("\n"));
}

}  // namespace

std::optional<std::variant<ToolWork, ToolResult>> toolWork(const std::string& name, const json::object& arguments,
                                                           const Programs& programs,
                                                           const SessionEnvironment& session) {
  if (name == "local_perception_capture") {
    const auto wanted = captureCall(arguments);
    if (const auto* const fault = std::get_if<std::string>(&wanted)) return textResult(*fault, true);
    ToolWork work{.command = command(programs.helper, {}, session)};
    work.command.input = json::serialize(std::get<CaptureCall>(wanted).request);
    work.resultOf = [call = std::get<CaptureCall>(wanted)](const ProgramOutput& said) {
      return captureResult(call, said.output, said.errors);
    };
    return work;
  }
  if (name == "list_applications") {
    return ToolWork{.command = command(programs.doctor, {"--json"}, session), .resultOf = applicationList};
  }
  if (name == "explain_setup") {
    return ToolWork{.command = command(programs.doctor, {}, session),
                    .resultOf = [note = session.note](const ProgramOutput& said) { return explanation(said, note); }};
  }
  return std::nullopt;
}

}  // namespace tavik::mcp
