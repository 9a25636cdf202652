#include <functional>
#include <span>
#include <string>
#include <tuple>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "capture/base64.h"
#include "driver/host_task.h"
#include "driver/resolve_level.h"
#include "fake/fake_platform.h"

namespace tavik {
namespace {

using fake::Calls;
using fake::Delivery;
using fake::element;
using fake::FakeDesktop;
using platform::UIElementRef;

namespace json = boost::json;
using Arrange = std::function<void(FakeDesktop&)>;

constexpr std::int32_t kSafari = 10, kVault = 11;

/// An application whose main window has this many times the child, which is also its focused element.
UIElementRef appElement(std::size_t count, const std::string& role, const std::string& value) {
  const UIElementRef child = element({{"AXRole", role}, {"AXValue", value}});
  const UIElementRef window = element({{"AXChildren", std::vector(count, child)}});
  return element({{"AXMainWindow", window}, {"AXFocusedUIElement", child}});
}

/// Safari in front, with a window of 1200x900 and a tree of 7 nodes with 60 characters; Vault behind it, which the
/// policy names, and whose tree holds a secret.
FakeDesktop twoApplications() {
  const auto safari = fake::application(kSafari, "com.apple.Safari", "Safari");
  const platform::Rect frame{0, 0, 1200, 900};
  const platform::OwningApplication owners[] = {{kSafari}, {kVault}};
  return {.environment = {{"TAVIK_PERCEPTION_CONFIG", "/policy"}},
          .files = {{"/policy", "bundle_id_blocklist:\n- org.v*\nax_role_text_blocklist:\n- AXSecureTextField\n"}},
          .applications = {safari, fake::application(kVault, "org.vault", "Vault")},
          .frontmost = safari,
          .screen = platform::Screen{.screenNumber = 5, .backingScaleFactor = 2},
          .applicationElements = {{kSafari, appElement(6, "AXStaticText", "0123456789")},
                                  {kVault, appElement(1, "AXSecureTextField", "hunter2")}},
          .content =
              platform::ShareableContent{.displays = {{1, 6000, 4000}},
                                         .windows = {{1, owners[0], true, 0, frame}, {2, owners[1], true, 0, frame}}},
          .image = fake::image({})};
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

/// The data object of a successful answer; on failure an empty one.
json::object data(FakeDesktop& desktop, const std::string& request) {
  const auto response = answer(desktop, request);
  EXPECT_EQ(response.at("ok"), true) << response;
  return response.contains("data") ? response.at("data").as_object() : json::object();
}

/// The data URL of the picture that the fake platform describes so; null for "".
json::value imageURL(const std::string& description) {
  if (description.empty()) return nullptr;
  auto url = "data:image/" + description.substr(0, description.find(' ')) + ";base64,";
  appendBase64(std::as_bytes(std::span(description)), url);
  return json::value(url);
}

TEST(ResolveLevel, GlancesOnlyWhereTheTreeSaysMuch) {
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodes = 100, .textChars = 50}), Level::read);
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodes = 5, .textChars = 51}), Level::read);
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodes = 6, .textChars = 51}), Level::glance);
  for (const auto level : {Level::ax_only, Level::glance, Level::read, Level::pixel_perfect})
    EXPECT_EQ(resolveLevel(level, {.nodes = -1, .textChars = 1000}), level);
}

TEST(RunMain, AnswersATypicalRequestWhole) {
  auto desktop = twoApplications();
  auto expected = json::parse(R"({"level_used":"glance","caption":null,"cache_hit":false,"ax_node_count":7,
      "ax_text_chars":60,"tcc_screen_recording":true,"tcc_accessibility":true,"redaction_applied":false,
      "context":{"captured_at_utc":"1970-01-01T00:00:00.000Z","app_bundle_id":"com.apple.Safari","app_name":"Safari",
                 "display_id":5,"scale_factor":2.0}})");
  const json::array children(6, {{"role", "AXStaticText"}, {"value", "0123456789"}});
  expected.as_object()["ax_tree"] = {{"children", children}};
  expected.as_object()["image"] = imageURL("jpeg 800x600 0.70");
  EXPECT_EQ(data(desktop, R"({"app_bundle_id":"com.apple.Safari"})"), expected);
  EXPECT_EQ(desktop.filter->includedWindow->windowID, 1U);
  EXPECT_TRUE(desktop.error.empty());
}

