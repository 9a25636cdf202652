#pragma once

#include <cstdlib>
#include <memory>

namespace tavik::platform::x11 {

/// Releases memory that came from malloc.
struct MallocDeleter {
  void operator()(void* memory) const { std::free(memory); }
};

/// Owns such memory. Everything that xcb returns is.
template <class Value>
using MallocPtr = std::unique_ptr<Value, MallocDeleter>;

}  // namespace tavik::platform::x11
