#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/host.h"
#include "platform/workspace.h"
#include "protocol/response_dictionary.h"
#include "target/resolved_target_app.h"

namespace tavik {

/// `date` in UTC as ISO 8601 with milliseconds, which are cut, not rounded: "2026-11-16T13:24:20.123Z".
std::string iso8601(std::chrono::system_clock::time_point date);

/// The context block, and the application that it names; null when it names none.
struct CaptureContext {
  ResponseDictionary dictionary = {};
  platform::RunningApplicationRef application = {};
};

/// When, of which application (the given one, else the frontmost) and on which screen a capture is made:
/// "captured_at_utc", "app_bundle_id" and "app_name" when there is an application, "display_id" and "scale_factor" when
/// there is a main screen.
CaptureContext captureContext(const std::optional<ResolvedTargetApp>& targetApp, platform::Workspace& workspace,
                              const platform::Host& host);

}  // namespace tavik
