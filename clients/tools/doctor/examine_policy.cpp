#include "tools/doctor/examine_policy.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>

#include "platform/posix/regular_file.h"
#include "policy/delivered_policy.h"
#include "policy/fnmatch_simple.h"
#include "policy/policy_lines.h"
#include "text/quoted.h"
#include "text/utf8.h"

namespace tavik::doctor {
namespace {

constexpr std::string_view kAbout = "policy";

/// Of bytes that are not UTF-8.
std::string whereInvalid(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) return "it is UTF-16";
  for (std::size_t number = 1;; ++number) {
    const auto line = bytes.substr(0, bytes.find('\n'));
    if (!text::isValidUTF8(line)) return std::string("line ").append(std::to_string(number)).append(" is the first");
    bytes.remove_prefix(std::min(bytes.size(), line.size() + 1));
  }
}

Finding unreadable(const std::string& path, std::string_view why, std::string remedy) {
  return {.level = Level::fault,
          .about = kAbout,
          .text = std::string("The file ").append(text::quoted(path)).append(" is no policy: ").append(why).append("."),
          .remedy = std::move(remedy)};
}

std::string_view kindOf(const PolicyLine& line) {
  if (line.kind == PolicyLineKind::header && line.section != PolicySection::none) return "section";
  if (line.item.empty()) return "nothing";
  if (line.section == PolicySection::bundleIds) return "application";
  return line.section == PolicySection::axRoles ? "role" : "nothing";
}

std::vector<std::string> matchesOf(std::string_view pattern, std::span<const KnownApplication> applications) {
  std::set<std::string> matches;
  for (const auto& application : applications) {
    const auto covers = [pattern](const std::string& identifier) {
      return fnmatchSimple({.pattern = pattern, .candidate = identifier});
    };
    if (std::ranges::any_of(application.identifiers, covers)) matches.insert(application.identifiers.front());
  }
  return {matches.begin(), matches.end()};
}

}  // namespace

Finding unreadablePolicy(const platform::Host& host, const std::string& path) {
  if (!host.fileExists(path)) {
    return path.starts_with('~')
               ? unreadable(path, "there is none, since ~ is a character like any other here",
                            "Write the whole path, with the home folder in place of ~.")
               : unreadable(path, "there is no such file",
                            "Write the whole path, from / on: a relative one begins where the helper is "
                            "started.");
  }
  constexpr std::size_t kLargest = std::size_t{16} << 20U;
  const auto bytes = platform::posix::readRegularFile(path, kLargest);
  if (!bytes || text::isValidUTF8(*bytes)) {
    return unreadable(path, "it cannot be read, is neither a file nor a pipe with something in it, or exceeds 16 MiB",
                      "See to it that the user who runs the helper may read it.");
  }
  return unreadable(path, "it is not UTF-8, and " + whereInvalid(*bytes), "Save it as UTF-8.");
}

PolicyReport explainPolicy(const PolicyText& policy, std::span<const KnownApplication> applications) {
  PolicyReport report{.isDelivered = policy.text == deliveredPolicy()};
  if (policy.path) report.file = text::toValidUTF8(*policy.path);
  PolicyLines lines(policy.text);
  while (const auto line = lines.next()) {
    if (line->text.empty() || line->kind == PolicyLineKind::comment) continue;
    PolicyLineReport one{.number = line->number, .takenFor = kindOf(*line), .text = std::string(line->text)};
    if (one.takenFor == "application") {
      ++report.applications;
      one.text = line->item;
      one.matches = matchesOf(line->item, applications);
    } else if (one.takenFor == "role") {
      ++report.roles;
      one.text = line->item;
    }
    report.lines.push_back(std::move(one));
  }
  return report;
}

std::vector<Finding> policyInForce(const platform::Host& host, const PolicyText& policy) {
  std::vector<Finding> findings;
  const auto named = host.environmentVariable("TAVIK_PERCEPTION_CONFIG").value_or("");
  if (!named.empty() && policy.path != named) {
    findings.push_back(unreadablePolicy(host, named));
    findings.back().text.insert(0, "TAVIK_PERCEPTION_CONFIG is of no effect. ");
  }
  const auto which = policy.path ? text::quoted(*policy.path) : std::string("that which is compiled in");
  const bool isOwn = policy.text != deliveredPolicy();
  findings.push_back(
      {.level = Level::ok,
       .about = kAbout,
       .text = std::string("The policy in force is ").append(which).append(isOwn ? "." : ", as it is delivered.")});
  return findings;
}

}  // namespace tavik::doctor
