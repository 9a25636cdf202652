#include "capture/base64.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace tavik {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Up to three bytes as the top 24 bits' worth of one number, the missing ones 0.
std::uint32_t packed(std::span<const std::byte> group) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    bits = bits << 8U | (i < group.size() ? std::to_integer<std::uint32_t>(group[i]) : 0U);
  }
  return bits;
}

}  // namespace

void appendBase64(std::span<const std::byte> bytes, std::string& text) {
  auto out = text.size();
  text.resize(text.size() + (bytes.size() + 2) / 3 * 4, '=');
  while (!bytes.empty()) {
    const auto group = bytes.first(std::min<std::size_t>(3, bytes.size()));
    const auto bits = packed(group);
    for (std::size_t digit = 0; digit <= group.size(); ++digit) {
      text[out + digit] = kAlphabet[bits >> (18 - 6 * digit) & 63U];
    }
    out += 4;
    bytes = bytes.subspan(group.size());
  }
}

}  // namespace tavik
