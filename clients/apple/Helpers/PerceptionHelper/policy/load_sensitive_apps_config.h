#pragma once

#include "platform/host.h"
#include "policy/sensitive_apps_config.h"

namespace tavik {

/// The policy in the first file that can be read: the one that the environment variable TAVIK_PERCEPTION_CONFIG names,
/// the one at the default path in the user's documents, the program's own resource. Without any, the delivered
/// policy. Never fails, says nothing.
SensitiveAppsConfig loadSensitiveAppsConfig(const platform::Host& host);

}  // namespace tavik
