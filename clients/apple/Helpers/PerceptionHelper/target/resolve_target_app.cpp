#include "target/resolve_target_app.h"

#include <algorithm>
#include <string_view>

#include "text/caseless_equal.h"
#include "text/trimming.h"

namespace tavik {
namespace {

bool isRegular(const platform::RunningApplicationRef& app) {
  return app->activationPolicy() == platform::ActivationPolicy::regular;
}

std::string_view trimmed(const std::optional<std::string>& identifier) {
  return identifier ? text::trimmedOfWhitespaceAndNewlines(*identifier) : std::string_view();
}

std::optional<ResolvedTargetApp> findByBundleIdentifier(std::string_view identifier, platform::Workspace& workspace) {
  if (identifier.empty()) return std::nullopt;
  const auto apps = workspace.runningApplicationsWithBundleIdentifier(identifier);
  if (apps.empty()) return std::nullopt;
  const auto regular = std::ranges::find_if(apps, isRegular);
  return ResolvedTargetApp{regular != apps.end() ? *regular : apps.front()};
}

std::optional<ResolvedTargetApp> findByName(std::string_view name, platform::Workspace& workspace) {
  if (name.empty()) return std::nullopt;
  const auto apps = workspace.runningApplications();
  const auto found = std::ranges::find_if(apps, [&](const auto& app) {
    if (!isRegular(app)) return false;
    const auto localizedName = app->localizedName();
    return localizedName && text::caselessEqual(*localizedName, name);
  });
  if (found == apps.end()) return std::nullopt;
  return ResolvedTargetApp{*found};
}

}  // namespace

std::optional<ResolvedTargetApp> resolveTargetApp(const AppIdentifiers& identifiers, platform::Workspace& workspace) {
  if (auto app = findByBundleIdentifier(trimmed(identifiers.bundleId), workspace)) return app;
  return findByName(trimmed(identifiers.name), workspace);
}

}  // namespace tavik
