#include "driver/resolve_level.h"

namespace tavik {

Level resolveLevel(Level requested, AXCounts counts) {
  if (requested != Level::auto_) return requested;
  return counts.textChars > 50 && counts.nodes > 5 ? Level::glance : Level::read;
}

}  // namespace tavik
