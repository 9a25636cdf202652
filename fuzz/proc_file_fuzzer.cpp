#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/linux/applications/process_evidence.h"
#include "text/utf8.h"

using namespace tavik::platform::applications;

/// An application's id is valid UTF-8 and no longer than what it was read from, bytes that are no UTF-8 aside; it stays
/// the same when other units stand above it.
/// Mounts elsewhere make no Flatpak sandbox, and one over its root unmakes it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto application = applicationOfUnit(text);
  if (!tavik::text::isValidUTF8(application) || application.size() > 3 * size) std::abort();
  if (applicationOfUnit("0::/user.slice/app.slice/" + text) != application) std::abort();
  const bool isFlatpaks = isFlatpaksMountTable(text);
  if (isFlatpaksMountTable("1 1 0:1 / /home rw - nfs host rw\n" + text) != isFlatpaks) std::abort();
  if (isFlatpaksMountTable(text + "\n1 1 0:1 / / rw - fuse silent rw")) std::abort();
  return 0;
}
