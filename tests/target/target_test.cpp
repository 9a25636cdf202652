#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "target/capture_context.h"
#include "target/resolve_target_app.h"

namespace tavik {
namespace {

using fake::application;
using platform::ActivationPolicy;
using std::nullopt;

TEST(ResolveTargetApp, PrefersTheIdentifierAndFallsBackOnTheName) {
  const std::vector<platform::RunningApplicationRef> applications = {
      application(1, "org.agent", "Agent", ActivationPolicy::accessory),
      application(2, "org.two", "Two Helper", ActivationPolicy::prohibited),
      application(3, "org.two", "Two"),
      application(5, "org.safari", "Safari"),
      application(6, nullopt, "Caf\u00e9 "),
      application(7, "org.nameless", nullopt),
      application(8, "org.blank", ""),
  };
  using Case = std::tuple<std::string, AppIdentifiers, int>;
  for (const auto& [reason, identifiers, pid] : {
           Case{"blank is nothing", {.bundleId = " \n", .name = "\t"}, 0},
           Case{"blanks around the identifier", {.bundleId = " \u00a0org.safari\n"}, 5},
           Case{"no folding of the identifier", {.bundleId = "org.Safari"}, 0},
           Case{"a blank identifier leaves it to the name", {.bundleId = " ", .name = "two"}, 3},
           Case{"so does one that matches nothing", {.bundleId = "org.none", .name = "safari"}, 5},
           Case{"one that matches decides alone", {.bundleId = "org.agent", .name = "Safari"}, 1},
           Case{"a regular instance before others", {.bundleId = "org.two"}, 3},
           Case{"letter case and blanks of the name", {.name = " SAFARI\r\n"}, 5},
           Case{"no part of a name", {.name = "Saf"}, 0},
           Case{"the application's own name is not trimmed", {.name = "cafe\u0301"}, 0},
           Case{"accessories have no name", {.name = "Agent"}, 0},
       }) {
    fake::FakeDesktop desktop{.applications = applications};
    const auto found = resolveTargetApp(identifiers, *fake::makePlatform(desktop).workspace);
    EXPECT_EQ(found ? found->app->processIdentifier() : 0, pid) << reason;
  }
}

TEST(CaptureContext, HoldsWhatThePlatformKnows) {
  using std::chrono::milliseconds;
  const auto nameless = application(1, nullopt, nullopt), frontmost = application(2, "", "Front");
  fake::FakeDesktop desktop{.date = std::chrono::system_clock::time_point(milliseconds(1'794'835'460'007)) +
                                    std::chrono::microseconds(999)};
  const auto platform = fake::makePlatform(desktop);
  const auto context = [&](const std::optional<ResolvedTargetApp>& target) {
    return captureContext(target, *platform.workspace, *platform.host);
  };
  ResponseDictionary expected{{"captured_at_utc", "2026-11-16T13:24:20.007Z"}};
  EXPECT_EQ(context(nullopt), expected) << "no application, no screen";

  desktop.frontmost = frontmost;
  expected["app_bundle_id"] = "";
  expected["app_name"] = "Front";
  EXPECT_EQ(context(nullopt), expected) << "empty is not absent";

  desktop.screen = platform::Screen{.backingScaleFactor = 1.25};
  expected["display_id"] = 0;
  expected["scale_factor"] = 1.25;
  EXPECT_EQ(context(nullopt), expected) << "a screen without a number";

  desktop.screen->screenNumber = 69;
  expected["app_bundle_id"] = expected["app_name"] = "unknown";
  expected["display_id"] = 69;
  EXPECT_EQ(context(ResolvedTargetApp{nameless}), expected) << "the target comes before the frontmost";
}

TEST(ISO8601, IsUTCWithThreeDigits) {
  using Time = std::chrono::system_clock::time_point;
  EXPECT_EQ(iso8601(Time()), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(iso8601(Time() - std::chrono::milliseconds(1)), "1969-12-31T23:59:59.999Z");
  EXPECT_EQ(iso8601(Time() + std::chrono::seconds(951'782'400)), "2000-02-29T00:00:00.000Z");
}

}  // namespace
}  // namespace tavik
