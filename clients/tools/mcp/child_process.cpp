#include "tools/mcp/child_process.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>

#include "platform/posix/file_descriptor.h"

namespace tavik::mcp {
namespace {

using platform::posix::FileDescriptor;

constexpr std::size_t kMostOutput = std::size_t{64} << 20;
constexpr std::size_t kMostErrors = std::size_t{64} << 10;

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// Whose ends no other program inherits.
std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{.readEnd = FileDescriptor(ends[0]), .writeEnd = FileDescriptor(ends[1])};
}

/// The strings as the null-terminated array that system calls take; it lives as long as they do.
std::vector<char*> pointersTo(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (auto& string : strings) pointers.push_back(string.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// What becomes of the child's streams and signals.
class SpawnSettings {
 public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    sigset_t ignored;
    ::sigemptyset(&ignored);
    ::sigaddset(&ignored, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes_, &ignored);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  void give(const FileDescriptor& descriptor, int stream) {
    ::posix_spawn_file_actions_adddup2(&actions_, descriptor.get(), stream);
  }
  const posix_spawn_file_actions_t* actions() const { return &actions_; }
  const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_ = {};
  posix_spawnattr_t attributes_ = {};
};

/// Hands one end over to the event loop.
template <class AsioPipe>
bool assign(AsioPipe& pipe, const FileDescriptor& end) {
  boost::system::error_code error;
  const int copy = ::fcntl(end.get(), F_DUPFD_CLOEXEC, 0);
  if (copy < 0) return false;
  pipe.assign(copy, error);
  if (error) ::close(copy);
  return !error;
}

}  // namespace

std::shared_ptr<ChildProcess> ChildProcess::start(boost::asio::io_context& context, Command command, Done done) {
  auto child = std::make_shared<ChildProcess>(context, std::move(command), std::move(done));
  if (!child->spawn()) return nullptr;
  child->write();
  child->read(child->output_);
  child->read(child->errors_);
  child->timer_.expires_after(child->command_.patience);
  child->timer_.async_wait([child](boost::system::error_code stopped) {
    if (!stopped) child->kill();
  });
  return child;
}

ChildProcess::ChildProcess(boost::asio::io_context& context, Command command, Done done)
    : command_(std::move(command)),
      done_(std::move(done)),
      input_(context),
      output_{.pipe = boost::asio::readable_pipe(context), .limit = kMostOutput},
      errors_{.pipe = boost::asio::readable_pipe(context), .limit = kMostErrors},
      timer_(context) {}

bool ChildProcess::spawn() {
  const auto in = makePipe(), out = makePipe(), errors = makePipe();
  if (!in || !out || !errors) return false;
  if (!assign(input_, in->writeEnd) || !assign(output_.pipe, out->readEnd) || !assign(errors_.pipe, errors->readEnd)) {
    return false;
  }
  SpawnSettings settings;
  settings.give(in->readEnd, STDIN_FILENO);
  settings.give(out->writeEnd, STDOUT_FILENO);
  settings.give(errors->writeEnd, STDERR_FILENO);
  auto& arguments = command_.arguments;
  arguments.insert(arguments.begin(), command_.program);
  return ::posix_spawnp(&process_, command_.program.c_str(), settings.actions(), settings.attributes(),
                        pointersTo(arguments).data(), pointersTo(command_.environment).data()) == 0;
}

/// Whoever does not read all of it says why in what it writes.
void ChildProcess::write() {
  boost::asio::async_write(input_, boost::asio::buffer(command_.input),
                           [self = shared_from_this()](boost::system::error_code, std::size_t) {
                             boost::system::error_code ignored;
                             self->input_.close(ignored);
                           });
}

void ChildProcess::read(Stream& stream) {
  stream.pipe.async_read_some(boost::asio::buffer(stream.chunk),
                              [self = shared_from_this(), &stream](boost::system::error_code error, std::size_t count) {
                                stream.text.append(stream.chunk.data(),
                                                   std::min(count, stream.limit - stream.text.size()));
                                const bool isFull = stream.text.size() == stream.limit;
                                if (isFull) self->kill();
                                error || isFull ? self->endStream() : self->read(stream);
                              });
}

/// What has closed both has nothing more to say, so that waiting for it takes no time.
void ChildProcess::endStream() {
  if (--open_ > 0) return;
  kill();
  ::waitpid(process_, nullptr, 0);
  process_ = 0;
  timer_.cancel();
  boost::system::error_code ignored;
  input_.close(ignored);
  // What it holds may hold this process.
  std::exchange(done_, nullptr)({.output = std::move(output_.text), .errors = std::move(errors_.text)});
}

void ChildProcess::kill() {
  if (process_ > 0) ::kill(process_, SIGKILL);
}

}  // namespace tavik::mcp
