#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "policy/fnmatch_simple.h"

namespace {

/// Whether each beginning of `candidate` is covered by the pattern, taken one pattern character after another.
bool coversByDefinition(const std::string& pattern, const std::string& candidate) {
  std::vector<bool> covered(candidate.size() + 1, false);
  covered[0] = true;
  for (const char c : pattern) {
    std::vector<bool> next(covered.size(), false);
    for (std::size_t end = 0; end < covered.size(); ++end) {
      if (c == '*')
        next[end] = covered[end] || (end > 0 && next[end - 1]);
      else
        next[end] = end > 0 && covered[end - 1] && (c == '?' || c == candidate[end - 1]);
    }
    covered = next;
  }
  return covered.back();
}

}  // namespace

/// On ASCII, where characters are bytes, the matcher agrees with its definition; on any bytes, what holds no wildcard
/// covers itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 512));
  const auto cut = text.find('\n');
  const auto pattern = text.substr(0, cut), candidate = cut == std::string::npos ? text : text.substr(cut + 1);
  const bool matches = tavik::fnmatchSimple({.pattern = pattern, .candidate = candidate});
  const bool isASCII = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (isASCII && matches != coversByDefinition(pattern, candidate)) std::abort();
  if (candidate.find_first_of("*?") == std::string::npos &&
      !tavik::fnmatchSimple({.pattern = candidate, .candidate = candidate})) {
    std::abort();
  }
  return 0;
}
