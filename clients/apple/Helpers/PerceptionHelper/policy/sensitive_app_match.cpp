#include "policy/sensitive_app_match.h"

#include <algorithm>

#include "policy/fnmatch_simple.h"

namespace tavik {

std::optional<std::string> sensitiveAppMatch(const std::optional<std::string>& bundleIdentifier,
                                             const SensitiveAppsConfig& policy) {
  if (!bundleIdentifier) return std::nullopt;
  const bool isSensitive = std::ranges::any_of(policy.bundleIdBlocklist, [&](const std::string& pattern) {
    return fnmatchSimple({.pattern = pattern, .candidate = *bundleIdentifier});
  });
  return isSensitive ? bundleIdentifier : std::nullopt;
}

}  // namespace tavik
