#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/linux/wayland/native_window.h"
#include "platform/linux/wayland/sway_tree.h"
#include "text/utf8.h"

using tavik::text::isValidUTF8;

/// Whatever stands in the tree, its windows have valid texts and numbers of their own kind, and without an output
/// around it nothing is a window.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto windows = tavik::platform::wayland::windowsOfSwayTree(text);
  if (!windows) return 0;
  for (const auto& window : *windows) {
    if (!isValidUTF8(window.title) || !isValidUTF8(window.appID) || !isValidUTF8(window.className)) std::abort();
    if ((window.id & tavik::platform::wayland::kNativeWindowBit) != 0) std::abort();
  }
  const auto bare = tavik::platform::wayland::windowsOfSwayTree("{\"windows\":" + text + "}");
  if (bare && !bare->empty()) std::abort();
  return 0;
}
