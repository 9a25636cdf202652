#include "target/capture_context.h"

#include <array>
#include <cstdio>
#include <utility>

namespace tavik {

std::string iso8601(std::chrono::system_clock::time_point date) {
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::milliseconds>(date - day));
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(calendar.year()),
                static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
  return text.data();
}

CaptureContext captureContext(const std::optional<ResolvedTargetApp>& targetApp, platform::Workspace& workspace,
                              const platform::Host& host) {
  ResponseDictionary context{{"captured_at_utc", iso8601(host.currentDate())}};
  auto app = targetApp ? targetApp->app : workspace.frontmostApplication();
  if (app) {
    context["app_bundle_id"] = app->bundleIdentifier().value_or("unknown");
    context["app_name"] = app->localizedName().value_or("unknown");
  }
  if (const auto screen = workspace.mainScreen()) {
    context["display_id"] = screen->screenNumber.value_or(0);
    context["scale_factor"] = screen->backingScaleFactor;
  }
  return {.dictionary = std::move(context), .application = std::move(app)};
}

}  // namespace tavik
