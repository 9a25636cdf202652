#include "driver/run_main.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "accessibility/capture_ax_tree.h"
#include "capture/capture_screen_image.h"
#include "driver/capture_image_replies.h"
#include "driver/effective_request.h"
#include "driver/image_defaults.h"
#include "driver/permission_replies.h"
#include "driver/resolve_level.h"
#include "driver/sensitive_app_match.h"
#include "policy/load_sensitive_apps_config.h"
#include "protocol/read_request.h"
#include "protocol/write_response.h"
#include "target/capture_context.h"
#include "target/resolve_target_app.h"

namespace tavik {
namespace {

using boost::asio::awaitable;
using platform::Platform;

constexpr ErrorReply kTargetRequired{
    .code = "target_required",
    .error =
        "local.perception.capture requires an explicit target. Pass `app_bundle_id` (e.g. 'com.apple.Safari') or "
        "`app_name` to capture a specific app's main window WITHOUT bringing it to the front, or pass target=screen / "
        "region / focused_element. The previous default 'frontmost_window' was removed (founder directive 2026-05-07) "
        "to prevent silent capture of whatever the user happens to be looking at.",
    .hint =
        "pass app_bundle_id='<bundle.id>' (preferred) or app_name='<App Name>' or "
        "target=screen|region|focused_element"};

/// What the pass has found out about the accessibility tree.
struct AXCapture {
  bool isTrusted = true;  ///< also when nobody asked
  AXSummary summary = {};
};

/// What goes into a success response.
struct Findings {
  Level levelUsed = Level::read;
  AXCapture ax = {};
  std::optional<std::string> sensitiveBundleId = {};  ///< of the sensitive application, when there is a match
  std::optional<std::string> image = {};              ///< a data URL
};

void writeTargetAppNotRunning(const Request& request, platform::StandardStreams& streams) {
  const auto identifier = request.app_bundle_id ? *request.app_bundle_id : request.app_name.value_or("<unspecified>");
  const auto error =
      "No running application matched target identifier " + identifier +
      ". Pass `app_bundle_id` for an app that's currently running (it can be backgrounded; capture works "
      "without focus), or launch it first.";
  writeError({.code = "target_app_not_running",
              .error = error,
              .hint = "use `lsappinfo list` or NSWorkspace.runningApplications to find the right bundle id"},
             streams);
}

/// The identifier that the policy is asked about: the target application's, or the frontmost one's for the targets
/// without any.
std::optional<std::string> policyBundleIdentifier(Target target, const std::optional<ResolvedTargetApp>& targetApp,
                                                  const platform::Workspace& workspace) {
  const auto app = target == Target::app ? targetApp->app : workspace.frontmostApplication();
  return app ? app->bundleIdentifier() : std::nullopt;
}

AXCapture captureAX(const EffectiveRequest& wanted, const std::optional<ResolvedTargetApp>& targetApp,
                    const SensitiveAppsConfig& policy, const Platform& platform) {
  if (!wanted.includeAXTree) return {};
  if (!platform.accessibility->isProcessTrusted()) return {.isTrusted = false};
  return {.summary = captureAXTree(wanted.target, targetApp, policy, *platform.accessibility, *platform.workspace)};
}

ImageParameters imageParameters(const Request& request, Level levelUsed) {
  const auto defaults = imageDefaults(levelUsed);
  return {.longEdgePx = request.max_long_edge_px.value_or(defaults.longEdgePx),
          .format = request.format ? std::string_view(*request.format) : defaults.format,
          .quality = defaults.quality};
}

ResponseDictionary dataObject(Findings findings, ResponseDictionary context) {
  auto& summary = findings.ax.summary;
  ResponseDictionary data{
      {"level_used", rawValue(findings.levelUsed)},
      {"context", std::move(context)},
      {"image", nullptr},
      {"ax_tree", nullptr},
      {"caption", nullptr},
      {"cache_hit", false},
      {"ax_node_count", summary.nodeCount},
      {"ax_text_chars", summary.textChars},
      {"tcc_screen_recording", true},
      {"tcc_accessibility", findings.ax.isTrusted},
      {"redaction_applied", findings.sensitiveBundleId.has_value() || summary.redactionApplied},
  };
  if (findings.image) data["image"] = *findings.image;
  if (summary.tree) data["ax_tree"] = *std::move(summary.tree);
  if (findings.sensitiveBundleId) {
    data["sensitive_app_match"] = true;
    data["sensitive_bundle_id"] = *findings.sensitiveBundleId;
  }
  return data;
}

/// The second half of the pass: policy, accessibility, level, image, response.
awaitable<void> perceive(const EffectiveRequest& wanted, const std::optional<ResolvedTargetApp>& targetApp,
                         const Platform& platform) {
  auto& streams = *platform.streams;
  const auto policy = loadSensitiveAppsConfig(*platform.host);
  Findings findings;
  findings.sensitiveBundleId =
      sensitiveAppMatch(policyBundleIdentifier(wanted.target, targetApp, *platform.workspace), policy);
  findings.ax = captureAX(wanted, targetApp, policy, platform);
  const auto& summary = findings.ax.summary;
  findings.levelUsed = resolveLevel(wanted.level, {.nodes = summary.nodeCount, .textChars = summary.textChars});

  const bool capturesImage = wanted.includeImage && findings.levelUsed != Level::ax_only && !findings.sensitiveBundleId;
  if (capturesImage) {
    if (!platform.screenCapture->preflightScreenCaptureAccess()) {
      co_return writeError(kScreenRecordingPermissionRequired, streams);
    }
    const SurfaceRequest surface{.target = wanted.target, .targetApp = targetApp, .region = wanted.request.region};
    const auto parameters = imageParameters(wanted.request, findings.levelUsed);
    auto image = co_await captureScreenImage(surface, parameters, *platform.screenCapture, *platform.workspace);
    if (const auto* const error = std::get_if<CaptureImageError>(&image)) {
      co_return writeError(findings.ax.isTrusted ? replyTo(*error) : kAccessibilityPermissionRequired, streams);
    }
    findings.image = std::get<std::string>(std::move(image));
  } else if (!findings.ax.isTrusted) {
    co_return writeError(kAccessibilityPermissionRequired, streams);
  }
  auto context = captureContext(targetApp, *platform.workspace, *platform.host);
  writeResponse({{"ok", true}, {"data", dataObject(std::move(findings), std::move(context))}}, streams);
}

/// The first half: request, target, target application.
awaitable<void> answer(const Platform& platform) {
  auto& streams = *platform.streams;
  const auto wanted = effectiveRequest(readRequest(streams));
  if (!wanted) co_return writeError(kTargetRequired, streams);
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
