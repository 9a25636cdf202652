#include "platform/posix/regular_file.h"

#include <new>
#include <sys/resource.h>

#include <gtest/gtest.h>

namespace tavik::platform::posix {
namespace {

TEST(ReadFileOrPipe, TakesNoFileForAbsentThatThereIsNoDescriptorFor) {
  EXPECT_EQ(readFileOrPipe("/missing", {}), std::nullopt);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{.rlim_cur = 0, .rlim_max = before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THROW(readFileOrPipe("/dev/null", {}), std::bad_alloc);
  ::setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
}  // namespace tavik::platform::posix
