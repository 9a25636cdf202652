#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tavik::platform {

/// The process's surroundings: environment, user, files, clock.
struct Host {
  virtual ~Host() = default;
  /// The value of an environment variable (NSProcessInfo.environment); nothing when it is unset.
  virtual std::optional<std::string> environmentVariable(std::string_view name) const = 0;
  /// The login name of the user who runs the process (NSUserName), whatever the home directory is called.
  virtual std::string userName() const = 0;
  /// True when anything, a directory too, is at this path (NSFileManager.fileExistsAtPath:). Follows symbolic links; a
  /// relative path starts at the working directory; a tilde is a character like any other.
  virtual bool fileExists(const std::string& path) const = 0;
  /// The whole of a text file, without a byte-order mark. Nothing when it cannot be read or is not valid UTF-8.
  virtual std::optional<std::string> readUTF8File(const std::string& path) const = 0;
  /// The path of a resource file that came with the program (NSBundle.mainBundle.pathForResource:ofType:), if there is
  /// one.
  virtual std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const = 0;
  virtual std::chrono::system_clock::time_point currentDate() const = 0;
};

}  // namespace tavik::platform
