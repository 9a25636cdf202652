#pragma once

#include <optional>
#include <span>
#include <string>

#include "policy/sensitive_apps_config.h"

namespace tavik {

/// The first of an application's identifiers that a pattern of the policy matches; nothing when none does, or when it
/// has none.
std::optional<std::string> sensitiveAppMatch(std::span<const std::string> bundleIdentifiers,
                                             const SensitiveAppsConfig& policy);

}  // namespace tavik
