#include "platform/linux/linux_host.h"

#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

#include "platform/posix/utf8_file.h"

namespace tavik::platform {
namespace {

namespace fs = std::filesystem;

struct LinuxHost final : Host {
  std::optional<std::string> environmentVariable(std::string_view name) const override {
    const char* const value = std::getenv(std::string(name).c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  }

  std::string userName() const override {
    const passwd* const user = ::getpwuid(::getuid());
    return user != nullptr ? user->pw_name : environmentVariable("LOGNAME").value_or("");
  }

  bool fileExists(const std::string& path) const override {
    std::error_code error;
    return fs::exists(path, error);
  }

  std::optional<std::string> readUTF8File(const std::string& path) const override { return posix::readUTF8File(path); }

  std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const override {
    std::error_code error;
    const auto folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    if (error) return std::nullopt;
    const auto file = std::string(name) + "." + std::string(type);
    for (const auto& path : {folder / file, folder.parent_path() / "share" / "tavik-perception-helper" / file}) {
      if (fs::exists(path, error)) return path.string();
    }
    return std::nullopt;
  }

  std::chrono::system_clock::time_point currentDate() const override { return std::chrono::system_clock::now(); }
};

}  // namespace

std::unique_ptr<Host> makeLinuxHost() { return std::make_unique<LinuxHost>(); }

}  // namespace tavik::platform
