#include "platform/posix/last_resort.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/posix/posix_standard_streams.h"

namespace tavik::platform::posix {
namespace {

bool isFree(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

/// Standard output is standard error, where it can be matched.
std::unique_ptr<StandardStreams> streamsOnStandardError() {
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  return makeStandardStreams("first");
}

void fail() { throw std::runtime_error("not to be seen"); }
void throwOutOfThis() noexcept { fail(); }  // NOLINT(bugprone-exception-escape): that is what is tested

void waitForTheEnd() {
  limitTime(std::chrono::seconds(1));
  while (true) ::pause();
}

TEST(LastResort, IsWrittenInPlaceOfAnOutputThatDoesNotCome) {
  struct Row {
    const char* reason;
    std::function<void()> end;
    int signal;
  };
  const Row rows[] = {
      {"a library aborts", [] { ::raise(SIGABRT); }, SIGABRT},
      {"a library stops", [] { ::raise(SIGTRAP); }, SIGTRAP},
      {"an invalid access", [] { ::raise(SIGSEGV); }, SIGSEGV},
      {"an exception that nobody may throw", &throwOutOfThis, SIGABRT},
      {"a question without an end", &waitForTheEnd, SIGALRM},
  };
  for (const auto& [reason, end, signal] : rows) {
    if (!isFree(signal)) continue;  // it is the sanitizer's
    const auto failWithoutOutput = [&failure = end] {
      streamsOnStandardError()->setLastResort("second");
      failure();
    };
    EXPECT_EXIT(failWithoutOutput(), testing::ExitedWithCode(0), "^second\n$") << reason;
  }
}

TEST(LastResort, IsSilentOnceTheOutputHasBegun) {
  const auto abortAfterOutput = [] {
    streamsOnStandardError()->writeOutput("own");
    ::raise(SIGABRT);
  };
  EXPECT_EXIT(abortAfterOutput(), testing::ExitedWithCode(0), "^own$");
  const auto slowReader = [] {
    streamsOnStandardError()->writeOutput("own");
    limitTime(std::chrono::seconds(1));
    ::sleep(2);  // which a signal ends
    ::_exit(7);
  };
  EXPECT_EXIT(slowReader(), testing::ExitedWithCode(7), "^own$");
}

}  // namespace
}  // namespace tavik::platform::posix
