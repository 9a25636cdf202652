#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "protocol/decode_request.h"
#include "text/grapheme_clusters.h"
#include "text/utf8.h"

/// Blanks in front change nothing, and what went wrong is told in one short, readable line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  const auto decoded = tavik::decodeRequest(json);
  const auto again = tavik::decodeRequest("\n " + std::string(json));
  if (decoded.index() != again.index()) std::abort();
  if (const auto* const request = std::get_if<tavik::Request>(&decoded)) {
    if (*request != std::get<tavik::Request>(again)) std::abort();
  } else {
    const auto& line = std::get<tavik::DecodeError>(decoded).description;
    if (line.empty() || !tavik::text::isValidUTF8(line) || tavik::text::characterCount(line) > 250) std::abort();
    for (const char c : line) {
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) std::abort();
    }
  }
  return 0;
}
