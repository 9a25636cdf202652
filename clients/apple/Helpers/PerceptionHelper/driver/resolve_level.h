#pragma once

#include "accessibility/ax_summary.h"
#include "protocol/request.h"

namespace tavik {

/// The level used: the one requested, but `auto` becomes `glance` where the tree says much (more than 50 characters in
/// more than 5 nodes) and `read` where the picture has to. Never `auto`.
Level resolveLevel(Level requested, const AXSummary& ax);

}  // namespace tavik
