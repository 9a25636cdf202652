#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What applications are made with, which decides how they come to have an accessibility tree.
namespace tavik::doctor {

/// The toolkit by what an application says on the accessibility bus: "GTK 3" of "gtk" and "3.24.38". What is not known
/// stays as it is said.
std::string toolkitNamed(std::string_view name, std::string_view version);

/// The toolkit by the libraries that a process has loaded, where `maps` is the text of /proc/PID/maps (proc(5)).
std::optional<std::string> toolkitOfLibraries(std::string_view maps);

/// The same of a running process, also by what lies beside its program. Nothing where it cannot be told.
std::optional<std::string> toolkitOfProcess(std::int32_t processID);

/// A tree with so few elements says nothing but that there is a window.
inline constexpr std::int64_t kNearlyEmpty = 2;

/// What gives applications of a toolkit a tree, where theirs is nearly empty. Nothing where that is all that there is.
std::optional<std::string> treeRemedy(std::string_view toolkit);

}  // namespace tavik::doctor
