#include "driver/resolve_level.h"

namespace tavik {

Level resolveLevel(Level requested, const AXSummary& ax) {
  if (requested != Level::auto_) return requested;
  return ax.textChars > 50 && ax.nodeCount > 5 ? Level::glance : Level::read;
}

}  // namespace tavik
