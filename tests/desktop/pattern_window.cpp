// A native Wayland window of no toolkit's, in which every pixel is known: pattern_window SCALE FORMAT draws it for
// monitors of that scale, in buffers of that wl_shm format, in whatever size the compositor gives it. Writes a line
// once it is there.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <span>
#include <string_view>
#include <sys/mman.h>
#include <type_traits>
#include <unistd.h>
#include <wayland-client.h>

#include "viewporter.h"
#include "xdg-shell.h"

namespace {

struct Format {
  std::string_view name;
  std::uint32_t code;
  int red, blue;  // where these channels begin, in bits; green is between them
};

constexpr std::array kFormats{Format{"XRGB8888", WL_SHM_FORMAT_XRGB8888, 16, 0},
                              Format{"ARGB8888", WL_SHM_FORMAT_ARGB8888, 16, 0},
                              Format{"XBGR8888", WL_SHM_FORMAT_XBGR8888, 0, 16}};

struct Window {
  double scale = 0;
  const Format* format = nullptr;
  std::int32_t width = 200, height = 100;  // in the compositor's units; its own choice comes first
  wl_compositor* compositor = nullptr;
  wl_shm* shm = nullptr;
  xdg_wm_base* shell = nullptr;
  wp_viewporter* viewporter = nullptr;
  wl_surface* surface = nullptr;
  wp_viewport* viewport = nullptr;
};

Window& windowOf(void* data) { return *static_cast<Window*>(data); }

/// wayland_test.py knows the same. No pixel is like one near it, and hardly one has two channels alike.
std::uint32_t pixelAt(std::int64_t x, std::int64_t y, const Format& format) {
  const auto colour = static_cast<std::uint32_t>(x * 0x9E3779 + y * 0x3C6EF5 + 0x1F83D9);
  const std::uint32_t red = colour >> 16 & 0xFF, green = colour >> 8 & 0xFF, blue = colour & 0xFF;
  return 0xFF000000 | red << format.red | green << 8 | blue << format.blue;
}

constexpr wl_buffer_listener kBufferListener{.release = [](void*, wl_buffer* buffer) { wl_buffer_destroy(buffer); }};

wl_buffer* draw(const Window& window, std::int32_t columns, std::int32_t rows) {
  const std::int32_t stride = columns * 4, size = stride * rows;
  const int file = ::memfd_create("pattern", MFD_CLOEXEC);
  if (file < 0 || ::ftruncate(file, size) != 0) std::abort();
  void* const memory = ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (memory == MAP_FAILED) std::abort();
  auto* pixel = static_cast<std::uint32_t*>(memory);
  for (std::int32_t y = 0; y < rows; ++y) {
    for (std::int32_t x = 0; x < columns; ++x) *pixel++ = pixelAt(x, y, *window.format);
  }
  ::munmap(memory, static_cast<std::size_t>(size));
  auto* const pool = wl_shm_create_pool(window.shm, file, size);
  auto* const buffer = wl_shm_pool_create_buffer(pool, 0, columns, rows, stride, window.format->code);
  wl_buffer_add_listener(buffer, &kBufferListener, nullptr);
  wl_shm_pool_destroy(pool);
  ::close(file);
  return buffer;
}

constexpr xdg_toplevel_listener kToplevelListener{
    .configure =
        [](void* data, xdg_toplevel*, std::int32_t width, std::int32_t height, wl_array*) {
          if (width <= 0 || height <= 0) return;
          windowOf(data).width = width;
          windowOf(data).height = height;
        },
    .close = [](void*, xdg_toplevel*) { std::exit(0); },
    .configure_bounds = nullptr,
    .wm_capabilities = nullptr};

/// A buffer has the monitor's pixels. Between whole scales only a viewport can say so.
constexpr xdg_surface_listener kSurfaceListener{.configure = [](void* data, xdg_surface* role, std::uint32_t serial) {
  const auto& window = windowOf(data);
  const auto inPixels = [&window](std::int32_t side) {
    return static_cast<std::int32_t>(std::lround(side * window.scale));
  };
  xdg_surface_ack_configure(role, serial);
  wl_surface_attach(window.surface, draw(window, inPixels(window.width), inPixels(window.height)), 0, 0);
  if (inPixels(1) == window.scale) {
    wl_surface_set_buffer_scale(window.surface, inPixels(1));
  } else {
    wp_viewport_set_destination(window.viewport, window.width, window.height);
  }
  wl_surface_damage_buffer(window.surface, 0, 0, INT32_MAX, INT32_MAX);
  wl_surface_commit(window.surface);
}};

constexpr xdg_wm_base_listener kShellListener{
    .ping = [](void*, xdg_wm_base* shell, std::uint32_t serial) { xdg_wm_base_pong(shell, serial); }};

constexpr wl_registry_listener kRegistryListener{
    .global =
        [](void* data, wl_registry* registry, std::uint32_t name, const char* interface, std::uint32_t) {
          const auto bind = [&](auto*& global, const wl_interface& wanted, std::uint32_t version) {
            if (std::string_view(interface) != wanted.name) return;
            global = static_cast<std::remove_reference_t<decltype(global)>>(
                wl_registry_bind(registry, name, &wanted, version));
          };
          auto& window = windowOf(data);
          bind(window.compositor, wl_compositor_interface, 4);
          bind(window.shm, wl_shm_interface, 1);
          bind(window.shell, xdg_wm_base_interface, 1);
          bind(window.viewporter, wp_viewporter_interface, 1);
        },
    .global_remove = [](void*, wl_registry*, std::uint32_t) {}};

}  // namespace

int main(int count, char** values) {
  const std::span arguments(values, static_cast<std::size_t>(count));
  if (arguments.size() != 3) return 2;
  const auto* const format = std::ranges::find(kFormats, arguments[2], &Format::name);
  auto* const display = wl_display_connect(nullptr);
  if (format == kFormats.end() || display == nullptr) return 2;
  Window window{.scale = std::atof(arguments[1]), .format = format};
  wl_registry_add_listener(wl_display_get_registry(display), &kRegistryListener, &window);
  wl_display_roundtrip(display);
  if (!window.compositor || !window.shm || !window.shell || !window.viewporter) return 2;
  xdg_wm_base_add_listener(window.shell, &kShellListener, nullptr);
  window.surface = wl_compositor_create_surface(window.compositor);
  window.viewport = wp_viewporter_get_viewport(window.viewporter, window.surface);
  auto* const role = xdg_wm_base_get_xdg_surface(window.shell, window.surface);
  xdg_surface_add_listener(role, &kSurfaceListener, &window);
  auto* const toplevel = xdg_surface_get_toplevel(role);
  xdg_toplevel_add_listener(toplevel, &kToplevelListener, &window);
  xdg_toplevel_set_app_id(toplevel, "org.example.Pattern");
  xdg_toplevel_set_title(toplevel, "pattern");
  wl_surface_commit(window.surface);
  wl_display_roundtrip(display);  // brings the size, for which it draws
  wl_display_roundtrip(display);
  std::cout << "shown" << std::endl;
  while (wl_display_dispatch(display) >= 0) {
  }
  return 1;
}
