#pragma once

#include <vector>

#include "platform/linux/dbus/bus.h"
#include "platform/platform.h"
#include "policy/sensitive_apps_config.h"
#include "tools/doctor/doctor_report.h"

namespace tavik::doctor {

/// The running applications that one can switch to, in the platform's order. The trees of those that the policy calls
/// sensitive are left alone; so are all where `accessibilityBus` is null.
std::vector<ApplicationReport> examineApplications(const platform::Platform& platform,
                                                   const platform::dbus::Bus& accessibilityBus,
                                                   const SensitiveAppsConfig& policy);

}  // namespace tavik::doctor
