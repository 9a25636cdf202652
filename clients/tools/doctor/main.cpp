#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include <boost/program_options.hpp>

#include "platform/platform.h"
#include "platform/posix/last_resort.h"
#include "platform/posix/run_time.h"
#include "protocol/write_response.h"
#include "tools/doctor/examine.h"
#include "tools/doctor/report_as_json.h"
#include "tools/doctor/report_as_text.h"
#include "tools/doctor/words.h"

namespace {

namespace options = boost::program_options;

constexpr int kToMend = 1, kBadUsage = 2;

constexpr auto kUsage =
    "usage: tavik-perception-doctor [OPTIONS]\n\n"
    "Says what of this desktop tavik-perception-helper can look at, why it cannot look at the rest, and what to\n"
    "do about it: displays and buses, running applications with the names to send, the policy in force.\n"
    "It only looks. Exit status: 0 all is well, 1 something is to be mended, 2 bad usage.\n\n"
    "Whatever starts the helper has to pass these on from the user's session: DISPLAY, and XAUTHORITY where it\n"
    "is set; under Wayland WAYLAND_DISPLAY, XDG_RUNTIME_DIR and, on sway, SWAYSOCK; for the trees\n"
    "DBUS_SESSION_BUS_ADDRESS, or else XDG_RUNTIME_DIR.\n\n";

struct Wanted {
  bool isJSON = false;
  std::optional<std::string> policyFile = {};
};

/// What the command line asks for; nothing when that has been told already.
std::optional<Wanted> wantedBy(int argc, char** argv) {
  options::options_description known("Options");
  known.add_options()("policy", options::value<std::string>()->value_name("FILE"),
                      "check this policy file alone: status 1 when something in it does nothing")(
      "json", "answer with one JSON object")("version", "say the version")("help", "say this");
  options::variables_map given;
  const options::positional_options_description none;
  options::store(options::command_line_parser(argc, argv).options(known).positional(none).run(), given);
  if (given.contains("help")) {
    std::cout << kUsage << known;
    return std::nullopt;
  }
  if (given.contains("version")) {
    std::cout << "tavik-perception-doctor " << tavik::doctor::kVersion << '\n';
    return std::nullopt;
  }
  Wanted wanted{.isJSON = given.contains("json")};
  if (given.contains("policy")) wanted.policyFile = given["policy"].as<std::string>();
  return wanted;
}

/// All waits together leave time for the rest, so that there is an answer within 8 s; then it ends, come what may.
void limitTime() {
  tavik::platform::posix::startRunTime(std::chrono::seconds(6));
  tavik::platform::posix::limitTime(std::chrono::seconds(8));
}

int examine(const Wanted& wanted) {
  namespace doctor = tavik::doctor;
  const auto platform = tavik::platform::makePlatform("");
  limitTime();
  const auto report =
      wanted.policyFile ? doctor::examinePolicyFile(platform, *wanted.policyFile) : doctor::examineAll(platform);
  if (wanted.isJSON) {
    tavik::writeResponse(doctor::reportAsJSON(report), *platform.streams);
  } else {
    platform.streams->writeOutput(doctor::reportAsText(report, {.isPolicyAlone = wanted.policyFile.has_value()}));
  }
  return doctor::isAllWell(report) ? 0 : kToMend;
}

}  // namespace

int main(int argc, char** argv) try {
  const auto wanted = wantedBy(argc, argv);
  return wanted ? examine(*wanted) : 0;
} catch (const options::error& error) {
  std::cerr << "tavik-perception-doctor: " << error.what() << '\n';
  return kBadUsage;
} catch (const std::exception& error) {
  std::cerr << "tavik-perception-doctor: " << error.what() << '\n';
  return kToMend;
}
