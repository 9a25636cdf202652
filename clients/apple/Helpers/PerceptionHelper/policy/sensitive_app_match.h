#pragma once

#include <optional>
#include <string>

#include "policy/sensitive_apps_config.h"

namespace tavik {

/// `bundleIdentifier` when a pattern of the policy matches it; nothing when none does, or when there is no identifier.
std::optional<std::string> sensitiveAppMatch(const std::optional<std::string>& bundleIdentifier,
                                             const SensitiveAppsConfig& policy);

}  // namespace tavik
