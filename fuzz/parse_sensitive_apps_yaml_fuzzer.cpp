#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "policy/parse_sensitive_apps_yaml.h"

/// A comment line in front changes nothing, and one list behind the text appends just its items.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  auto policy = tavik::parseSensitiveAppsYAML(text);
  if (tavik::parseSensitiveAppsYAML("# comment:\n" + text) != policy) std::abort();
  const auto longer = tavik::parseSensitiveAppsYAML(text + " \n\tbundle_id_blocklist :\n - 'x'\n");
  policy.bundleIdBlocklist.emplace_back("x");
  if (longer != policy) std::abort();
  return 0;
}
