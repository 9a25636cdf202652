#include <functional>
#include <string>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "driver/host_task.h"
#include "driver/resolve_level.h"
#include "fake/fake_platform.h"

namespace tavik {
namespace {

using fake::Delivery;
using fake::element;
using fake::FakeDesktop;
using platform::UIElementRef;

namespace json = boost::json;

constexpr std::int32_t kSafari = 10;
constexpr std::int32_t kVault = 11;

/// Safari in front, with a window of 1200x900 and a tree of 7 nodes with 60 characters; Vault behind it, which the
/// policy names.
FakeDesktop twoApplications() {
  const auto safari = std::make_shared<fake::FakeApplication>(kSafari, "com.apple.Safari", "Safari");
  const auto vault = std::make_shared<fake::FakeApplication>(kVault, "org.vault", "Vault");
  const auto leaf = element({{"AXRole", std::string("AXStaticText")}, {"AXValue", std::string("0123456789")}});
  const auto secret = element({{"AXRole", std::string("AXSecureTextField")}, {"AXValue", std::string("hunter2")}});
  const auto app = [](const UIElementRef& child, std::size_t count) {
    const UIElementRef window = element({{"AXChildren", std::vector<UIElementRef>(count, child)}});
    return element({{"AXMainWindow", window}, {"AXFocusedUIElement", child}});
  };
  const auto window = [](std::uint32_t id, std::int32_t pid) {
    return platform::Window{.windowID = id,
                            .owningApplication = platform::OwningApplication{pid},
                            .isOnScreen = true,
                            .frame = {0, 0, 1200, 900}};
  };
  return {.environment = {{"TAVIK_PERCEPTION_CONFIG", "/policy"}},
          .files = {{"/policy", "bundle_id_blocklist:\n- org.v*\nax_role_text_blocklist:\n- AXSecureTextField\n"}},
          .applications = {safari, vault},
          .frontmost = safari,
          .screen = platform::Screen{.screenNumber = 5, .backingScaleFactor = 2},
          .applicationElements = {{kSafari, app(leaf, 6)}, {kVault, app(secret, 1)}},
          .content = platform::ShareableContent{.displays = {{1, 3000, 2000}},
                                                .windows = {window(1, kSafari), window(2, kVault)}},
          .image = std::make_shared<fake::FakeImage>(platform::PixelSize{})};
}

/// The one object that the pass writes for this request.
json::object answer(FakeDesktop& desktop, std::string request) {
  desktop.input = std::move(request);
  desktop.outputWrites.clear();
  EXPECT_EQ(hostTask(fake::makePlatform(desktop)), 0);
  const auto output = desktop.output();
  EXPECT_EQ(output.find('\n'), output.size() - 1) << "exactly one line: " << output;
  return json::parse(output).as_object();
}

/// The data object of a successful answer.
json::object data(FakeDesktop& desktop, const std::string& request) {
  const auto response = answer(desktop, request);
  EXPECT_EQ(response.at("ok"), true) << response;
  return response.contains("data") ? response.at("data").as_object() : json::object();
}

/// What FakeImage wrote, as the data URL that carries it.
std::string decodedImage(const json::value& url) {
  constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  unsigned bits = 0, count = 0;
  const auto& all = url.as_string();
  for (const char c : all.subview(all.find(',') + 1)) {
    if (c == '=') break;
    bits = bits << 6U | static_cast<unsigned>(alphabet.find(c));
    count += 6;
    if (count >= 8) text += static_cast<char>(bits >> (count -= 8) & 0xFFU);
  }
  return text;
}

TEST(ResolveLevel, GlancesOnlyWhereTheTreeSaysMuch) {
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodes = 100, .textChars = 50}), Level::read);
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodes = 5, .textChars = 51}), Level::read);
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodes = 6, .textChars = 51}), Level::glance);
  for (const auto level : {Level::ax_only, Level::glance, Level::read, Level::pixel_perfect}) {
    EXPECT_EQ(resolveLevel(level, {.nodes = -1, .textChars = 1000}), level);
  }
}

