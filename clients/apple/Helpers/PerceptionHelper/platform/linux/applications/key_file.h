#pragma once

#include <memory>
#include <optional>
#include <string>

#include <glib.h>

namespace tavik::platform::applications {

/// Owns a GKeyFile: the format of desktop entries and of what is like them.
struct KeyFileDeleter {
  void operator()(GKeyFile* file) const;
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileDeleter>;

/// Reads a key file; null when the text is none, or without GLib.
KeyFile parseKeyFile(const std::string& text);

/// A string in the user's language, which the environment names, where the file has it. Valid UTF-8.
std::optional<std::string> localeString(const KeyFile& file, const char* group, const char* key);

/// A string as it stands without a language. Valid UTF-8.
std::optional<std::string> plainString(const KeyFile& file, const char* group, const char* key);

/// False when the key is missing or no boolean.
bool boolean(const KeyFile& file, const char* group, const char* key);

/// The base name of the program that a command line of a desktop entry's Exec key starts; empty when it is malformed,
/// or without GLib.
std::string programOfCommandLine(const std::string& commandLine);

}  // namespace tavik::platform::applications
