#include <chrono>
#include <csignal>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/program_options.hpp>

#include "platform/posix/descriptor_io.h"
#include "platform/posix/last_resort.h"
#include "tools/mcp/server.h"
#include "tools/mcp/session_environment.h"
#include "tools/mcp/standard_lines.h"
#include "tools/mcp/version.h"

namespace {

namespace asio = boost::asio;
namespace options = boost::program_options;
using tavik::platform::posix::writeAll;

constexpr int kBadUsage = 2;

/// The program beside this one, where it is there; else its name, for PATH.
std::string besideThis(std::string_view name) {
  std::error_code error;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", error).replace_filename(name);
  return !error && std::filesystem::exists(path, error) ? path.string() : std::string(name);
}

std::string now() {
  const auto time = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm utc = {};
  ::gmtime_r(&time, &utc);
  std::string text(sizeof "2000-01-01T00:00:00Z", '\0');
  text.resize(std::strftime(text.data(), text.size(), "%FT%TZ", &utc));
  return text;
}

void audit(std::string_view what) {
  writeAll(STDERR_FILENO, std::string("[tavik-perception-mcp] ").append(now()).append(" ").append(what).append("\n"));
}

/// Until the input ends and every call has been answered.
void serve(tavik::mcp::Programs programs) {
  asio::io_context context;
  tavik::mcp::Server server(context, std::move(programs), tavik::mcp::sessionEnvironment(),
                            {.answer = [](std::string_view line) { writeAll(STDOUT_FILENO, line); }, .audit = audit});
  auto work = asio::make_work_guard(context);
  std::jthread reader([&] {
    tavik::mcp::readLines(
        [&](std::string line) { asio::post(context, [&server, line = std::move(line)] { server.receive(line); }); });
    asio::post(context, [&work] { work.reset(); });
  });
  context.run();
}

/// What the command line asks for; nothing when that has been told already.
std::optional<tavik::mcp::Programs> programsOf(int argc, char** argv) {
  tavik::mcp::Programs programs{.helper = besideThis("tavik-perception-helper"),
                                .doctor = besideThis("tavik-perception-doctor")};
  options::options_description known("Options");
  known.add_options()("helper", options::value(&programs.helper)->value_name("PATH"), "the helper to start")(
      "doctor", options::value(&programs.doctor)->value_name("PATH"), "the doctor to start")(
      "version", "say the version")("help", "say this");
  options::variables_map given;
  const options::positional_options_description none;
  options::store(options::command_line_parser(argc, argv).options(known).positional(none).run(), given);
  options::notify(given);
  if (given.contains("help")) {
    std::cout
        << "usage: tavik-perception-mcp [OPTIONS]\n\nA server of the Model Context Protocol on standard input and "
           "output: it lets an assistant look at\napplications of this desktop. It is started by the assistant.\n\n"
        << known;
    return std::nullopt;
  }
  if (given.contains("version")) {
    std::cout << "tavik-perception-mcp " << tavik::mcp::kVersion << '\n';
    return std::nullopt;
  }
  return programs;
}

}  // namespace

int main(int argc, char** argv) try {
  tavik::platform::posix::forbidCoreDumps();  // which would hold pictures
  std::signal(SIGPIPE, SIG_IGN);              // a program that ends before it has read all is no reason to end as well
  if (auto programs = programsOf(argc, argv)) serve(*std::move(programs));
  return 0;
} catch (const options::error& error) {
  std::cerr << "tavik-perception-mcp: " << error.what() << '\n';
  return kBadUsage;
} catch (const std::exception& error) {
  std::cerr << "tavik-perception-mcp: " << error.what() << '\n';
  return 1;
}
