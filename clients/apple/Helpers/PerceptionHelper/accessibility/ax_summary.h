#pragma once

#include <cstdint>
#include <optional>

#include "protocol/response_dictionary.h"

namespace tavik {

/// The outcome of an accessibility capture. The default-constructed one is that of a capture that did not walk.
struct AXSummary {
  std::int64_t nodeCount = 0;                   ///< elements visited, the root included
  std::int64_t textChars = 0;                   ///< grapheme clusters of all titles, values and descriptions reported
  std::optional<ResponseDictionary> tree = {};  ///< the root's node; present whenever a walk ran
  bool redactionApplied = false;                ///< at least one value was withheld, which does not count as text
};

}  // namespace tavik
