#include "platform/linux/x11/server/x_property.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "text/utf8.h"

namespace tavik::platform::x11 {
namespace {

std::string fromLatin1(std::string_view latin1) {
  std::string utf8;
  for (const char character : latin1) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      utf8.push_back(character);
    } else {
      utf8.push_back(static_cast<char>(0xC0 | (byte >> 6)));
      utf8.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
  }
  return utf8;
}

/// Removes the last character, which the limit may have cut in two.
std::string_view withoutLastCharacter(std::string_view utf8) {
  while (!utf8.empty() && text::isContinuationByte(utf8.back())) utf8.remove_suffix(1);
  if (!utf8.empty()) utf8.remove_suffix(1);
  return utf8;
}

/// Cuts the text before the first NUL off `rest`, which is what is left of the bytes of `value`, and the NUL with it.
std::string takeText(const PropertyValue& value, std::string_view& rest) {
  if (value.format != 8) return {};
  auto taken = rest.substr(0, rest.find('\0'));
  rest.remove_prefix(std::min(rest.size(), taken.size() + 1));
  if (value.isTruncated && rest.empty()) taken = withoutLastCharacter(taken);
  if (value.type == XCB_ATOM_STRING && !text::isValidUTF8(taken)) return fromLatin1(taken);
  return text::toValidUTF8(taken);
}

}  // namespace

xcb_get_property_cookie_t requestProperty(XConnection& connection, xcb_window_t window, xcb_atom_t name,
                                          std::uint32_t maximumBytes) {
  constexpr std::uint8_t kKeepIt = 0;
  constexpr std::uint32_t kFirstWord = 0;
  const auto wordCount = static_cast<std::uint32_t>(maximumBytes / kWordBytes);
  return xcb_get_property(connection.xcb(), kKeepIt, window, name, XCB_GET_PROPERTY_TYPE_ANY, kFirstWord, wordCount);
}

PropertyValue property(XConnection& connection, xcb_get_property_cookie_t cookie) {
  const auto reply = connection.reply(xcb_get_property_reply, cookie);
  if (!reply) return {};
  const std::uint64_t size = std::uint64_t{reply->value_len} * (reply->format / 8U);
  if (size > std::uint64_t{reply->length} * kWordBytes) return {};
  return {.type = reply->type,
          .format = reply->format,
          .isTruncated = reply->bytes_after > 0,
          .bytes = std::string(static_cast<const char*>(xcb_get_property_value(reply.get())), size)};
}

std::vector<std::uint32_t> words(const PropertyValue& value, xcb_atom_t type) {
  if (value.type != type || value.format != 32) return {};
  std::vector<std::uint32_t> words(value.bytes.size() / sizeof(std::uint32_t));
  if (!words.empty()) std::memcpy(words.data(), value.bytes.data(), words.size() * sizeof(std::uint32_t));
  return words;
}

std::optional<std::uint32_t> firstWord(const PropertyValue& value, xcb_atom_t type) {
  const auto all = words(value, type);
  return all.empty() ? std::nullopt : std::optional(all.front());
}

std::string textOf(const PropertyValue& value) {
  std::string_view rest = value.bytes;
  return takeText(value, rest);
}

WMClass wmClass(const PropertyValue& value) {
  std::string_view rest = value.bytes;
  auto instance = takeText(value, rest);
  return {.instance = std::move(instance), .className = takeText(value, rest)};
}

}  // namespace tavik::platform::x11