TEST(RunMain, ChoosesLevelAndImageFromTheRequest) {
  using Case = std::tuple<std::string, std::string, std::string, std::string, int>;
  const std::string best = R"("level":"pixel_perfect")", axOnly = R"("level":"ax_only")";
  const std::string screen = R"("target":"screen")";
  for (const auto& [reason, fields, level, image, trustQueries] : {
           Case{"read", R"("level":"read")", "read", "jpeg 1200x900 0.85", 2},
           Case{"as it is", best, "pixel_perfect", "png 1200x900", 2},
           Case{"but bounded", best + "," + screen, "pixel_perfect", "png 4096x2730", 2},
           Case{"the level's quality", best + R"(,"format":"jpeg")", "pixel_perfect", "jpeg 1200x900 0.85", 2},
           Case{"a bound", R"("max_long_edge_px":600)", "glance", "jpeg 600x450 0.70", 2},
           Case{"another format, no bound", R"("format":"JPEG","max_long_edge_px":-1)", "glance", "jpeg 1200x900 -", 2},
           Case{"ax_only", axOnly, "ax_only", "", 2},
           Case{"has no image though one is wanted", axOnly + R"(,"include_image":true)", "ax_only", "", 2},
           Case{"no image wanted", R"("include_image":false)", "glance", "", 2},
           Case{"no tree: nobody is asked", R"("include_ax_tree":false)", "read", "jpeg 1200x900 0.85", 0},
           Case{"a screen has no tree", screen, "read", "jpeg 1600x1066 0.85", 2},
           Case{"a region", R"("target":"region","region":{"x":1,"y":2,"w":3,"h":4})", "read", "jpeg 3x4 0.85", 2},
           Case{"the focus", R"("target":"focused_element")", "read", "jpeg 1200x900 0.85", 2},
       }) {
    auto desktop = twoApplications();
    const auto response = data(desktop, R"({"app_name":" safari",)" + fields + "}");
    ASSERT_FALSE(response.empty()) << reason;
    EXPECT_EQ(response.at("level_used"), json::value(level)) << reason;
    EXPECT_EQ(response.at("image"), imageURL(image)) << reason;
    EXPECT_EQ(response.at("tcc_screen_recording"), true) << reason;
    EXPECT_EQ(response.at("tcc_accessibility"), true) << reason;
    EXPECT_FALSE(response.contains("sensitive_app_match")) << reason;
    EXPECT_EQ(desktop.calls.preflight, image.empty() ? 0 : 2) << reason;
    EXPECT_EQ(desktop.calls.isProcessTrusted, trustQueries) << reason;
    EXPECT_EQ(desktop.calls.captureImage, image.empty() ? 0 : 1) << reason;
  }
}

TEST(RunMain, KeepsSensitiveApplicationsOutOfThePicture) {
  using Case = std::tuple<std::string, std::string, bool, bool>;
  for (const auto& [reason, request, isMatch, vaultIsFrontmost] : {
           Case{"the target", R"({"app_name":"Vault"})", true, false},
           Case{"though no image was wanted", R"({"app_name":"Vault","level":"ax_only"})", true, false},
           Case{"the frontmost, for the whole screen", R"({"target":"screen"})", true, true},
           Case{"the frontmost, for its focus", R"({"target":"focused_element"})", true, true},
           Case{"not the frontmost, for another target", R"({"app_name":"Safari"})", false, true},
           Case{"not one that is merely named", R"({"target":"screen","app_name":"Vault"})", false, false},
       }) {
    auto desktop = twoApplications();
    if (vaultIsFrontmost) desktop.frontmost = desktop.applications[1];
    const auto response = data(desktop, request);
    EXPECT_EQ(response.at("image").is_null(), isMatch) << reason;
    EXPECT_EQ(response.contains("sensitive_app_match"), isMatch) << reason;
    EXPECT_EQ(response.at("redaction_applied"), isMatch) << reason;
    EXPECT_EQ(desktop.output().find("hunter2"), std::string::npos) << reason;
    if (!isMatch) continue;
    EXPECT_EQ(response.at("sensitive_app_match"), true) << reason;
    EXPECT_EQ(response.at("sensitive_bundle_id"), "org.vault") << reason;
    EXPECT_EQ(desktop.calls.preflight + desktop.calls.shareableContent + desktop.calls.captureImage, 0) << reason;
  }
}

TEST(RunMain, WithholdsASecretInAnyApplication) {
  auto desktop = twoApplications();
  desktop.files["/policy"] = "ax_role_text_blocklist:\n- AXSecureTextField\n";
  const auto response = data(desktop, R"({"app_name":"Vault"})");
  EXPECT_EQ(response.at("ax_tree").at("children").at(0).at("value"), "<redacted>");
  EXPECT_EQ(response.at("redaction_applied"), true);
  EXPECT_EQ(response.at("image"), imageURL("jpeg 1200x900 0.85"));
}

