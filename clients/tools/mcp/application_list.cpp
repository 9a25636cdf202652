#include "tools/mcp/application_list.h"

#include <string>
#include <string_view>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "tools/mcp/json_members.h"

namespace tavik::mcp {
namespace {

namespace json = boost::json;

std::string lineOf(const json::object& application) {
  auto line = quoted(string(application, "app_name")).append(", app_bundle_id ");
  line += quoted(string(application, "app_bundle_id"));
  if (isTrue(application, "is_frontmost")) line += ", in front";
  if (const auto remedy = string(application, "remedy"); !remedy.empty()) line.append(": ").append(remedy);
  return line += '\n';
}

}  // namespace

ToolResult applicationList(const ProgramOutput& said) {
  json::error_code error;
  const auto report = json::parse(said.output, error);
  if (error || !report.is_object()) {
    return textResult(std::string("The doctor gave no answer. ").append(said.errors), true);
  }
  std::string lines;
  for (const auto& application : array(report.get_object(), "applications")) {
    if (application.is_object()) lines += lineOf(application.get_object());
  }
  return textResult(lines.empty() ? "No application is running, or none can be seen: explain_setup says more.\n"
                                  : lines);
}

}  // namespace tavik::mcp
