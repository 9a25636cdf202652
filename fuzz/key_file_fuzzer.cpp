#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/linux/applications/desktop_entry.h"
#include "platform/linux/applications/key_file.h"
#include "text/utf8.h"

using tavik::platform::applications::KeyFile;
using tavik::platform::applications::parseDesktopEntry;

/// A comment in front changes nothing, a group behind is found, and every text is valid UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto entry = parseDesktopEntry("id", text);
  const auto again = parseDesktopEntry("id", "# comment\n" + text);
  if (entry.has_value() != again.has_value()) std::abort();
  if (entry) {
    if (entry->name != again->name || entry->program != again->program) std::abort();
    for (const auto& part : {entry->name, entry->startupClass, entry->program}) {
      if (!tavik::text::isValidUTF8(part)) std::abort();
    }
  }
  const std::string last(size + 1, 'L');  // no group of the text's
  const auto longer = text + "\n[" + last + "]\nkey[de]= \\tvalue\\s\n";
  const auto file = KeyFile::parse(longer);
  if (file.has_value() != KeyFile::parse(text).has_value()) std::abort();
  if (file && file->localeString(last, "key", {"fr", "de"}) != "\tvalue ") std::abort();
  return 0;
}
