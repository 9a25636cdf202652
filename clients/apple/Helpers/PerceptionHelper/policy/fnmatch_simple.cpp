#include "policy/fnmatch_simple.h"

#include <optional>

#include "text/code_points.h"
#include "text/grapheme_clusters.h"

namespace tavik {
namespace {

/// What is left to compare of both texts. Every part is compared as UTF-8, where equal bytes are equal code points.
struct Rest {
  std::string_view pattern;
  std::string_view candidate;
};

std::string_view withoutStars(std::string_view pattern) {
  while (text::firstCharacter(pattern) == "*") pattern.remove_prefix(1);
  return pattern;
}

/// How many bytes of the candidate the pattern's first character stands for; 0 when it does not fit.
std::size_t matchedLength(std::string_view character, std::string_view candidate) {
  if (character == "?") return text::firstCodePoint(candidate).length;
  return candidate.starts_with(character) ? character.size() : 0;
}

}  // namespace

bool fnmatchSimple(const GlobMatch& match) {
  Rest rest{.pattern = match.pattern, .candidate = match.candidate};
  // The state just after the last star. A mismatch lets that star cover one code point more; earlier stars need no
  // second try, since the shortest cover of each leaves the most for what follows.
  std::optional<Rest> afterStar;
  while (!rest.candidate.empty()) {
    const auto character = text::firstCharacter(rest.pattern);
    if (character == "*") {
      rest.pattern = withoutStars(rest.pattern);
      if (rest.pattern.empty()) return true;
      afterStar = rest;
      continue;
    }
    const auto length = character.empty() ? 0 : matchedLength(character, rest.candidate);
    if (length > 0) {
      rest.pattern.remove_prefix(character.size());
      rest.candidate.remove_prefix(length);
    } else if (afterStar) {
      afterStar->candidate.remove_prefix(text::firstCodePoint(afterStar->candidate).length);
      rest = *afterStar;
    } else {
      return false;
    }
  }
  return withoutStars(rest.pattern).empty();
}

}  // namespace tavik
