#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace tavik {

/// Appends the base64 text of `bytes` (RFC 4648, section 4: standard alphabet, padded, no line breaks).
void appendBase64(std::span<const std::byte> bytes, std::string& text);

}  // namespace tavik
