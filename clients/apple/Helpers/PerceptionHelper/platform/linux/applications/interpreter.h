#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Programs that run others' programs: Python, Java, shells and the like.
namespace tavik::platform::applications {

/// True for the base name of one, with its version or without: "python3.11".
bool isInterpreter(std::string_view program);

/// What an interpreter is told to run, by its command line: an interpreter's base name and its arguments. The base name
/// of a script, the name of a jar, or the last part of a module's or main class's name. Empty where the command line
/// holds the code itself, and for other programs.
std::string scriptOf(const std::vector<std::string>& commandLine);

}  // namespace tavik::platform::applications
