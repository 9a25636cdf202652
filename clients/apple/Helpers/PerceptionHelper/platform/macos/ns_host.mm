#include "platform/macos/ns_host.h"

#include "platform/macos/ns_string.h"
#include "platform/posix/utf8_file.h"

namespace tavik::platform::macos {
namespace {

struct FoundationHost final : Host {
  std::optional<std::string> environmentVariable(std::string_view name) const override {
    return utf8Of([[[NSProcessInfo processInfo] environment] objectForKey:makeNSString(name).get()]);
  }

  std::string userName() const override { return utf8Of(NSUserName()).value_or(""); }

  bool fileExists(const std::string& path) const override {
    const auto string = makeNSString(path);
    return string.get() != nil && [[NSFileManager defaultManager] fileExistsAtPath:string.get()];
  }

  std::optional<std::string> readUTF8File(const std::string& path) const override { return posix::readUTF8File(path); }

  std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const override {
    return utf8Of([[NSBundle mainBundle] pathForResource:makeNSString(name).get() ofType:makeNSString(type).get()]);
  }

  std::chrono::system_clock::time_point currentDate() const override { return std::chrono::system_clock::now(); }
};

}  // namespace

std::unique_ptr<Host> makeHost() { return std::make_unique<FoundationHost>(); }

}  // namespace tavik::platform::macos
