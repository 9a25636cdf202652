// Where the time of one run goes: does what the program does for an application's tree and for a picture of the screen,
// step by step, and prints for each step its name and its milliseconds, separated by a tab.
//
//   bench-phases IDENTIFIER LONG_EDGE png|jpeg

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <variant>

#include "accessibility/walk_ax_element.h"
#include "capture/encode_image_data_url.h"
#include "platform/platform.h"
#include "policy/load_sensitive_apps_config.h"
#include "protocol/write_response.h"

namespace {

using namespace tavik;
using Clock = std::chrono::steady_clock;

class Stopwatch {
 public:
  void lap(const char* step) {
    const auto now = Clock::now();
    std::printf("%s\t%.3f\n", step, std::chrono::duration<double, std::milli>(now - last_).count());
    last_ = Clock::now();
  }

 private:
  Clock::time_point last_ = Clock::now();
};

struct Discard final : platform::StandardStreams {
  std::string readInputToEnd() override { return {}; }
  void writeOutput(std::string_view) override {}
  void writeError(std::string_view) override {}
  void setLastResort(std::string_view) override {}
};

template <class Value>
platform::CompletionHandler<Value> keepIn(Value& value) {
  return [&value](auto result) {
    if (auto* found = std::get_if<Value>(&result)) value = std::move(*found);
  };
}

ResponseDictionary tree(const platform::Platform& platform, std::int32_t processID, const SensitiveAppsConfig& policy,
                        Stopwatch& stopwatch) {
  if (!platform.accessibility->isProcessTrusted()) return {};
  stopwatch.lap("connect to the accessibility bus");
  const auto application = platform.accessibility->createApplication(processID);
  const auto value = application->copyAttributeValue("AXMainWindow");
  stopwatch.lap("find the main window");
  const auto* const window = value ? std::get_if<platform::UIElementRef>(&*value) : nullptr;
  if (!window) return {};
  platform.accessibility->prefetch(*window,
                                   {.maxDepth = 8, .maxChildren = kMaxAXChildren, .attributes = kWalkedAXAttributes});
  stopwatch.lap("read the tree");
  AXSummary counters;
  auto found = walkAXElement(**window, {.depth = 0, .maxDepth = 8}, counters, policy);
  stopwatch.lap("walk it");
  return found;
}

std::optional<std::string> picture(const platform::Platform& platform, const ImageParameters& parameters,
                                   Stopwatch& stopwatch) {
  platform::ShareableContent content;
  platform.screenCapture->getShareableContent({.excludingDesktopWindows = false, .onScreenWindowsOnly = true},
                                              keepIn(content));
  stopwatch.lap("list displays and windows");
  if (content.displays.empty()) return std::nullopt;
  const auto& display = content.displays.front();
  platform::ImageRef image;
  platform.screenCapture->captureImage({.display = display}, {.width = display.width, .height = display.height},
                                       keepIn(image));
  stopwatch.lap("take the picture");
  auto url = image ? encodeImageDataURL(image, parameters) : std::nullopt;
  stopwatch.lap("scale, encode, base64");
  return url;
}

double processorMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  std::printf("start\t%.3f\n", processorMilliseconds());
  Stopwatch stopwatch;
  const auto platform = platform::makePlatform({});
  if (!platform.workspace->mainScreen()) return 1;
  stopwatch.lap("connect to the X server, screen");
  const auto applications = platform.workspace->runningApplicationsWithBundleIdentifier(arguments[1]);
  stopwatch.lap("list and identify applications");
  const auto policy = loadSensitiveAppsConfig(*platform.host);
  stopwatch.lap("policy");
  ResponseDictionary data;
  if (!applications.empty()) {
    data["ax_tree"] = tree(platform, applications.front()->processIdentifier(), policy, stopwatch);
  }
  if (auto url = picture(platform, {.longEdgePx = std::atoi(arguments[2]), .format = arguments[3], .quality = 0.85},
                         stopwatch)) {
    data["image"] = *url;
  }
  stopwatch.lap("assemble");
  Discard nowhere;
  writeResponse({{"ok", true}, {"data", std::move(data)}}, nowhere);
  stopwatch.lap("write");
}
