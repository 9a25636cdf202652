#include "platform/linux/wayland/outputs.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "text/utf8.h"

namespace tavik::platform::wayland {
namespace {

/// An output while its events come in.
struct Candidate {
  Output output = {};
  Owned<zxdg_output_v1> logical = {};
};

Output& outputOf(void* data) { return static_cast<Candidate*>(data)->output; }

constexpr wl_output_listener kOutputListener{
    .geometry = [](void* data, wl_output*, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                   const char*, const char*, std::int32_t transform) { outputOf(data).transform = transform; },
    .mode =
        [](void* data, wl_output*, std::uint32_t flags, std::int32_t width, std::int32_t height, std::int32_t) {
          if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) outputOf(data).size = {width, height};
        },
    .done = [](void*, wl_output*) {},
    .scale = [](void*, wl_output*, std::int32_t) {},
    .name = [](void* data, wl_output*, const char* name) { outputOf(data).name = text::toValidUTF8(name); },
    .description = [](void*, wl_output*, const char*) {}};

constexpr zxdg_output_v1_listener kLogicalListener{
    .logical_position =
        [](void* data, zxdg_output_v1*, std::int32_t x, std::int32_t y) {
          outputOf(data).logical.x = x;
          outputOf(data).logical.y = y;
        },
    .logical_size =
        [](void* data, zxdg_output_v1*, std::int32_t width, std::int32_t height) {
          outputOf(data).logical.width = width;
          outputOf(data).logical.height = height;
        },
    .done = [](void*, zxdg_output_v1*) {},
    .name = [](void* data, zxdg_output_v1*, const char* name) { outputOf(data).name = text::toValidUTF8(name); },
    .description = [](void*, zxdg_output_v1*, const char*) {}};

/// True of the four transforms that turn a picture by a quarter.
bool liesOnItsSide(Transform transform) { return (transform & WL_OUTPUT_TRANSFORM_90) != 0; }

void listen(WlConnection& connection, zxdg_output_manager_v1* manager, const WlConnection::Global& global,
            Candidate& candidate) {
  constexpr std::uint32_t kVersion = 4;
  auto* const proxy = connection.bind<wl_output>(global.name, wl_output_interface, std::min(kVersion, global.version));
  candidate.output.global = global.name;
  candidate.output.proxy.reset(proxy);
  wl_output_add_listener(proxy, &kOutputListener, &candidate);
  if (manager == nullptr) return;
  candidate.logical.reset(zxdg_output_manager_v1_get_xdg_output(manager, proxy));
  zxdg_output_v1_add_listener(candidate.logical.get(), &kLogicalListener, &candidate);
}

}  // namespace

imaging::Orientation orientationOf(Transform transform, bool isUpsideDown) {
  constexpr int kTurns = 4;
  const bool isMirrored = (transform & WL_OUTPUT_TRANSFORM_FLIPPED) != 0;
  const int turns = transform & WL_OUTPUT_TRANSFORM_270;
  // Mirroring comes first on the way back too, where it changes the direction of the turn.
  return {.isUpsideDown = isUpsideDown,
          .isMirrored = isMirrored,
          .quarterTurns = isMirrored ? (kTurns - turns) % kTurns : turns};
}

std::vector<Output> outputs(WlConnection& connection) {
  if (!connection.isReachable()) return {};
  constexpr std::uint32_t kManagerVersion = 3;
  const Owned<zxdg_output_manager_v1> manager(
      connection.bindFirst<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface, kManagerVersion));
  auto globals = connection.globals();
  std::erase_if(globals, [](const auto& global) { return global.interface != wl_output_interface.name; });
  std::vector<Candidate> candidates(globals.size());  // listeners point into it
  for (std::size_t i = 0; i < globals.size(); ++i) listen(connection, manager.get(), globals[i], candidates[i]);
  if (!connection.settle()) return {};
  std::vector<Output> found;
  for (auto& [output, logical] : candidates) {
    if (liesOnItsSide(output.transform)) std::swap(output.size.width, output.size.height);
    if (!logical) {
      output.logical = {.width = static_cast<double>(output.size.width),
                        .height = static_cast<double>(output.size.height)};
    }
    if (output.size.width > 0 && output.size.height > 0) found.push_back(std::move(output));
  }
  std::ranges::stable_sort(found, {},
                           [](const Output& output) { return output.logical.x != 0 || output.logical.y != 0; });
  return found;
}

double scaleOf(const Output& output) {
  constexpr double kSteps = 120;
  const double logical = std::max(output.logical.width, output.logical.height);
  const auto pixels = static_cast<double>(std::max(output.size.width, output.size.height));
  return logical > 0 ? std::max(std::round(pixels / logical * kSteps), 1.0) / kSteps : 1;
}

Rect onOutput(const Rect& logical, const Output& output) {
  const double scale = scaleOf(output);
  const double left = std::round((logical.x - output.logical.x) * scale);
  const double top = std::round((logical.y - output.logical.y) * scale);
  const double right = std::round((logical.x + logical.width - output.logical.x) * scale);
  const double bottom = std::round((logical.y + logical.height - output.logical.y) * scale);
  return {.x = left, .y = top, .width = right - left, .height = bottom - top};
}

}  // namespace tavik::platform::wayland
