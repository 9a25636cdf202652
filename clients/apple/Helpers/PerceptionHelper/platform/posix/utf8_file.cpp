#include "platform/posix/utf8_file.h"

#include <chrono>
#include <string_view>

#include "platform/posix/regular_file.h"
#include "text/utf8.h"

namespace tavik::platform::posix {

std::optional<std::string> readUTF8File(const std::string& path) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  constexpr ReadLimits kLimits{.bytes = std::size_t{16} << 20U, .patience = std::chrono::seconds(1)};
  auto text = readFileOrPipe(path, kLimits);
  if (!text || !text::isValidUTF8(*text)) return std::nullopt;
  if (text->starts_with(kByteOrderMark)) text->erase(0, kByteOrderMark.size());
  return text;
}

}  // namespace tavik::platform::posix
