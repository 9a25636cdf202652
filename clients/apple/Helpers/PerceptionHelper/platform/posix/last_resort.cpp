#include "platform/posix/last_resort.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <exception>
#include <sys/resource.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include "platform/posix/descriptor_io.h"

namespace tavik::platform::posix {
namespace {

/// Who writes to standard output. All that a signal's handler may read is lock-free.
enum class Speaker { nobody, program, lastResort };
std::atomic<Speaker> speaker = Speaker::nobody;

/// The output and its predecessor, which a handler may be reading.
std::array<std::string_view, 2> outputs;
std::atomic<std::size_t> current = 0;

/// True for the first one who asks.
bool takes(Speaker candidate) {
  auto nobody = Speaker::nobody;
  return speaker.compare_exchange_strong(nobody, candidate);
}

[[noreturn]] void leave() {
  if (takes(Speaker::lastResort)) {
    writeAll(STDOUT_FILENO, outputs[current]);
    writeAll(STDOUT_FILENO, "\n");
  }
  ::_exit(0);
}

/// A program that is writing is done but for its reader, who may take time.
void leaveInTime(int) {
  if (speaker != Speaker::program) leave();
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
  action.sa_handler = handler;
  action.sa_flags = SA_ONSTACK;
  ::sigaction(signal, &action, nullptr);
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

/// So that a handler has room when the stack has none left.
void useOwnStackForHandlers() {
  static std::array<std::byte, std::size_t{64} * 1024> room;
  stack_t stack{};  // whose members have another order on every system
  stack.ss_sp = room.data();
  stack.ss_size = room.size();
  ::sigaltstack(&stack, nullptr);
}

void handleFailures() {
  useOwnStackForHandlers();
  std::set_terminate([] { leave(); });  // the standard one writes to standard error
  for (const int signal : {SIGABRT, SIGTRAP, SIGSEGV, SIGBUS, SIGILL, SIGFPE}) {
    handle(signal, [](int) { leave(); });
  }
  handle(SIGALRM, &leaveInTime);
}

}  // namespace

void setLastResort(std::string_view output) {
  const bool isFirst = outputs[current].empty() && !output.empty();
  const auto next = 1 - current;
  outputs[next] = output;
  current = next;
  if (isFirst) handleFailures();
}

void limitTime(std::chrono::seconds limit) { ::alarm(static_cast<unsigned>(limit.count())); }

void beginOutput() {
  if (takes(Speaker::program)) return;
  while (speaker == Speaker::lastResort) ::pause();
}

void forbidCoreDumps() {
  const rlimit none{};
  ::setrlimit(RLIMIT_CORE, &none);
#ifdef __linux__
  ::prctl(PR_SET_DUMPABLE, 0);  // programs that collect the images are not bound by the limit: core(5)
#endif
}

}  // namespace tavik::platform::posix
