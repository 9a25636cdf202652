#pragma once

#include <optional>

#include "accessibility/ax_summary.h"
#include "platform/accessibility.h"
#include "platform/workspace.h"
#include "policy/sensitive_apps_config.h"
#include "protocol/request.h"
#include "target/resolved_target_app.h"

namespace tavik {

/// Walks the part of an application that fits the target, eight levels below its root: the main window of `targetApp`
/// (else its first window, else the application itself) for Target::app; the focused element of the frontmost
/// application (else the application itself) for Target::focused_element; `targetApp` itself for the other targets.
/// Without trust, or without an application, nothing is walked.
AXSummary captureAXTree(Target target, const std::optional<ResolvedTargetApp>& targetApp,
                        const SensitiveAppsConfig& redaction, platform::Accessibility& accessibility,
                        platform::Workspace& workspace);

}  // namespace tavik
