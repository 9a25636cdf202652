#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "policy/sensitive_apps_config.h"
#include "tools/doctor/finding.h"
#include "tools/doctor/known_applications.h"

namespace tavik::doctor {

/// Patterns that seem to mean an application which the whole policy does not cover: they differ from an identifier of
/// its in letter case alone, or are another name of it.
std::vector<Finding> nearMatches(const SensitiveAppsConfig& policy, std::span<const KnownApplication> applications);

}  // namespace tavik::doctor
