#pragma once

#include <optional>
#include <string>

#include "platform/workspace.h"
#include "target/resolved_target_app.h"

namespace tavik {

/// What a request says of the application, as sent.
struct AppIdentifiers {
  std::optional<std::string> bundleId = {};
  std::optional<std::string> name = {};
};

/// Finds the application among those that run; launches and activates nothing. The trimmed bundle identifier decides
/// alone when any application carries it, a regular one first. Otherwise the first regular application whose localized
/// name equals the trimmed name, letter case aside.
std::optional<ResolvedTargetApp> resolveTargetApp(const AppIdentifiers& identifiers, platform::Workspace& workspace);

}  // namespace tavik
