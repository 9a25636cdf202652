#include "platform/linux/linux_host.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace tavik::platform {
namespace {

TEST(LinuxHost, KnowsTheUserWhateverTheEnvironmentSays) {
  for (const auto* variable : {"LOGNAME", "USER"}) ::setenv(variable, "somebody-else", 1);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> id(::popen("id -un", "r"), &::pclose);
  std::string name(100, '\0');
  ASSERT_NE(std::fgets(name.data(), static_cast<int>(name.size()), id.get()), nullptr);
  EXPECT_EQ(makeLinuxHost()->userName(), name.substr(0, name.find('\n')));
}

}  // namespace
}  // namespace tavik::platform
