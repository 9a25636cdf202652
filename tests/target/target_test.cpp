#include <string>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "table.h"
#include "target/capture_context.h"
#include "target/resolve_target_app.h"

namespace tavik {
namespace {

using fake::application;
using platform::ActivationPolicy;
using std::nullopt;

TEST(ResolveTargetApp, PrefersTheIdentifierAndFallsBackOnTheName) {
  using enum ActivationPolicy;
  fake::FakeDesktop desktop;
  desktop.applications = {application(1, "org.agent", "Agent", accessory),
                          application(2, "org.two", "Two Helper", prohibited),
                          application(3, "org.two", "Two"),
                          application(4, "org.two", "Two"),
                          application(5, "org.safari", "Safari"),
                          application(6, nullopt, "Caf\u00e9 "),
                          application(7, "", nullopt),
                          application(8, "org.blank", ""),
                          application(9, "org.agent", nullopt, accessory)};
  const auto platform = fake::makePlatform(desktop);
  for (const auto& [reason, identifiers, pid] : Table<AppIdentifiers, int>{
           {"blank is nothing", {.bundleId = " \n", .name = "\t"}, 0},
           {"blanks around the identifier", {.bundleId = " \u00a0org.safari\n"}, 5},
           {"no folding of the identifier", {.bundleId = "org.Safari"}, 0},
           {"one that matches nothing leaves it to the name", {.bundleId = "org.none", .name = "two"}, 3},
           {"one that matches decides alone", {.bundleId = "org.agent", .name = "Safari"}, 1},
           {"the first regular instance before others", {.bundleId = "org.two"}, 3},
           {"letter case and blanks of the name", {.name = " SAFARI\r\n"}, 5},
           {"no part of a name", {.name = "Saf"}, 0},
           {"the application's own name is not trimmed", {.name = "cafe\u0301"}, 0},
           {"accessories have no name", {.name = "Agent"}, 0},
       }) {
    const auto found = resolveTargetApp(identifiers, *platform.workspace);
    EXPECT_EQ(found ? found->app->processIdentifier() : 0, pid) << reason;
  }
}

TEST(CaptureContext, HoldsWhatThePlatformKnows) {
  using Time = std::chrono::system_clock::time_point;
  fake::FakeDesktop desktop{.date =
                                Time(std::chrono::milliseconds(1'794'835'460'007)) + std::chrono::microseconds(999)};
  const auto platform = fake::makePlatform(desktop);
  ResponseDictionary expected{{"captured_at_utc", "2026-11-16T13:24:20.007Z"}};
  EXPECT_EQ(captureContext({}, *platform.workspace, *platform.host).dictionary, expected)
      << "no application, no screen";

  desktop.frontmost = application(2, "", "Front");
  desktop.screen = platform::Screen{.backingScaleFactor = 1.25};
  expected.insert({{"app_bundle_id", ""}, {"app_name", "Front"}, {"display_id", 0}, {"scale_factor", 1.25}});
  EXPECT_EQ(captureContext({}, *platform.workspace, *platform.host).dictionary, expected) << "empty is not absent";

  expected["app_bundle_id"] = expected["app_name"] = "unknown";
  const ResolvedTargetApp nameless{application(1, nullopt, nullopt)};
  EXPECT_EQ(captureContext(nameless, *platform.workspace, *platform.host).dictionary, expected)
      << "the target comes first";

  EXPECT_EQ(iso8601(Time() - std::chrono::milliseconds(1)), "1969-12-31T23:59:59.999Z");
}

}  // namespace
}  // namespace tavik