TEST(RunMain, AnswersATypicalRequestWhole) {
  auto desktop = twoApplications();
  const auto response = data(desktop, R"({"app_bundle_id":"com.apple.Safari"})");
  const std::string leaf = R"({"role":"AXStaticText","value":"0123456789"})";
  auto expected =
      json::parse(R"({"level_used":"glance","caption":null,"cache_hit":false,"ax_node_count":7,"ax_text_chars":60,
      "tcc_screen_recording":true,"tcc_accessibility":true,"redaction_applied":false,
      "context":{"captured_at_utc":"1970-01-01T00:00:00.000Z","app_bundle_id":"com.apple.Safari","app_name":"Safari",
                 "display_id":5,"scale_factor":2.0},
      "ax_tree":{"children":[)" +
                  leaf + "," + leaf + "," + leaf + "," + leaf + "," + leaf + "," + leaf + "]}}");
  expected.as_object()["image"] = response.at("image");
  EXPECT_EQ(response, expected);
  EXPECT_EQ(decodedImage(response.at("image")), "jpeg 800x600 0.70");
  EXPECT_EQ(desktop.filter->includedWindow->windowID, 1U);
  EXPECT_TRUE(desktop.error.empty());
}

TEST(RunMain, ChoosesLevelAndImageFromTheRequest) {
  struct Case {
    std::string reason, request, level, image;  ///< image: "" for none
    int preflights, trustQueries;
  };
  for (const auto& [reason, request, level, image, preflights, trustQueries] : {
           Case{"by name, read", R"({"app_name":" safari","level":"read"})", "read", "jpeg 1200x900 0.85", 2, 2},
           Case{"pixel_perfect", R"({"app_name":"Safari","level":"pixel_perfect"})", "pixel_perfect", "png 1200x900", 2,
                2},
           Case{"quality follows the level, whatever the format",
                R"({"app_name":"Safari","level":"pixel_perfect","format":"jpeg","max_long_edge_px":600})",
                "pixel_perfect", "jpeg 600x450 0.85", 2, 2},
           Case{"a format of another name", R"({"app_name":"Safari","format":"JPEG","max_long_edge_px":-1})", "glance",
                "jpeg 1200x900 -", 2, 2},
           Case{"ax_only", R"({"app_name":"Safari","level":"ax_only"})", "ax_only", "", 0, 2},
           Case{"an image is not made at ax_only", R"({"app_name":"Safari","level":"ax_only","include_image":true})",
                "ax_only", "", 0, 2},
           Case{"no image wanted", R"({"app_name":"Safari","include_image":false})", "glance", "", 0, 2},
           Case{"no tree: nothing to glance at, nobody asked", R"({"app_name":"Safari","include_ax_tree":false})",
                "read", "jpeg 1200x900 0.85", 2, 0},
           Case{"a screen has no tree", R"({"target":"screen","app_bundle_id":"org.none"})", "read",
                "jpeg 1600x1066 0.85", 2, 2},
           Case{"a region", R"({"target":"region","region":{"x":1,"y":2,"w":30,"h":40}})", "read", "jpeg 30x40 0.85", 2,
                2},
           Case{"the focused element", R"({"target":"focused_element"})", "read", "jpeg 1200x900 0.85", 2, 2},
       }) {
    auto desktop = twoApplications();
    const auto response = data(desktop, request);
    if (response.empty()) continue;
    EXPECT_EQ(response.at("level_used"), json::value(level)) << reason;
    EXPECT_EQ(response.at("image").is_null() ? "" : decodedImage(response.at("image")), image) << reason;
    EXPECT_EQ(response.at("tcc_screen_recording"), true) << reason;
    EXPECT_EQ(response.at("tcc_accessibility"), true) << reason;
    EXPECT_FALSE(response.contains("sensitive_app_match")) << reason;
    EXPECT_EQ(desktop.calls.preflight, preflights) << reason;
    EXPECT_EQ(desktop.calls.isProcessTrusted, trustQueries) << reason;
    EXPECT_EQ(desktop.calls.captureImage, image.empty() ? 0 : 1) << reason;
  }
}

TEST(RunMain, KeepsSensitiveApplicationsOutOfThePicture) {
  struct Case {
    std::string reason, request, identifier;  ///< identifier: "" for no match
    bool vaultIsFrontmost;
  };
  for (const auto& [reason, request, identifier, vaultIsFrontmost] : {
           Case{"the target", R"({"app_name":"Vault"})", "org.vault", false},
           Case{"though no image was wanted", R"({"app_name":"Vault","level":"ax_only"})", "org.vault", false},
           Case{"the frontmost, for the whole screen", R"({"target":"screen"})", "org.vault", true},
           Case{"the frontmost, for its focus", R"({"target":"focused_element"})", "org.vault", true},
           Case{"not the frontmost, for another target", R"({"app_name":"Safari"})", "", true},
           Case{"not one that is merely named", R"({"target":"screen","app_name":"Vault"})", "", false},
       }) {
    auto desktop = twoApplications();
    if (vaultIsFrontmost) desktop.frontmost = desktop.applications[1];
    const auto response = data(desktop, request);
    const bool isMatch = !identifier.empty();
    EXPECT_EQ(response.at("image").is_null(), isMatch) << reason;
    EXPECT_EQ(response.contains("sensitive_app_match"), isMatch) << reason;
    EXPECT_EQ(response.at("redaction_applied"), isMatch) << reason;
    if (isMatch) {
      EXPECT_EQ(response.at("sensitive_app_match"), true) << reason;
      EXPECT_EQ(response.at("sensitive_bundle_id"), json::value(identifier)) << reason;
      EXPECT_EQ(desktop.calls.preflight + desktop.calls.shareableContent + desktop.calls.captureImage, 0) << reason;
    }
    EXPECT_EQ(desktop.output().find("hunter2"), std::string::npos) << reason;
  }
  auto desktop = twoApplications();
  EXPECT_EQ(data(desktop, R"({"app_name":"Vault"})").at("ax_tree").at("children").at(0).at("value"), "<redacted>");
}

TEST(RunMain, MapsEveryFailureToItsError) {
  struct Case {
    std::string reason, request, code, hint;
    std::function<void(FakeDesktop&)> arrange = [](FakeDesktop&) {};
  };
  const std::string safari = R"({"app_name":"Safari"})";
  const auto without = [](auto member) { return [member](FakeDesktop& d) { d.*member = {}; }; };
  for (const auto& [reason, request, code, hint, arrange] : {
           Case{"no input", "", "target_required", "pass app_bundle_id='<bundle.id>'"},
           Case{"no request", "[1]", "target_required", "pass app_bundle_id"},
           Case{"empty names", R"({"app_bundle_id":"","app_name":""})", "target_required", "pass app_bundle_id"},
           Case{"nobody of that name", R"({"app_name":" Nobody "})", "target_app_not_running", "use `lsappinfo list`"},
           Case{"a target and no name", R"({"target":"app"})", "target_app_not_running", "use `lsappinfo list`"},
           Case{"no permission to capture", safari, "screen_recording_permission_required", "open System Settings",
                without(&FakeDesktop::mayRecordScreen)},
           Case{"before that for the tree", safari, "screen_recording_permission_required", "open System Settings",
                [](FakeDesktop& d) { d.mayRecordScreen = d.isTrusted = false; }},
           Case{"no permission to read, and no image", R"({"app_name":"Safari","include_image":false})",
                "accessibility_permission_required", "open System Settings", without(&FakeDesktop::isTrusted)},
           Case{"nor any for a sensitive application", R"({"app_name":"Vault"})", "accessibility_permission_required",
                "open System Settings", without(&FakeDesktop::isTrusted)},
           Case{"it takes the place of the capture's error", safari, "accessibility_permission_required",
                "open System Settings", [](FakeDesktop& d) { d.isTrusted = d.content->windows[0].isOnScreen = false; }},
           Case{"no content", safari, "capture_failed", "retry", without(&FakeDesktop::content)},
           Case{"no display", safari, "no_primary_display", "retry after a brief wait",
                [](FakeDesktop& d) { d.content->displays.clear(); }},
           Case{"no window", safari, "target_app_has_no_window", "verify NSRunningApplication.windows",
                [](FakeDesktop& d) { d.content->windows.clear(); }},
           Case{"minimized", safari, "target_window_minimized", "retry with allow_focus_steal=true OR",
                [](FakeDesktop& d) { d.content->windows[0].isOnScreen = false; }},
           Case{"a region without one", R"({"target":"region"})", "capture_failed", "retry"},
           Case{"no screenshot", safari, "capture_failed", "retry", without(&FakeDesktop::image)},
           Case{"no encoding", safari, "capture_failed", "retry",
                [](FakeDesktop& d) {
                  d.image = std::make_shared<fake::FakeImage>(platform::PixelSize{3, 3}, false);
                }},
           Case{"a backend that throws", safari, "capture_failed", "retry",
                [](FakeDesktop& d) { d.delivery = Delivery::byThrowing; }},
       }) {
    auto desktop = twoApplications();
    arrange(desktop);
    const auto response = answer(desktop, request);
    EXPECT_EQ(response.size(), 4U) << reason << ": " << response;
    EXPECT_EQ(response.at("ok"), false) << reason;
    EXPECT_EQ(response.at("code"), json::value(code)) << reason;
    EXPECT_TRUE(response.at("hint").as_string().starts_with(hint)) << reason << ": " << response;
  }
}

TEST(RunMain, NamesTheApplicationThatDoesNotRunAsSent) {
  const auto identifierIn = [](const std::string& request) {
    auto desktop = twoApplications();
    const auto error = std::string(answer(desktop, request).at("error").as_string());
    constexpr std::string_view before = "No running application matched target identifier ";
    constexpr std::string_view after = ". Pass `app_bundle_id` for an app that's currently running";
    EXPECT_TRUE(error.starts_with(before)) << error;
    return error.substr(before.size(), error.find(after) - before.size());
  };
  EXPECT_EQ(identifierIn(R"({"app_name":" No One ","app_bundle_id":"org.none"})"), "org.none");
  EXPECT_EQ(identifierIn(R"({"app_name":" No One "})"), " No One ");
  EXPECT_EQ(identifierIn(R"({"app_name":"No One","app_bundle_id":""})"), "");
  EXPECT_EQ(identifierIn(R"({"target":"app"})"), "<unspecified>");
}

TEST(RunMain, SucceedsWithAnImageWithoutAccessibility) {
  auto desktop = twoApplications();
  desktop.isTrusted = false;
  const auto response = data(desktop, R"({"app_name":"Safari"})");
  EXPECT_EQ(response.at("tcc_accessibility"), false);
  EXPECT_TRUE(response.at("ax_tree").is_null());
  EXPECT_EQ(response.at("ax_node_count"), 0);
  EXPECT_EQ(response.at("level_used"), "read");
}

TEST(RunMain, AsksNothingOfTheDesktopWithoutATarget) {
  auto desktop = twoApplications();
  answer(desktop, R"({"level":"read"})");
  const auto& calls = desktop.calls;
  EXPECT_EQ(
      calls.applicationQueries + calls.isProcessTrusted + calls.preflight + calls.shareableContent + calls.prefetch, 0);
}

TEST(RunMain, ResumesOnceFromAnyThread) {
  for (const auto delivery : {Delivery::fromAnotherThread, Delivery::twice}) {
    auto desktop = twoApplications();
    desktop.delivery = delivery;
    EXPECT_EQ(decodedImage(data(desktop, R"({"app_name":"Safari"})").at("image")), "jpeg 800x600 0.70");
  }
  auto abandoned = twoApplications();
  abandoned.delivery = Delivery::never;
  EXPECT_EQ(answer(abandoned, R"({"target":"screen"})").at("code"), "helper_serialize_failed");
}

TEST(RunMain, WritesTheFallbackForAnythingUnforeseen) {
  auto desktop = twoApplications();
  desktop.screen->backingScaleFactor = 0.0 / 0.0;
  EXPECT_EQ(answer(desktop, R"({"target":"screen"})").at("code"), "helper_serialize_failed");
}

}  // namespace
}  // namespace tavik
