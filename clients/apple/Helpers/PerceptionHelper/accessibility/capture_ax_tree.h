#pragma once

#include <optional>

#include "accessibility/ax_summary.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"
#include "policy/sensitive_apps_config.h"
#include "protocol/request.h"
#include "target/resolved_target_app.h"

namespace tavik {

/// Where a walk of an application begins: at its main window (else its first window, else the application itself) for
/// Target::app; at its focused element (else the application itself) for Target::focused_element; at the application
/// itself for the other targets.
platform::UIElementRef walkedRoot(Target target, const platform::UIElementRef& application);

/// Walks an application from there, kMaxAXDepth levels below: the frontmost one for Target::focused_element, else
/// `targetApp`. Without trust, or without an application, nothing is walked.
AXSummary captureAXTree(Target target, const std::optional<ResolvedTargetApp>& targetApp,
                        const SensitiveAppsConfig& redaction, platform::Accessibility& accessibility,
                        platform::Workspace& workspace);

}  // namespace tavik
