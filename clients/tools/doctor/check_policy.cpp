#include "tools/doctor/check_policy.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "policy/parse_sensitive_apps_yaml.h"
#include "policy/policy_lines.h"
#include "text/quoted.h"
#include "tools/doctor/policy_line_fault.h"

namespace tavik::doctor {
namespace {

/// Of several lines in one, the first.
std::string subject(const PolicyLine& line) {
  return std::string("Line ")
      .append(std::to_string(line.number))
      .append(", ")
      .append(text::quoted(line.text.substr(0, line.text.find('\r'))));
}

/// The items below a header, or before the first one, which are in no section.
class Strays {
 public:
  /// What is wrong with those so far, and counts anew below `header`.
  std::optional<Finding> closedBy(const PolicyLine* header) {
    const auto count = std::exchange(count_, 0);
    const auto last = std::exchange(header_, header != nullptr ? std::optional(*header) : std::nullopt);
    if (last && nearlyNamesSection(*last)) {
      return fault(
          subject(*last) + " is no section's name to the reader, which wants it in lower case and without quotes",
          "Write bundle_id_blocklist: or ax_role_text_blocklist:", count);
    }
    if (count == 0) return std::nullopt;
    if (!last) return fault("Items stand above the first section that the reader knows", kOpen, count);
    return fault(subject(*last) + " opens no section that the reader knows", kOpen, count);
  }
  void add() { ++count_; }

 private:
  static constexpr auto kOpen = "Put bundle_id_blocklist: or ax_role_text_blocklist: on a line above the items.";
  static Finding fault(std::string text, const char* remedy, std::size_t count) {
    if (count > 0) text.append(". Items skipped: ").append(std::to_string(count));
    return {.level = Level::fault, .about = "policy", .text = std::move(text) + ".", .remedy = remedy};
  }

  std::optional<PolicyLine> header_ = {};
  std::size_t count_ = 0;
};

void checkWhole(std::string_view text, std::vector<Finding>& findings) {
  const auto policy = parseSensitiveAppsYAML(text);
  if (!policy.axRoleTextBlocklist.contains("AXSecureTextField")) {
    findings.push_back(
        {.level = Level::fault,
         .about = "policy",
         .text = "The role AXSecureTextField is not in the policy: what is typed into password fields is "
                 "shown, as dots or openly, as the application has it.",
         .remedy = "Add two lines to the file: ax_role_text_blocklist: and below it - AXSecureTextField"});
  }
  if (policy.bundleIdBlocklist.empty()) {
    findings.push_back({.level = Level::hint,
                        .about = "policy",
                        .text = "No application is sensitive under this policy: pictures are taken of all."});
  }
}

}  // namespace

std::vector<Finding> checkPolicy(std::string_view text) {
  std::vector<Finding> findings;
  const auto add = [&findings](std::optional<Finding> finding) {
    if (finding) findings.push_back(*std::move(finding));
  };
  Strays strays;
  PolicyLines lines(text);
  while (const auto line = lines.next()) {
    const auto fault = faultOf(*line);
    if (fault) {
      add(Finding{.level = Level::fault,
                  .about = "policy",
                  .text = subject(*line).append(" ").append(fault->text).append("."),
                  .remedy = std::string(fault->remedy)});
    }
    if (line->kind == PolicyLineKind::header) add(strays.closedBy(&*line));
    if (line->kind == PolicyLineKind::item && line->section == PolicySection::none) strays.add();
  }
  add(strays.closedBy(nullptr));
  checkWhole(text, findings);
  return findings;
}

}  // namespace tavik::doctor
