#pragma once

#include <cstdint>

#include "protocol/request.h"

namespace tavik {

/// What the accessibility tree held; 0 and 0 when there was none.
struct AXCounts {
  std::int64_t nodes = 0;
  std::int64_t textChars = 0;
};

/// The level used: the one requested, but `auto` becomes `glance` where the tree says much (more than 50 characters in
/// more than 5 nodes) and `read` where the picture has to. Never `auto`.
Level resolveLevel(Level requested, AXCounts counts);

}  // namespace tavik
