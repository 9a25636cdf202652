#include "platform/linux/applications/key_file.h"

#include "platform/linux/applications/glib_library.h"

namespace tavik::platform::applications {
namespace {

struct StringDeleter {
  void operator()(char* text) const { glib()->g_free(text); }
};
using GString = std::unique_ptr<char, StringDeleter>;

struct StringListDeleter {
  void operator()(char** list) const { glib()->g_strfreev(list); }
};

std::optional<std::string> toOptional(const GString& text) {
  return text ? std::optional<std::string>(text.get()) : std::nullopt;
}

}  // namespace

void KeyFileDeleter::operator()(GKeyFile* file) const { glib()->g_key_file_unref(file); }

KeyFile parseKeyFile(const std::string& text) {
  if (!glib()) return nullptr;
  KeyFile file(glib()->g_key_file_new());
  const bool isKeyFile =
      glib()->g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) != 0;
  return isKeyFile ? std::move(file) : nullptr;
}

std::optional<std::string> localeString(const KeyFile& file, const char* group, const char* key) {
  return toOptional(GString(glib()->g_key_file_get_locale_string(file.get(), group, key, nullptr, nullptr)));
}

std::optional<std::string> plainString(const KeyFile& file, const char* group, const char* key) {
  return toOptional(GString(glib()->g_key_file_get_string(file.get(), group, key, nullptr)));
}

bool boolean(const KeyFile& file, const char* group, const char* key) {
  return glib()->g_key_file_get_boolean(file.get(), group, key, nullptr) != 0;
}

std::string programOfCommandLine(const std::string& commandLine) {
  char** words = nullptr;
  if (!glib() || glib()->g_shell_parse_argv(commandLine.c_str(), nullptr, &words, nullptr) == 0) return {};
  const std::unique_ptr<char*, StringListDeleter> owned(words);
  const std::string program = words[0];
  return program.substr(program.rfind('/') + 1);
}

}  // namespace tavik::platform::applications