TEST(RunMain, MapsEveryFailureToItsError) {
  using Case = std::tuple<std::string, std::string, std::string, std::string, Arrange>;
  const std::string safari = R"({"app_name":"Safari"})", noImage = R"({"app_name":"Safari","include_image":false})";
  const std::string notRunning = "target_app_not_running", lsappinfo = "use `lsappinfo list`";
  const std::string mayNotRead = "accessibility_permission_required", settings = "open System Settings";
  const std::string mayNotCapture = "screen_recording_permission_required", failed = "capture_failed";
  const auto usual = [](FakeDesktop&) {};
  const auto without = [](auto... members) { return [=](FakeDesktop& d) { ((d.*members = {}), ...); }; };
  const auto mute = without(&FakeDesktop::isTrusted), blind = without(&FakeDesktop::mayRecordScreen);
  const auto muteAndBlind = without(&FakeDesktop::isTrusted, &FakeDesktop::mayRecordScreen);
  const auto muteAndEmpty = without(&FakeDesktop::isTrusted, &FakeDesktop::content);
  const auto noDisplay = [](FakeDesktop& d) { d.content->displays.clear(); };
  const auto noWindow = [](FakeDesktop& d) { d.content->windows.clear(); };
  const auto minimized = [](FakeDesktop& d) { d.content->windows[0].isOnScreen = false; };
  const auto unencodable = [](FakeDesktop& d) { d.image = fake::image({3, 3}, false); };
  for (const auto& [reason, request, code, hint, arrange] : {
           Case{"no input", "", "target_required", "pass app_bundle_id='<bundle.id>'", usual},
           Case{"no request", "[1]", "target_required", "pass app_bundle_id", usual},
           Case{"empty names", R"({"app_bundle_id":"","app_name":""})", "target_required", "pass app_", usual},
           Case{"nobody of that name", R"({"app_name":" Nobody "})", notRunning, lsappinfo, usual},
           Case{"a target and no name", R"({"target":"app"})", notRunning, lsappinfo, usual},
           Case{"no permission to capture", safari, mayNotCapture, settings, blind},
           Case{"before that for the tree", safari, mayNotCapture, settings, muteAndBlind},
           Case{"no tree, and no image", noImage, mayNotRead, settings, mute},
           Case{"nor of a sensitive application", R"({"app_name":"Vault"})", mayNotRead, settings, mute},
           Case{"it replaces the capture's error", safari, mayNotRead, settings, muteAndEmpty},
           Case{"no content", safari, failed, "retry", without(&FakeDesktop::content)},
           Case{"no display", safari, "no_primary_display", "retry after a brief wait", noDisplay},
           Case{"no window", safari, "target_app_has_no_window", "verify NSRunningApplication.windows", noWindow},
           Case{"minimized", safari, "target_window_minimized", "retry with allow_focus_steal=true OR", minimized},
           Case{"a region without one", R"({"target":"region"})", failed, "retry", usual},
           Case{"no screenshot", safari, failed, "retry", without(&FakeDesktop::image)},
           Case{"no encoding", safari, failed, "retry", unencodable},
           Case{"a backend that throws", safari, failed, "retry", [](auto& d) { d.delivery = Delivery::byThrowing; }},
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
  const std::string before = "No running application matched target identifier ";
  for (const auto& [request, identifier] :
       {std::pair{R"({"app_name":" No One ","app_bundle_id":"org.none"})", "org.none"},
        {R"({"app_name":" No One "})", " No One "},
        {R"({"app_name":"No One","app_bundle_id":""})", ""},
        {R"({"target":"app"})", "<unspecified>"}}) {
    auto desktop = twoApplications();
    const auto error = answer(desktop, request).at("error").as_string();
    EXPECT_TRUE(error.starts_with(before + identifier + ". Pass `app_bundle_id` for an app that's")) << error;
  }
}

TEST(RunMain, SucceedsWithAnImageWithoutAccessibility) {
  auto desktop = twoApplications();
  desktop.isTrusted = false;
  auto response = data(desktop, R"({"app_name":"Safari"})");
  EXPECT_TRUE(response["ax_tree"].is_null() && response["ax_node_count"] == 0);
  EXPECT_TRUE(response["tcc_accessibility"] == false && response["level_used"] == "read");
}

TEST(RunMain, AsksNothingOfTheDesktopWithoutATarget) {
  auto desktop = twoApplications();
  answer(desktop, R"({"level":"read"})");
  EXPECT_EQ(desktop.calls, Calls());
}

TEST(RunMain, ResumesOnceFromAnyThread) {
  for (const auto delivery : {Delivery::fromAnotherThread, Delivery::twice}) {
    auto desktop = twoApplications();
    desktop.delivery = delivery;
    EXPECT_EQ(data(desktop, R"({"app_name":"Safari"})").at("image"), imageURL("jpeg 800x600 0.70"));
  }
}

TEST(RunMain, WritesTheFallbackForAnythingUnforeseen) {
  for (const Arrange& arrange :
       {Arrange([](auto& d) { d.delivery = Delivery::never; }), Arrange([](auto& d) { d.date = std::nullopt; }),
        Arrange([](auto& d) { d.screen->backingScaleFactor = 0.0 / 0.0; })}) {
    auto desktop = twoApplications();
    arrange(desktop);
    EXPECT_EQ(answer(desktop, R"({"target":"screen"})").at("code"), "helper_serialize_failed");
  }
}

}  // namespace
}  // namespace tavik
