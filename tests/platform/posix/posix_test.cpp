#include <array>
#include <csignal>
#include <fstream>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/last_resort.h"
#include "platform/posix/posix_standard_streams.h"
#include "platform/posix/regular_file.h"
#include "platform/posix/run_time.h"
#include "platform/posix/utf8_file.h"
#include "platform/posix/within.h"
#include "table.h"

namespace tavik::platform::posix {
namespace {

using std::chrono::milliseconds;

std::array<int, 2> openPipe() {
  std::array<int, 2> ends{};
  EXPECT_EQ(::pipe(ends.data()), 0);
  return ends;
}

/// Reads what comes from another process while signals keep interrupting it.
void readInterrupted() {
  struct sigaction action {};  // without SA_RESTART
  action.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &action, nullptr);
  const auto [reading, writing] = openPipe();
  if (::fork() == 0) {
    ::usleep(60'000);
    writeAll(writing, "whole");
    ::_exit(0);
  }
  ::close(writing);
  const itimerval often{.it_interval = {0, 5000}, .it_value = {0, 5000}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  const auto result = readToEnd(reading);
  ::_exit(result.isComplete && result.bytes == "whole" ? 7 : 0);
}

TEST(DescriptorIO, GoesOnAfterASignal) { EXPECT_EXIT(readInterrupted(), testing::ExitedWithCode(7), ""); }

TEST(ReadUTF8File, TakesAWholeTextOfAFileOrAPipeOrNothing) {
  constexpr std::size_t kMost = std::size_t{16} << 20U;
  const auto path = testing::TempDir() + "text-" + std::to_string(::getpid());
  for (const auto& [reason, bytes, expected] : Table<std::string, std::optional<std::string>>{
           {"its mark goes", "\xEF\xBB\xBFtext", "text"},
           {"an empty file is a text", "", ""},
           {"not UTF-8", "caf\xE9", {}},
           {"as large as may be", std::string(kMost, 'x'), std::string(kMost, 'x')},
           {"larger", std::string(kMost + 1, 'x'), {}},
       }) {
    std::ofstream(path) << bytes;
    EXPECT_TRUE(readUTF8File(path) == expected) << reason;
  }
  ::unlink(path.c_str());
  EXPECT_EQ(readUTF8File(path), std::nullopt) << "no file";
  EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(readUTF8File(path), std::nullopt) << "a pipe that nobody has opened";
  ::unlink(path.c_str());
  const auto [reading, writing] = openPipe();
  const auto pipe = "/dev/fd/" + std::to_string(reading);
  writeAll(writing, "text");
  EXPECT_EQ(readUTF8File(pipe), std::nullopt) << "a writer that is not done";
  writeAll(writing, "text");
  ::close(writing);
  EXPECT_EQ(readUTF8File(pipe), "text");
  EXPECT_EQ(readUTF8File(pipe), std::nullopt) << "nobody has written anything";
  ::close(reading);
}

TEST(ReadFileOrPipe, TakesNoFileForAbsentThatThereIsNoDescriptorFor) {
  keepDescriptorInReserve();
  const FileDescriptor firstFree(::dup(STDERR_FILENO));
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const auto allowDescriptors = [&](int count) {
    const rlimit limit{.rlim_cur = static_cast<rlim_t>(count), .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  };
  allowDescriptors(firstFree.get());
  EXPECT_TRUE(readFileOrPipe("/proc/self/stat", {})) << "in place of that in reserve";
  allowDescriptors(0);
  EXPECT_THROW(readFileOrPipe("/dev/null", {}), std::bad_alloc);
  ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST(Within, GivesUpACallThatTakesLonger) {
  EXPECT_EQ(within(milliseconds(5000), [] { return 7; }), 7);
  EXPECT_FALSE(within(milliseconds(20), [] { return ::usleep(400'000); }));
  EXPECT_ANY_THROW(within(milliseconds(5000), []() -> int { throw 1; })) << "what it throws comes through";
}

TEST(RunTime, EndsWaitsOfWhateverLimit) {
  EXPECT_EQ(withinRunTime(milliseconds(5000)), milliseconds(5000)) << "before a run has begun";
  EXPECT_EQ(runTimeSpent(), milliseconds(0)) << "before a run has begun";
  startRunTime(milliseconds(40));
  const auto left = withinRunTime(milliseconds(5000));
  EXPECT_TRUE(left > milliseconds(0) && left <= milliseconds(40)) << left.count();
  EXPECT_FALSE(within(milliseconds(5000), [] { return ::usleep(400'000); }));
  EXPECT_EQ(withinRunTime(milliseconds(5000)), milliseconds(0)) << "never negative";
  EXPECT_GT(runTimeSpent(), milliseconds(30));
  startRunTime(std::chrono::hours(1));
}

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

/// Until the stack has no room left.
int callWithoutEnd(int depth) { return depth < 0 ? 0 : callWithoutEnd(depth + 1) + 1; }

TEST(LastResort, IsWrittenInPlaceOfAnOutputThatDoesNotCome) {
  for (const auto& [reason, end, signal] : Table<std::function<void()>, int>{
           {"a library aborts", [] { ::raise(SIGABRT); }, SIGABRT},
           {"a library stops", [] { ::raise(SIGTRAP); }, SIGTRAP},
           {"an invalid access", [] { ::raise(SIGSEGV); }, SIGSEGV},
           {"a stack without room", [] { callWithoutEnd(0); }, SIGSEGV},
           {"an exception that nobody may throw", &throwOutOfThis, SIGABRT},
           {"a question without an end", &waitForTheEnd, SIGALRM},
       }) {
    if (!isFree(signal)) continue;  // it is the sanitizer's
    EXPECT_EXIT((streamsOnStandardError()->setLastResort("second"), end()), testing::ExitedWithCode(0), "^second\n$")
        << reason;
  }
}

TEST(LastResort, LeavesNoImageOfTheMemory) {
  const auto streams = [] {
    streamsOnStandardError();
    rlimit limit{};
    ::getrlimit(RLIMIT_CORE, &limit);
    ::_exit(limit.rlim_cur == 0 && limit.rlim_max == 0 && ::prctl(PR_GET_DUMPABLE) == 0 ? 7 : 0);
  };
  EXPECT_EXIT(streams(), testing::ExitedWithCode(7), "");
}

TEST(LastResort, IsSilentOnceTheOutputHasBegun) {
  const auto writeOutput = [] { streamsOnStandardError()->writeOutput("own"); };
  EXPECT_EXIT((writeOutput(), ::raise(SIGABRT)), testing::ExitedWithCode(0), "^own$");
  const auto sleepUntilASignal = [] { limitTime(std::chrono::seconds(1)), ::sleep(2); };
  EXPECT_EXIT((writeOutput(), sleepUntilASignal(), ::_exit(7)), testing::ExitedWithCode(7), "^own$") << "a slow reader";
  EXPECT_EXIT((writeOutput(), ::raise(SIGPIPE), ::_exit(7)), testing::ExitedWithCode(7), "^own$")
      << "one that has gone";
}

}  // namespace
}  // namespace tavik::platform::posix
