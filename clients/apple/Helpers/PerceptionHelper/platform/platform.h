#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/accessibility.h"
#include "platform/host.h"
#include "platform/screen_capture.h"
#include "platform/standard_streams.h"
#include "platform/workspace.h"

namespace tavik::platform {

/// One desktop, as the program sees it. No member is null.
struct Platform {
  std::unique_ptr<Host> host;
  std::unique_ptr<StandardStreams> streams;
  std::unique_ptr<Workspace> workspace;
  std::unique_ptr<Accessibility> accessibility;
  std::unique_ptr<ScreenCapture> screenCapture;
};

/// The desktop that the program runs on. Defined once by each backend. Opens no connection: that waits for the first
/// question that needs it, so that a request that asks nothing of the desktop costs nothing. `lastResort` is for its
/// StandardStreams::setLastResort, and counts from the first moment.
Platform makePlatform(std::string_view lastResort);

/// Runs `pass`, on whatever thread, while the main one serves what the platform needs of it, and ends the process with
/// the status that it returns. Called once, by the main thread. Defined once by each backend.
[[noreturn]] void runToExit(const std::function<std::int32_t()>& pass);

}  // namespace tavik::platform
