#include "platform/linux/applications/desktop_entry.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/applications/interpreter.h"
#include "platform/linux/applications/key_file.h"

namespace tavik::platform::applications {

namespace {

/// The words of the value of an Exec key, which may be quoted, and in which characters may be escaped
/// (Desktop Entry Specification, "The Exec key"; as launchers have it, in single quotes as well). None when a quote is
/// not closed.
std::vector<std::string> wordsOf(std::string_view commandLine) {
  std::vector<std::string> words;
  bool isInWord = false;
  char quote = '\0';
  for (std::size_t at = 0; at < commandLine.size(); ++at) {
    char character = commandLine[at];
    const bool isQuoted = quote != '\0';
    if (!isQuoted && character == ' ') {
      isInWord = false;
      continue;
    }
    if (!std::exchange(isInWord, true)) words.emplace_back();
    const bool isQuote = character == '"' || character == '\'';
    if (isQuoted ? character == quote : isQuote) {
      quote = isQuoted ? '\0' : character;
      continue;
    }
    if (character == '\\' && quote != '\'' && at + 1 < commandLine.size()) character = commandLine[++at];
    words.back() += character;
  }
  return quote == '\0' ? words : std::vector<std::string>();
}

/// What such a key starts.
struct Start {
  std::string program = {};
  bool hasOptions = false;
};

/// The program behind env(1) and the variables that that sets; of an interpreter, the script.
Start startOf(std::vector<std::string> words) {
  if (words.empty()) return {};
  const auto toBaseName = [&] { words.front().erase(0, words.front().rfind('/') + 1); };
  toBaseName();
  if (words.front() == "env") {
    const auto isVariable = [](const std::string& word) { return word.find('=') != std::string::npos; };
    words.erase(words.begin(), std::find_if_not(words.begin() + 1, words.end(), isVariable));
    if (words.empty()) return {};
    toBaseName();
  }
  if (isInterpreter(words.front())) return {.program = scriptOf(words)};
  const auto isFieldCode = [](const std::string& word) { return word.size() == 2 && word.front() == '%'; };
  return {.program = words.front(), .hasOptions = !std::all_of(words.begin() + 1, words.end(), isFieldCode)};
}

bool isInList(std::string_view item, const std::string& list) {
  const auto delimited = [](std::string_view text) { return std::string(1, ';').append(text).append(1, ';'); };
  return delimited(list).find(delimited(item)) != std::string::npos;
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string id, const std::string& text) {
  constexpr std::string_view kGroup = "Desktop Entry";
  const auto file = KeyFile::parse(text);
  const bool isApplication = file && file->string(kGroup, "Type") == "Application";
  if (!isApplication || file->boolean(kGroup, "Hidden")) return std::nullopt;
  auto [program, hasOptions] = startOf(wordsOf(file->string(kGroup, "Exec").value_or("")));
  return DesktopEntry{.id = std::move(id),
                      .name = file->localeString(kGroup, "Name", userLanguages()).value_or(""),
                      .startupClass = file->string(kGroup, "StartupWMClass").value_or(""),
                      .program = std::move(program),
                      .hasOptions = hasOptions,
                      .isForSettings = isInList("Settings", file->string(kGroup, "Categories").value_or("")),
                      .noDisplay = file->boolean(kGroup, "NoDisplay")};
}

}  // namespace tavik::platform::applications
