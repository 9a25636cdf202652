#include "driver/run_main.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "accessibility/capture_ax_tree.h"
#include "capture/capture_screen_image.h"
#include "driver/data_object.h"
#include "driver/effective_request.h"
#include "driver/image_parameters.h"
#include "driver/resolve_level.h"
#include "policy/load_sensitive_apps_config.h"
#include "policy/sensitive_app_match.h"
#include "protocol/read_request.h"
#include "protocol/write_response.h"
#include "target/capture_context.h"
#include "target/resolve_target_app.h"

namespace tavik {
namespace {

using boost::asio::awaitable;
using platform::Platform;

constexpr ErrorCode errorCodeOf(CaptureImageError error) {
  switch (error) {
    case CaptureImageError::noPrimaryDisplay:
      return ErrorCode::no_primary_display;
    case CaptureImageError::targetAppHasNoWindow:
      return ErrorCode::target_app_has_no_window;
    case CaptureImageError::targetWindowMinimized:
      return ErrorCode::target_window_minimized;
    case CaptureImageError::captureUnavailable:
    case CaptureImageError::captureFailed:
      break;
  }
  return ErrorCode::capture_failed;
}

void writeTargetAppNotRunning(const Request& request, platform::StandardStreams& streams) {
  auto reply = replyTo(ErrorCode::target_app_not_running);
  std::string error(reply.error);
  error.replace(error.find(kIdentifierPlace), kIdentifierPlace.size(),
                request.app_bundle_id ? *request.app_bundle_id : request.app_name.value_or("<unspecified>"));
  reply.error = error;
  writeError(reply, streams);
}

/// The identifier that the policy is asked about: the target application's, or the frontmost one's for the targets
/// without any.
std::optional<std::string> policyBundleIdentifier(Target target, const std::optional<ResolvedTargetApp>& targetApp,
                                                  platform::Workspace& workspace) {
  const auto app = target == Target::app ? targetApp->app : workspace.frontmostApplication();
  return app ? app->bundleIdentifier() : std::nullopt;
}

/// Policy, accessibility and level.
Findings findingsWithoutImage(const EffectiveRequest& wanted, const std::optional<ResolvedTargetApp>& targetApp,
                              const Platform& platform) {
  const auto policy = loadSensitiveAppsConfig(*platform.host);
  Findings findings;
  findings.sensitiveBundleId =
      sensitiveAppMatch(policyBundleIdentifier(wanted.target, targetApp, *platform.workspace), policy);
  findings.isTrusted = !wanted.includeAXTree || platform.accessibility->isProcessTrusted();
  if (wanted.includeAXTree && findings.isTrusted) {
    findings.ax = captureAXTree(wanted.target, targetApp, policy, *platform.accessibility, *platform.workspace);
  }
  findings.levelUsed = resolveLevel(wanted.level, findings.ax);
  return findings;
}

/// The second half of the pass: what is found out, and the response.
awaitable<void> perceive(const EffectiveRequest& wanted, const std::optional<ResolvedTargetApp>& targetApp,
                         const Platform& platform) {
  auto& streams = *platform.streams;
  auto findings = findingsWithoutImage(wanted, targetApp, platform);
  const bool capturesImage = wanted.includeImage && findings.levelUsed != Level::ax_only && !findings.sensitiveBundleId;
  if (capturesImage) {
    if (!platform.screenCapture->preflightScreenCaptureAccess()) {
      co_return writeError(replyTo(ErrorCode::screen_recording_permission_required), streams);
    }
    const SurfaceRequest surface{.target = wanted.target, .targetApp = targetApp, .region = wanted.request.region};
    const auto parameters = imageParameters(wanted.request, findings.levelUsed);
    auto image = co_await captureScreenImage(surface, parameters, *platform.screenCapture, *platform.workspace);
    if (const auto* const error = std::get_if<CaptureImageError>(&image)) {
      co_return writeError(
          replyTo(findings.isTrusted ? errorCodeOf(*error) : ErrorCode::accessibility_permission_required), streams);
    }
    findings.image = std::get<std::string>(std::move(image));
  } else if (!findings.isTrusted) {
    co_return writeError(replyTo(ErrorCode::accessibility_permission_required), streams);
  }
  auto context = captureContext(targetApp, *platform.workspace, *platform.host);
  writeResponse({{"ok", true}, {"data", dataObject(std::move(findings), std::move(context))}}, streams);
}

/// The first half: request, target, target application.
awaitable<void> answer(const Platform& platform) {
  auto& streams = *platform.streams;
  const auto wanted = effectiveRequest(readRequest(streams));
  if (!wanted) co_return writeError(replyTo(ErrorCode::target_required), streams);
  std::optional<ResolvedTargetApp> targetApp;
  if (wanted->target == Target::app) {
    const AppIdentifiers identifiers{.bundleId = wanted->request.app_bundle_id, .name = wanted->request.app_name};
    targetApp = resolveTargetApp(identifiers, *platform.workspace);
    if (!targetApp) co_return writeTargetAppNotRunning(wanted->request, streams);
  }
  co_await perceive(*wanted, targetApp, platform);
}

}  // namespace

awaitable<std::int32_t> runMain(const Platform& platform) {
  try {
    co_await answer(platform);
  } catch (...) {
    // Nothing has been written yet: what writes last, writeResponse, throws nothing.
    writeSerializationFailure(*platform.streams);
  }
  co_return 0;
}

}  // namespace tavik
