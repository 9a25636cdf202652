#include "platform/macos/ax_accessibility.h"
#include "platform/macos/ns_host.h"
#include "platform/macos/ns_workspace.h"
#include "platform/macos/sc_screen_capture.h"
#include "platform/platform.h"
#include "platform/posix/posix_standard_streams.h"

namespace tavik::platform {

Platform makePlatform(std::string_view lastResort) {
  auto streams = posix::makeStandardStreams(lastResort);  // before anything can be opened, or fail
  return {.host = macos::makeHost(),
          .streams = std::move(streams),
          .workspace = macos::makeWorkspace(),
          .accessibility = macos::makeAccessibility(),
          .screenCapture = macos::makeScreenCapture()};
}

}  // namespace tavik::platform
