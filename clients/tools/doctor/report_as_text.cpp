#include "tools/doctor/report_as_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "text/code_points.h"
#include "text/quoted.h"
#include "tools/doctor/count_elements.h"
#include "tools/doctor/words.h"

namespace tavik::doctor {
namespace {

constexpr std::size_t kColumns = 100;

/// The text without what a terminal obeys: others may have put it there.
std::string harmless(std::string_view text) {
  constexpr std::int32_t kSpace = 0x20, kDelete = 0x7F, kLastControl = 0x9F;
  std::string result;
  while (!text.empty()) {
    const auto [value, length] = text::firstCodePoint(text);
    const bool isControl = value < kSpace || (value >= kDelete && value <= kLastControl);
    result += isControl ? "?" : text.substr(0, length);
    text.remove_prefix(length);
  }
  return result;
}

/// Adds the words, in lines that begin below where the first one does.
void addWrapped(std::string_view first, std::string_view words, std::string& result) {
  const auto written = harmless(words);
  std::string_view text = written;
  result += first;
  auto column = first.size();
  while (!text.empty()) {
    const auto word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(text.size(), word.size() + 1));
    if (column > first.size() && column + word.size() > kColumns) {
      result.append("\n").append(first.size(), ' ');
      column = first.size();
    }
    if (column > first.size()) result += ' ';
    result += word;
    column += word.size() + 1;
  }
  result += '\n';
}

void add(const Finding& finding, std::string& result) {
  std::string first = std::string("  ").append(word(finding.level));
  first.resize(9, ' ');
  addWrapped(first, finding.text, result);
  if (finding.remedy) addWrapped("         > ", *finding.remedy, result);
}

std::string treeOf(const ApplicationReport& application) {
  if (application.isSensitive) return "sensitive: no picture is taken of it, and its tree was not looked at";
  std::string text = application.toolkit.value_or("toolkit unknown");
  if (!application.elements) return text.append(", tree not read");
  const auto elements = *application.elements;
  if (elements == 0) return text.append(", no tree: it has pictures alone");
  text.append(", ").append(std::to_string(elements)).append(elements >= kMostElements ? " or more" : "");
  return text.append(elements == 1 ? " element" : " elements");
}

void add(const ApplicationReport& application, std::string& result) {
  result.append("  ")
      .append(text::quoted(application.name))
      .append(", identifier ")
      .append(text::quoted(application.identifier));
  result.append(application.isFrontmost ? ", in front\n" : "\n");
  addWrapped("         ", treeOf(application), result);
  if (application.remedy) addWrapped("         > ", *application.remedy, result);
}

std::string meaningOf(const PolicyLineReport& line) {
  if (line.takenFor == "section") return std::string("section ").append(line.text);
  if (line.takenFor == "nothing") return std::string("skipped: ").append(text::quoted(line.text));
  auto text = std::string(line.takenFor).append(" ").append(text::quoted(line.text));
  std::string_view separator = ", here ";
  for (const auto& match : line.matches) {
    text.append(separator).append(match);
    separator = ", ";
  }
  return text;
}

void add(const PolicyReport& policy, bool hasLines, std::string& result) {
  result.append("  Patterns of sensitive applications: ").append(std::to_string(policy.applications));
  result.append(". Roles with withheld values: ").append(std::to_string(policy.roles)).append(".\n");
  if (!hasLines) return;
  for (const auto& line : policy.lines) {
    addWrapped(std::string("  line ").append(std::to_string(line.number)).append(": "), meaningOf(line), result);
  }
}

void addHeading(std::string_view heading, std::string& result) {
  result.append(result.empty() ? "" : "\n").append(heading).append("\n");
}

}  // namespace

std::string reportAsText(const DoctorReport& report, TextOptions options) {
  std::string result;
  const auto isOnPolicy = [](const Finding& finding) { return finding.about == "policy"; };
  if (!options.isPolicyAlone) {
    addHeading("Desktop", result);
    for (const auto& finding : report.findings) {
      if (!isOnPolicy(finding)) add(finding, result);
    }
    addHeading("Applications: send the first as app_name, or the second as app_bundle_id", result);
    for (const auto& application : report.applications) add(application, result);
    if (report.applications.empty()) result += "  none can be seen\n";
  }
  addHeading("Policy", result);
  for (const auto& finding : report.findings) {
    if (isOnPolicy(finding)) add(finding, result);
  }
  if (report.policy) add(*report.policy, options.isPolicyAlone || !report.policy->isDelivered, result);
  result.append(isAllWell(report) ? "\nAll is well.\n" : "\nSomething is to be mended: see what is marked with >.\n");
  return result;
}

}  // namespace tavik::doctor
