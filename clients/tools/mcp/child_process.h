#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/readable_pipe.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/writable_pipe.hpp>

namespace tavik::mcp {

/// A program to start, what it reads, and how long it may take.
struct Command {
  std::string program = {};  ///< a path, or a name to be looked up in PATH
  std::vector<std::string> arguments = {};
  std::vector<std::string> environment = {};  ///< all of it, NAME=VALUE each
  std::string input = {};
  std::chrono::milliseconds patience = {};
};

/// What it wrote: 64 MiB at most to standard output, and 64 KiB to standard error. Where it writes more or takes longer
/// than it may, it is killed, and this is all there is.
struct ProgramOutput {
  std::string output = {};
  std::string errors = {};
};

/// A program under way. It lives until it has been waited for, whoever lets go of it.
class ChildProcess : public std::enable_shared_from_this<ChildProcess> {
 public:
  using Done = std::function<void(ProgramOutput)>;

  /// Starts a program; `done` is called once, on `context` and never from here, when it has closed its streams or has
  /// been killed. Null when it cannot be started.
  static std::shared_ptr<ChildProcess> start(boost::asio::io_context& context, Command command, Done done);

  ChildProcess(boost::asio::io_context& context, Command command, Done done);

  /// Ends it; `done` hears of it as of every other end.
  void kill();

 private:
  /// One of the two streams that are read.
  struct Stream {
    boost::asio::readable_pipe pipe;
    std::size_t limit = 0;
    std::string text = {};
    std::array<char, 65536> chunk = {};
  };

  bool spawn();
  void write();
  void read(Stream& stream);
  void endStream();

  Command command_;
  Done done_;
  pid_t process_ = 0;
  boost::asio::writable_pipe input_;
  Stream output_;
  Stream errors_;
  boost::asio::steady_timer timer_;
  int open_ = 2;  ///< of the streams that are read
};

}  // namespace tavik::mcp
