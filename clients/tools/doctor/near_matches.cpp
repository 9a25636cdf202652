#include "tools/doctor/near_matches.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <string>

#include "policy/fnmatch_simple.h"
#include "policy/sensitive_app_match.h"
#include "text/caseless_equal.h"
#include "text/quoted.h"

namespace tavik::doctor {
namespace {

/// Identifiers and patterns are ASCII but for a few.
std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return text;
}

/// A pattern, and what it is compared by.
struct Pattern {
  std::string text = {};
  std::string lower = {};
  text::CaselessKey key = {};
};

std::vector<Pattern> patternsOf(const SensitiveAppsConfig& policy) {
  std::vector<Pattern> patterns;
  patterns.reserve(policy.bundleIdBlocklist.size());
  for (const auto& text : policy.bundleIdBlocklist) {
    patterns.push_back({.text = text, .lower = lowerCase(text), .key = text::caselessKey(text)});
  }
  return patterns;
}

/// The first pattern that seems to mean the application; null when none does.
const Pattern* meaning(const KnownApplication& application, std::span<const Pattern> patterns) {
  std::vector<std::string> identifiers;
  std::ranges::transform(application.identifiers, std::back_inserter(identifiers), lowerCase);
  std::vector<text::CaselessKey> names;
  for (const auto& name : application.otherNames) {
    if (!name.empty()) names.push_back(text::caselessKey(name));
  }
  const auto isMeant = [&](const Pattern& pattern) {
    const auto differsInCase = [&pattern](const std::string& identifier) {
      return fnmatchSimple({.pattern = pattern.lower, .candidate = identifier});
    };
    return std::ranges::any_of(identifiers, differsInCase) ||
           (pattern.key && std::ranges::find(names, pattern.key) != names.end());
  };
  const auto found = std::ranges::find_if(patterns, isMeant);
  return found != patterns.end() ? &*found : nullptr;
}

}  // namespace

std::vector<Finding> nearMatches(const SensitiveAppsConfig& policy, std::span<const KnownApplication> applications) {
  std::vector<Finding> findings;
  std::set<std::string> told;
  const auto patterns = patternsOf(policy);
  for (const auto& application : applications) {
    const auto& identifier = application.identifiers.front();
    if (sensitiveAppMatch(application.identifiers, policy)) continue;
    const auto* const pattern = meaning(application, patterns);
    if (pattern == nullptr || !told.insert(identifier).second) continue;
    findings.push_back(
        {.level = Level::fault,
         .about = "policy",
         .text = std::string("The pattern ")
                     .append(text::quoted(pattern->text))
                     .append(" does not cover the application with the identifier ")
                     .append(text::quoted(identifier))
                     .append(", which it seems to mean."),
         .remedy = std::string("If it does, write ").append(identifier).append(" in a line beside it.")});
  }
  return findings;
}

}  // namespace tavik::doctor
