#pragma once

#include <optional>

#include "protocol/request.h"

namespace tavik {

/// A request with its defaults filled in.
struct EffectiveRequest {
  Request request = {};  ///< as sent
  Level level = Level::auto_;
  bool includeImage = true;
  bool includeAXTree = true;
  Target target = Target::app;
};

/// Fills in the defaults. A request without a target means Target::app when it names an application (the empty string
/// names none); nothing when it names none either.
std::optional<EffectiveRequest> effectiveRequest(Request request);

}  // namespace tavik
