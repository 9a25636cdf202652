#include "driver/effective_request.h"

#include <string>
#include <utility>

namespace tavik {
namespace {

bool namesSomething(const std::optional<std::string>& identifier) { return identifier && !identifier->empty(); }

std::optional<Target> decidedTarget(const Request& request) {
  if (request.target) return request.target;
  if (namesSomething(request.app_bundle_id) || namesSomething(request.app_name)) return Target::app;
  return std::nullopt;
}

}  // namespace

std::optional<EffectiveRequest> effectiveRequest(Request request) {
  const auto target = decidedTarget(request);
  if (!target) return std::nullopt;
  const auto level = request.level.value_or(Level::auto_);
  const bool includeImage = request.include_image.value_or(level != Level::ax_only);
  const bool includeAXTree = request.include_ax_tree.value_or(true);
  return EffectiveRequest{.request = std::move(request),
                          .level = level,
                          .includeImage = includeImage,
                          .includeAXTree = includeAXTree,
                          .target = *target};
}

}  // namespace tavik
