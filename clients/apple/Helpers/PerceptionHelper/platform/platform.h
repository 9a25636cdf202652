#pragma once

#include <memory>

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
/// question that needs it, so that a request that asks nothing of the desktop costs nothing.
Platform makePlatform();

}  // namespace tavik::platform
