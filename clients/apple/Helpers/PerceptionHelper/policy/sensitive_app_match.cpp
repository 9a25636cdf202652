#include "policy/sensitive_app_match.h"

#include <algorithm>

#include "policy/fnmatch_simple.h"

namespace tavik {

std::optional<std::string> sensitiveAppMatch(std::span<const std::string> bundleIdentifiers,
                                             const SensitiveAppsConfig& policy) {
  const auto isSensitive = [&](const std::string& identifier) {
    return std::ranges::any_of(policy.bundleIdBlocklist, [&](const std::string& pattern) {
      return fnmatchSimple({.pattern = pattern, .candidate = identifier});
    });
  };
  const auto found = std::ranges::find_if(bundleIdentifiers, isSensitive);
  return found != bundleIdentifiers.end() ? std::optional(*found) : std::nullopt;
}

}  // namespace tavik
