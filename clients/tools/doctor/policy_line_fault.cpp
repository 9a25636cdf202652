#include "tools/doctor/policy_line_fault.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

#include "text/quoted.h"
#include "text/trimming.h"

namespace tavik::doctor {
namespace {

constexpr std::string_view kUnixLineEnds = "Save the file with Unix line ends: sed -i 's/\\r$//' FILE does it.";
constexpr std::string_view kRemarkAbove = "Give the remark a line of its own, which begins with #.";
constexpr std::string_view kOneItemALine =
    "Write the section's name and a colon alone on a line, and below it each item on a line of its own: - item.";

bool isQuote(char character) { return character == '"' || character == '\''; }

/// As YAML sees it: behind the closing quote of a quoted item, behind a blank otherwise.
bool hasRemark(const PolicyLine& line) {
  auto rest = line.text.substr(1);
  const auto item = text::trimmedOfWhitespace(rest);
  if (isQuote(item.front())) {
    const auto end = item.find(item.front(), 1);
    rest = end == std::string_view::npos ? "" : item.substr(end + 1);
  }
  return rest.find(" #") != std::string_view::npos || rest.find("\t#") != std::string_view::npos;
}

bool isUnpaired(std::string_view item) {
  return isQuote(item.front()) || isQuote(item.back()) || item.find('"') != std::string_view::npos;
}

bool hasUnseen(std::string_view item) {
  constexpr std::string_view kFirst = "\\u{";
  const auto shown = text::quoted(item);
  return shown.find(kFirst) != std::string::npos && item.find(kFirst) == std::string_view::npos;
}

bool contains(const PolicyLine& line, std::string_view part) { return line.item.find(part) != std::string_view::npos; }

bool isApplication(const PolicyLine& line) { return line.section == PolicySection::bundleIds; }
bool isRole(const PolicyLine& line) { return line.section == PolicySection::axRoles; }

/// The first line that holds decides.
struct ItemRule {
  bool (*holds)(const PolicyLine& line);
  LineFault fault;
};

constexpr std::array kItemRules{
    ItemRule{.holds = [](const PolicyLine& line) { return hasRemark(line); },
             .fault = {"has a remark behind it, which the reader takes for a part of the item", kRemarkAbove}},
    ItemRule{.holds = [](const PolicyLine& line) { return line.item.front() == '[' || line.item.front() == '{'; },
             .fault = {"has several items on one line, which the reader takes for one", kOneItemALine}},
    ItemRule{.holds = [](const PolicyLine& line) { return isUnpaired(line.item); },
             .fault = {"has quotes that do not stand as one pair around it, so they are a part of the item",
                       "Put the item between one pair of quotes, or none."}},
    ItemRule{.holds = [](const PolicyLine& line) { return contains(line, ","); },
             .fault = {"has a comma, which the reader takes for a part of the item", kOneItemALine}},
    ItemRule{.holds = [](const PolicyLine& line) { return contains(line, ": "); },
             .fault = {"has a colon inside, which the reader takes for a part of the item", kOneItemALine}},
    ItemRule{
        .holds =
            [](const PolicyLine& line) { return contains(line, "\\") || contains(line, "[") || contains(line, "]"); },
        .fault = {"has a backslash or a bracket, which stands for nothing but itself",
                  "Use * for any characters and ? for exactly one."}},
    ItemRule{
        .holds = [](const PolicyLine& line) { return line.item.front() == '^' || line.item.back() == '$'; },
        .fault = {"is written like a regular expression, and ^ and $ stand for themselves",
                  "A pattern covers the whole identifier by itself: leave them out, and use * for any characters."}},
    ItemRule{.holds = [](const PolicyLine& line) { return text::trimmedOfWhitespace(line.item) != line.item; },
             .fault = {"has blanks inside its quotes, at an end, where no name has any", "Take the blanks out."}},
    ItemRule{.holds = [](const PolicyLine& line) { return hasUnseen(line.item); },
             .fault = {"has a character that cannot be seen", "Type the line anew."}},
    ItemRule{.holds = [](const PolicyLine& line) { return isApplication(line) && contains(line, "/"); },
             .fault = {"is a path, and no identifier has a slash",
                       "Write the application's identifier: tavik-perception-doctor lists those that run."}},
    ItemRule{.holds = [](const PolicyLine& line) { return isApplication(line) && line.item.ends_with(".desktop"); },
             .fault = {"ends in .desktop, and no identifier does", "Leave .desktop out."}},
    ItemRule{.holds = [](const PolicyLine& line) { return isApplication(line) && line.item.starts_with("AXSecure"); },
             .fault = {"is a role, and stands among the applications", "Put it below ax_role_text_blocklist:"}},
    ItemRule{
        .holds = [](const PolicyLine& line) { return isRole(line) && (contains(line, "*") || contains(line, "?")); },
        .fault = {"is written like a pattern, and roles are exact names", "Write each role with its whole name."}},
    ItemRule{.holds = [](const PolicyLine& line) { return isRole(line) && !line.item.starts_with("AX"); },
             .fault = {"is no role, whose names begin with AX", "Put applications below bundle_id_blocklist:"}},
};

/// What marks a document in YAML, and means as little there.
bool isDocumentMark(std::string_view line) { return line == "---" || line == "..." || line.starts_with('%'); }

std::string folded(std::string_view name) {
  std::string result;
  for (const char character : name) {
    if (isQuote(character)) continue;
    result += character == '-' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  return result;
}

std::optional<LineFault> faultOfSkipped(std::string_view line) {
  if (line.empty() || isDocumentMark(line)) return std::nullopt;
  if (line == "-") return LineFault{"is a hyphen with nothing behind it", "Write the item behind it: - item."};
  if (line.front() == '-') return LineFault{"has no blank behind its hyphen, and is skipped", "Write it so: - item."};
  if (sectionNamed(folded(line.substr(0, line.find_first_of(": [")))) != PolicySection::none) {
    return LineFault{"has something behind the section's name, and is skipped: the section is not opened",
                     kOneItemALine};
  }
  return LineFault{"is nothing that the reader knows, and is skipped", kOneItemALine};
}

std::optional<LineFault> faultOfItem(const PolicyLine& line) {
  if (line.item.empty()) return LineFault{"has nothing in its quotes", "Write the item, or take the line out."};
  const auto* const rule = std::ranges::find_if(kItemRules, [&line](const auto& one) { return one.holds(line); });
  return rule != kItemRules.end() ? std::optional(rule->fault) : std::nullopt;
}

}  // namespace

bool nearlyNamesSection(const PolicyLine& header) {
  const auto name = text::trimmedOfWhitespace(header.text.substr(0, header.text.size() - 1));
  return sectionNamed(name) == PolicySection::none && sectionNamed(folded(name)) != PolicySection::none;
}

std::optional<LineFault> faultOf(const PolicyLine& line) {
  if (line.text.find('\r') != std::string_view::npos) {
    return LineFault{
        "ends with a carriage return (CR LF): it and the lines up to the next bare LF are one to the reader",
        kUnixLineEnds};
  }
  switch (line.kind) {
    case PolicyLineKind::comment:
      return std::nullopt;
    case PolicyLineKind::skipped:
      return faultOfSkipped(line.text);
    case PolicyLineKind::item:
      return faultOfItem(line);
    case PolicyLineKind::header:
      if (line.text.front() != '-') return std::nullopt;
      return LineFault{"ends with a colon, so it is no item but a section's name, and closes the section",
                       "Take the colon away."};
  }
  return std::nullopt;
}

}  // namespace tavik::doctor
