#include "platform/linux/applications/interpreter.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tavik::platform::applications {
namespace {

/// An interpreter, and its options that do not stand alone, with a space around each. Those that it lists in its help
/// and that its scripts need; an option that is missing here makes a wrong name at worst.
struct Interpreter {
  std::string_view name = {};
  std::string_view code = {};       ///< the program itself follows
  std::string_view withValue = {};  ///< a value follows that is no script
  std::string_view module = {};     ///< the name of a module or class follows
};

constexpr std::array kInterpreters{
    Interpreter{.name = "python", .code = " -c ", .withValue = " -W -X ", .module = " -m "},
    Interpreter{.name = "java",
                .withValue = " -cp -classpath --class-path -p --module-path --upgrade-module-path --add-modules "
                             "--limit-modules --add-opens --add-exports --add-reads --patch-module ",
                .module = " -m --module "},
    Interpreter{.name = "perl", .code = " -e -E ", .withValue = " -I "},
    Interpreter{.name = "ruby", .code = " -e ", .withValue = " -I -r "},
    Interpreter{.name = "wish", .withValue = " -encoding "},
    Interpreter{.name = "tclsh", .withValue = " -encoding "},
    Interpreter{.name = "gjs", .code = " -c --command ", .withValue = " -I --include-path "},
    Interpreter{.name = "gjs-console", .code = " -c --command ", .withValue = " -I --include-path "},
    Interpreter{.name = "node", .code = " -e --eval -p --print ", .withValue = " -r --require "},
    Interpreter{.name = "mono"},
    Interpreter{.name = "mono-sgen"},
    Interpreter{.name = "sh", .code = " -c ", .withValue = " -o "},
    Interpreter{.name = "bash", .code = " -c ", .withValue = " -o -O --rcfile "},
    Interpreter{.name = "dash", .code = " -c ", .withValue = " -o "},
};

const Interpreter* find(std::string_view program) {
  const auto name = program.substr(0, program.find_last_not_of("0123456789.") + 1);
  const auto* const found = std::ranges::find(kInterpreters, name, &Interpreter::name);
  return found != kInterpreters.end() ? found : nullptr;
}

bool contains(std::string_view options, std::string_view option) {
  return option.find(' ') == std::string_view::npos &&
         options.find(std::string(1, ' ').append(option).append(1, ' ')) != std::string_view::npos;
}

std::string_view afterLast(char separator, std::string_view text) { return text.substr(text.rfind(separator) + 1); }

/// Longer ones are no file's names.
std::string nameOf(std::string_view name) {
  constexpr std::size_t kLongestName = 255;
  return name.size() <= kLongestName ? std::string(name) : "";
}

/// By a script's path, a jar's, or the name of a main class.
std::string nameOfScript(const Interpreter& interpreter, std::string_view argument) {
  constexpr std::string_view kJar = ".jar";
  const auto file = afterLast('/', argument);
  if (interpreter.name != "java") return nameOf(file);
  return nameOf(file.ends_with(kJar) ? file.substr(0, file.size() - kJar.size()) : afterLast('.', file));
}

}  // namespace

bool isInterpreter(std::string_view program) { return find(program) != nullptr; }

std::string scriptOf(const std::vector<std::string>& commandLine) {
  const auto* const interpreter = commandLine.empty() ? nullptr : find(commandLine.front());
  if (interpreter == nullptr) return {};
  for (std::size_t i = 1; i < commandLine.size(); ++i) {
    const std::string_view argument = commandLine[i];
    if (!argument.starts_with('-')) return nameOfScript(*interpreter, argument);
    if (argument == "-" || contains(interpreter->code, argument)) return {};
    const bool isModule = contains(interpreter->module, argument);
    if (isModule && i + 1 < commandLine.size()) return nameOf(afterLast('.', commandLine[i + 1]));
    if (contains(interpreter->withValue, argument)) ++i;
  }
  return {};
}

}  // namespace tavik::platform::applications
