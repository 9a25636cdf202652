#include "platform/posix/utf8_file.h"

#include <limits>
#include <string_view>

#include "platform/posix/regular_file.h"
#include "text/utf8.h"

namespace tavik::platform::posix {

std::optional<std::string> readUTF8File(const std::string& path) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  auto text = readRegularFile(path, std::numeric_limits<std::size_t>::max());
  if (!text || !text::isValidUTF8(*text)) return std::nullopt;
  if (text->starts_with(kByteOrderMark)) text->erase(0, kByteOrderMark.size());
  return text;
}

}  // namespace tavik::platform::posix
