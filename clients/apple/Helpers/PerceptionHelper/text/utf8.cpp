#include "text/utf8.h"

#include <cstdint>
#include <cstring>

#include "text/code_points.h"

namespace tavik::text {
namespace {

/// How many bytes at the start are ASCII; looks at eight at a time as long as it can.
std::size_t asciiRun(std::string_view bytes) {
  std::size_t run = 0;
  for (std::uint64_t word = 0; run + sizeof word <= bytes.size(); run += sizeof word) {
    std::memcpy(&word, bytes.data() + run, sizeof word);
    if ((word & 0x8080808080808080U) != 0) break;
  }
  while (run < bytes.size() && static_cast<unsigned char>(bytes[run]) < 0x80) ++run;
  return run;
}

/// How many bytes at the start are well-formed.
std::size_t validRun(std::string_view bytes) {
  std::size_t run = 0;
  while (run < bytes.size()) {
    run += asciiRun(bytes.substr(run));
    const auto [value, length] = firstCodePoint(bytes.substr(run));
    if (length > 0 && value < 0) break;
    run += length;
  }
  return run;
}

}  // namespace

bool isValidUTF8(std::string_view bytes) { return validRun(bytes) == bytes.size(); }

std::string toValidUTF8(std::string_view bytes) {
  constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";
  std::string valid;
  valid.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto run = validRun(bytes);
    valid.append(bytes.substr(0, run));
    bytes.remove_prefix(run);
    if (bytes.empty()) break;
    valid.append(kReplacementCharacter);
    bytes.remove_prefix(1);
  }
  return valid;
}

}  // namespace tavik::text
