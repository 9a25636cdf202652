#pragma once

#include <string_view>

namespace tavik {

/// Labelled, since both arguments are strings.
struct GlobMatch {
  std::string_view pattern = {};
  std::string_view candidate = {};
};

/// True when the pattern covers the whole candidate. `*` stands for any run of code points, none included, `?` for
/// exactly one; every other character (grapheme cluster, so a star that carries a combining mark is no star) stands for
/// itself, code point by code point. Allocates nothing; takes at most time in proportion to the product of the lengths.
bool fnmatchSimple(const GlobMatch& match);

}  // namespace tavik
