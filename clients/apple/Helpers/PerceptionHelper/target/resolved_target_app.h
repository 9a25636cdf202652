#pragma once

#include "platform/workspace.h"

namespace tavik {

/// The running application that a request named. Copies share the application.
struct ResolvedTargetApp {
  platform::RunningApplicationRef app;  ///< never null
};

}  // namespace tavik
