#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavik::platform::applications {

/// A file of groups of keys with values: the format of desktop entries and of what is like them (freedesktop.org,
/// "Basic format of the file"). Of a key that is given twice, the last counts. Refers to the text that it was made
/// from, which outlives it.
class KeyFile {
 public:
  /// Nothing when a line is neither a comment, a group's name nor a key with its value.
  static std::optional<KeyFile> parse(std::string_view text);

  /// The value of a string, without escapes. Nothing when the key is missing, or its value is not valid UTF-8 or has an
  /// escape that there is not.
  std::optional<std::string> string(std::string_view group, std::string_view key) const;
  /// The same in the first of some languages that the file has the key in, else without a language.
  std::optional<std::string> localeString(std::string_view group, std::string_view key,
                                          const std::vector<std::string>& languages) const;
  /// False when the key is missing or no boolean.
  bool boolean(std::string_view group, std::string_view key) const;

 private:
  struct Line {
    std::string_view group = {};
    std::string_view key = {};
    std::string_view value = {};
  };

  const Line* find(std::string_view group, std::string_view key) const;

  std::vector<Line> lines_ = {};
};

/// The user's languages for messages, the preferred one first, each with its variants from the closest to the plain one
/// as keys of a desktop entry name them: "de_AT", "de". Taken from LANGUAGE (GNU gettext), LC_ALL, LC_MESSAGES and
/// LANG.
std::vector<std::string> userLanguages();

}  // namespace tavik::platform::applications
