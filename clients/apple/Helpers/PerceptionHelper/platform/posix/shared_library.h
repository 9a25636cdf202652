#pragma once

#include <dlfcn.h>
#include <optional>

/// Members for the functions of a shared library that the program calls, and findAll to set them. `FUNCTIONS(DO)` says
/// DO(name) for each. The members have the names of the functions.
#define TAVIK_LIBRARY_FUNCTIONS(FUNCTIONS) \
  FUNCTIONS(TAVIK_LIBRARY_MEMBER)          \
  bool findAll(const tavik::platform::posix::SharedLibrary& library) { return FUNCTIONS(TAVIK_LIBRARY_FIND) true; }
// NOLINTNEXTLINE(bugprone-macro-parentheses): the name is declared
#define TAVIK_LIBRARY_MEMBER(name) decltype(::name)* name = nullptr;
#define TAVIK_LIBRARY_FIND(name) library.find(#name, name)&&

namespace tavik::platform::posix {

/// A shared library that is loaded at run time, and stays until the process ends.
class SharedLibrary {
 public:
  explicit SharedLibrary(const char* soname) : handle_(::dlopen(soname, RTLD_NOW | RTLD_LOCAL)) {}

  /// False when the library is not installed, or has no function with this name.
  template <class Function>
  bool find(const char* name, Function*& function) const {
    function = handle_ ? reinterpret_cast<Function*>(::dlsym(handle_, name)) : nullptr;
    return function != nullptr;
  }

 private:
  void* handle_;
};

/// The functions of the library Functions::kSoname, which is loaded when they are first asked for: that takes up to two
/// milliseconds, and a run that needs none of them is spared it. Null where the library is not installed.
template <class Functions>
const Functions* loaded() {
  static const auto kFunctions = [] {
    Functions functions;
    return functions.findAll(SharedLibrary(Functions::kSoname)) ? std::optional(functions) : std::nullopt;
  }();
  return kFunctions ? &*kFunctions : nullptr;
}

}  // namespace tavik::platform::posix
