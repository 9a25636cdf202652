#include "platform/imaging/pixel_rect.h"

#include <algorithm>

namespace tavik::platform::imaging {
namespace {

/// The rectangle from edge to edge.
PixelRect between(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
  return {.x = left, .y = top, .width = std::max(0, right - left), .height = std::max(0, bottom - top)};
}

}  // namespace

PixelRect intersection(const PixelRect& left, const PixelRect& right) {
  const auto common = between(std::max(left.x, right.x), std::max(left.y, right.y),
                              std::min(left.x + left.width, right.x + right.width),
                              std::min(left.y + left.height, right.y + right.height));
  return isEmpty(common) ? PixelRect{} : common;
}

std::vector<PixelRect> intersection(const std::vector<PixelRect>& left, const std::vector<PixelRect>& right) {
  std::vector<PixelRect> common;
  for (const auto& one : left) {
    for (const auto& other : right) {
      if (const auto both = intersection(one, other); !isEmpty(both)) common.push_back(both);
    }
  }
  return common;
}

std::vector<PixelRect> subtract(const std::vector<PixelRect>& area, const PixelRect& hole) {
  std::vector<PixelRect> rest;
  for (const auto& rect : area) {
    const auto cut = intersection(rect, hole);
    if (isEmpty(cut)) {
      rest.push_back(rect);
      continue;
    }
    const auto right = rect.x + rect.width;
    const auto bottom = rect.y + rect.height;
    const auto cutRight = cut.x + cut.width;
    const auto cutBottom = cut.y + cut.height;
    for (const auto& part : {between(rect.x, rect.y, right, cut.y), between(rect.x, cutBottom, right, bottom),
                             between(rect.x, cut.y, cut.x, cutBottom), between(cutRight, cut.y, right, cutBottom)}) {
      if (!isEmpty(part)) rest.push_back(part);
    }
  }
  return rest;
}

}  // namespace tavik::platform::imaging
