#pragma once

#include <optional>
#include <string>

#include "accessibility/ax_summary.h"
#include "protocol/request.h"
#include "protocol/response_dictionary.h"

namespace tavik {

/// What the pass has found out.
struct Findings {
  Level levelUsed = Level::read;
  bool isTrusted = true;  ///< to read the accessibility tree; also when nobody asked
  AXSummary ax = {};
  std::optional<std::string> sensitiveBundleId = {};  ///< of the sensitive application, when there is a match
  std::optional<std::string> image = {};              ///< a data URL
};

/// The data object of a success response.
ResponseDictionary dataObject(Findings findings, ResponseDictionary context);

}  // namespace tavik
