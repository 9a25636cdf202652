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

std::optional<std::string> matchOf(const platform::RunningApplicationRef& app, const SensitiveAppsConfig& policy) {
  return app ? sensitiveAppMatch(app->bundleIdentifiers(), policy) : std::nullopt;
}

/// Policy, accessibility and level. The policy is asked about the target application, or about the frontmost one for
/// the targets without any.
Findings findingsWithoutImage(const EffectiveRequest& wanted, const std::optional<ResolvedTargetApp>& targetApp,
                              const SensitiveAppsConfig& policy, const Platform& platform) {
  Findings findings;
  const bool isApp = wanted.target == Target::app;
  findings.sensitiveBundleId = matchOf(isApp ? targetApp->app : platform.workspace->frontmostApplication(), policy);
  findings.isTrusted = !wanted.includeAXTree || platform.accessibility->isProcessTrusted();
  if (wanted.includeAXTree && findings.isTrusted) {
    findings.ax = captureAXTree(wanted.target, targetApp, policy, *platform.accessibility, *platform.workspace);
  }
  findings.levelUsed = resolveLevel(wanted.level, findings.ax);
  return findings;
}

/// The sensitive application that has come into the picture since the policy was asked, or to the front.
std::optional<std::string> lateMatch(const CapturedImage& image, const CaptureContext& context,
                                     const SensitiveAppsConfig& policy) {
  std::optional<std::string> match;
  if (image.owningApplication) match = sensitiveAppMatch(image.owningApplication->bundleIdentifiers(), policy);
  if (!match) match = matchOf(image.frontmostApplication, policy);
  return match ? match : matchOf(context.application, policy);
}

/// From here to the response: what does not come to an end here is a picture.
void prepareForCapture(platform::StandardStreams& streams) {
  static const auto kText = errorText(replyTo(ErrorCode::capture_failed));
  streams.setLastResort(kText);
}

/// The second half of the pass: what is found out, and the response.
awaitable<void> perceive(const EffectiveRequest& wanted, const std::optional<ResolvedTargetApp>& targetApp,
                         const Platform& platform) {
  auto& streams = *platform.streams;
  const auto policy = loadSensitiveAppsConfig(*platform.host);
  auto findings = findingsWithoutImage(wanted, targetApp, policy, platform);
  std::optional<CapturedImage> image;
  const bool capturesImage = wanted.includeImage && findings.levelUsed != Level::ax_only && !findings.sensitiveBundleId;
  if (capturesImage) {
    if (!platform.screenCapture->preflightScreenCaptureAccess()) {
      co_return writeError(replyTo(ErrorCode::screen_recording_permission_required), streams);
    }
    prepareForCapture(streams);
    const SurfaceRequest surface{.target = wanted.target, .targetApp = targetApp, .region = wanted.request.region};
    const auto parameters = imageParameters(wanted.request, findings.levelUsed);
    auto outcome = co_await captureScreenImage(surface, parameters, *platform.screenCapture, *platform.workspace);
    if (const auto* const error = std::get_if<CaptureImageError>(&outcome)) {
      co_return writeError(
          replyTo(findings.isTrusted ? errorCodeOf(*error) : ErrorCode::accessibility_permission_required), streams);
    }
    image = std::get<CapturedImage>(std::move(outcome));
  } else if (!findings.isTrusted) {
    co_return writeError(replyTo(ErrorCode::accessibility_permission_required), streams);
  }
  auto context = captureContext(targetApp, *platform.workspace, *platform.host);
  if (image) findings.sensitiveBundleId = lateMatch(*image, context, policy);
  if (image && !findings.sensitiveBundleId) findings.image = std::move(image->dataURL);
  writeResponse({{"ok", true}, {"data", dataObject(std::move(findings), std::move(context.dictionary))}}, streams);
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
