#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <span>
#include <string>
#include <thread>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "capture/base64.h"
#include "driver/data_object.h"
#include "driver/host_task.h"
#include "driver/resolve_level.h"
#include "fake/fake_platform.h"
#include "table.h"

namespace tavik {
namespace {

using fake::element;
using fake::FakeDesktop;
using platform::UIElementRef;

namespace json = boost::json;
using Calls = std::vector<std::string>;
using ArrangedCases = Table<std::string, std::string, std::string, std::function<void(FakeDesktop&)>>;

/// An application whose main window has this many times the child, which is also its focused element.
UIElementRef appElement(std::size_t count, const std::string& role, const std::string& value) {
  const UIElementRef child = element({{"AXRole", role}, {"AXValue", value}});
  const UIElementRef window = element({{"AXChildren", std::vector(count, child)}});
  return element({{"AXMainWindow", window}, {"AXFocusedUIElement", child}});
}

/// Safari in front, with a window of 1200x900 and a tree of 7 nodes with 60 characters; Vault behind it, which the
/// policy names, and whose tree holds a secret.
FakeDesktop twoApplications() {
  const auto safari = fake::application(1, "com.apple.Safari", "Safari");
  const platform::Window window{1, platform::OwningApplication{1}, true, 0, {0, 0, 1200, 900}};
  const platform::Window behind{2, platform::OwningApplication{2}, true, 0, {0, 0, 1200, 900}};
  return {.environment = {{"TAVIK_PERCEPTION_CONFIG", "/policy"}},
          .files = {{"/policy", "bundle_id_blocklist:\n- org.v*\nax_role_text_blocklist:\n- AXSecureTextField\n"}},
          .applications = {safari, fake::application(2, "org.vault", "Vault")},
          .frontmost = safari,
          .screen = platform::Screen{.screenNumber = 5, .backingScaleFactor = 2},
          .applicationElements = {{1, appElement(6, "AXStaticText", "0123456789")},
                                  {2, appElement(1, "AXSecureTextField", "hunter2")}},
          .content = platform::ShareableContent{.displays = {{1, 6000, 4000}}, .windows = {window, behind}}};
}

std::ptrdiff_t calls(const FakeDesktop& desktop, std::string_view name) {
  return std::ranges::count(desktop.calls, name);
}

/// The one object that the pass writes for this request.
json::object answer(FakeDesktop& desktop, std::string request) {
  desktop.input = std::move(request);
  EXPECT_EQ(hostTask(fake::makePlatform(desktop)), 0);
  EXPECT_EQ(desktop.output.find('\n'), desktop.output.size() - 1) << "exactly one line: " << desktop.output;
  return json::parse(desktop.output).as_object();
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
  return json::string(url);
}

TEST(ResolveLevel, GlancesOnlyWhereTheTreeSaysMuch) {
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodeCount = 100, .textChars = 50}), Level::read);
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodeCount = 5, .textChars = 51}), Level::read);
  EXPECT_EQ(resolveLevel(Level::auto_, {.nodeCount = 6, .textChars = 51}), Level::glance);
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
  const auto large = dataObject({.ax = {.nodeCount = 123'456, .textChars = 234'567}}, {});
  EXPECT_TRUE(large.at("ax_node_count") == 123'456 && large.at("ax_text_chars") == 234'567) << large;
  EXPECT_TRUE(desktop.error.empty());
}

TEST(RunMain, ChoosesLevelAndImageFromTheRequest) {
  const std::string best = R"("level":"pixel_perfect")", axOnly = R"("level":"ax_only")";
  const std::string screen = R"("target":"screen")", noTree = R"("include_ax_tree":false)";
  const std::string region = R"("target":"region","region":{"x":1,"y":2,"w":3,"h":4})";
  const auto secret = [](auto& d) { d.applicationElements[1] = appElement(1, "AXSecureTextField", "hunter2"); };
  const auto onAThread = [](auto& d) { d.deliver = [](const auto& handle) { std::thread(handle).detach(); }; };
  const auto twice = [](auto& d) { d.deliver = [](const auto& handle) { handle(), handle(); }; };
  for (const auto& [reason, fields, level, image, arrange] : ArrangedCases{
           {"as it is", best, "pixel_perfect", "png 1200x900", {}},
           {"but bounded", R"("level":"pixel_perfect","target":"screen")", "pixel_perfect", "png 4096x2730", {}},
           {"the level's quality", best + R"(,"format":"jpeg")", "pixel_perfect", "jpeg 1200x900 0.85", {}},
           {"a bound", R"("max_long_edge_px":600)", "glance", "jpeg 600x450 0.70", {}},
           {"another format, no bound", R"("format":"JPEG","max_long_edge_px":-1)", "glance", "jpeg 1200x900 -", {}},
           {"ax_only", axOnly, "ax_only", "", {}},
           {"has no image though one is wanted", axOnly + R"(,"include_image":true)", "ax_only", "", {}},
           {"no image wanted", R"("include_image":false)", "glance", "", {}},
           {"no tree: nobody is asked", noTree, "read", "jpeg 1200x900 0.85", {}},
           {"a screen has no tree", screen, "read", "jpeg 1600x1066 0.85", {}},
           {"a region", region, "read", "jpeg 3x4 0.85", {}},
           {"the focus", R"("target":"focused_element")", "read", "jpeg 1200x900 0.85", {}},
           {"without accessibility", best, "pixel_perfect", "png 1200x900", [](auto& d) { d.isTrusted = false; }},
           {"a picture beside a secret", best, "pixel_perfect", "png 1200x900", secret},
           {"an answer on another thread", best, "pixel_perfect", "png 1200x900", onAThread},
           {"an answer that comes twice", best, "pixel_perfect", "png 1200x900", twice},
       }) {
    auto desktop = twoApplications();
    if (arrange) arrange(desktop);
    const auto response = data(desktop, R"({"app_name":" safari",)" + fields + "}");
    ASSERT_FALSE(response.empty()) << reason;
    EXPECT_EQ(response.at("level_used"), json::value(level)) << reason;
    EXPECT_EQ(response.at("image"), imageURL(image)) << reason;
    EXPECT_TRUE(response.at("tcc_screen_recording") == true && !response.contains("sensitive_app_match")) << reason;
    EXPECT_EQ(response.at("tcc_accessibility"), desktop.isTrusted) << reason;
    EXPECT_EQ(desktop.output.find("hunter2"), std::string::npos) << reason;
    EXPECT_EQ(response.at("redaction_applied"), desktop.output.find("<redacted>") != std::string::npos) << reason;
    EXPECT_EQ(calls(desktop, "preflight"), image.empty() ? 0 : 2) << reason;
    EXPECT_EQ(calls(desktop, "isProcessTrusted") > 0, fields != noTree) << reason;
  }
}

TEST(RunMain, AsksThePlatformInThisOrderAndNothingElse) {
  const Calls tree = {"isProcessTrusted", "isProcessTrusted", "createApplication", "prefetch 8"};
  const Calls picture = {"preflight", "preflight", "shareableContent", "delivered", "captureImage", "delivered"};
  const Calls byIdentifier = {"runningApplicationsWithBundleIdentifier"}, byName = {"runningApplications"};
  const Calls context = {"currentDate", "mainScreen"};
  const Calls front = {"frontmostApplication"}, screen = {"currentDate", "frontmostApplication", "mainScreen"},
              policy = {"environmentVariable"};
  const Table<std::vector<Calls>> cases{
      {R"({"app_bundle_id":"com.apple.Safari","app_name":"x"})", {byIdentifier, policy, tree, picture, context}},
      {R"({"app_bundle_id":"x","app_name":"Safari","level":"ax_only"})", {byIdentifier, byName, policy, tree, context}},
      {R"({"app_bundle_id":" ","app_name":"Vault","include_ax_tree":false})", {byName, policy, context}},
      {R"({"app_bundle_id":"org.vault","target":"screen","include_ax_tree":false})", {policy, front, picture, screen}},
  };
  for (const auto& [request, parts] : cases) {
    auto desktop = twoApplications();
    desktop.deliver = [&](const auto& handle) { handle(), desktop.calls.emplace_back("delivered"); };
    data(desktop, request);
    Calls expected = {"readInputToEnd"};
    for (const auto& part : parts) expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(desktop.calls, expected) << request;
  }
}

/// That the answer names Vault and has no picture of it, nor anybody the secret, if it is a match.
void expectMatch(bool isMatch, const json::object& response, const FakeDesktop& desktop, const std::string& reason) {
  const auto match = R"("sensitive_app_match":true,"sensitive_bundle_id":"org.vault")";
  EXPECT_TRUE(response.at("image").is_null() == isMatch && response.at("redaction_applied") == isMatch) << reason;
  EXPECT_EQ(desktop.output.find(match) != std::string::npos, isMatch) << reason;
  EXPECT_EQ(desktop.output.find("hunter2"), std::string::npos) << reason;
}

TEST(RunMain, KeepsSensitiveApplicationsOutOfThePicture) {
  for (const auto& [reason, request, isMatch, vaultIsFrontmost] : Table<std::string, bool, bool>{
           {"the target", R"({"app_name":"Vault"})", true, false},
           {"though no image was wanted", R"({"app_name":"Vault","level":"ax_only"})", true, false},
           {"not the frontmost, for another target", R"({"app_name":"Safari"})", false, true},
           {"not one that is merely named", R"({"target":"screen","app_name":"Vault"})", false, false},
       }) {
    auto desktop = twoApplications();
    if (vaultIsFrontmost) desktop.frontmost = desktop.applications[1];
    expectMatch(isMatch, data(desktop, request), desktop, reason);
    EXPECT_EQ(calls(desktop, "preflight") > 0, !isMatch) << reason;
  }
}

TEST(RunMain, ShowsNothingOfASensitiveApplicationThatComesToTheFrontMeanwhile) {
  for (const auto& [request, questions] : Table<int>{
           {R"({"target":"focused_element"})", 4},
           {R"({"target":"screen"})", 2},
           {R"({"target":"region","region":{"x":1,"y":2,"w":3,"h":4}})", 2},
       }) {
    for (int step = 1; step <= questions + 1; ++step) {
      const auto reason = request + ", question " + std::to_string(step);
      auto desktop = twoApplications();
      desktop.switchesAt = {step};
      expectMatch(step <= questions, data(desktop, request), desktop, reason);
      EXPECT_EQ(calls(desktop, "preflight") > 0, step > 1) << reason;
      EXPECT_TRUE(step <= questions || calls(desktop, "frontmostApplication") == questions) << reason << " is too many";
    }
  }
  const auto saysSo = [](const std::string& request, const std::set<int>& comesAndGoes) {
    auto desktop = twoApplications();
    desktop.switchesAt = comesAndGoes;
    return data(desktop, request).contains("sensitive_bundle_id");
  };
  EXPECT_TRUE(saysSo(R"({"target":"focused_element"})", {3, 4})) << "only for the picture";
  EXPECT_TRUE(saysSo(R"({"target":"screen"})", {1, 2})) << "only before it";
  auto desktop = twoApplications();
  desktop.content->windows[0].owningApplication->bundleIdentifiers = [] { return std::vector{std::string("org.v")}; };
  EXPECT_EQ(data(desktop, R"({"app_name":"Safari"})").at("sensitive_bundle_id"), "org.v") << "a window of another name";
}

TEST(RunMain, MatchesNoPatternWithAnApplicationThatHasNoIdentifier) {
  auto desktop = twoApplications();
  desktop.files["/policy"] = "bundle_id_blocklist:\n- unknown\n- ?*\n";
  const auto image = [&] { return data(desktop, R"({"target":"focused_element"})").at("image"); };
  desktop.frontmost = fake::application(1, std::nullopt, std::nullopt);
  EXPECT_EQ(image(), imageURL("jpeg 1200x900 0.85"));
  desktop.frontmost = nullptr;
  desktop.output.clear();
  EXPECT_EQ(image(), imageURL("jpeg 1600x1066 0.85")) << "nor nobody";
}

/// The reply of a code to the letter, as the callers know it.
json::object wholeReply(const std::string& code, const std::string& identifier) {
  std::ifstream file(TAVIK_ERROR_REPLIES);
  std::string text((std::istreambuf_iterator<char>(file)), {});
  if (const auto place = text.find("{identifier}"); place != std::string::npos) text.replace(place, 12, identifier);
  const auto replies = json::parse(text).as_array();
  const auto is = [&](const json::value& reply) { return reply.at("code") == json::value(code); };
  const auto* const found = std::ranges::find_if(replies, is);
  return found != replies.end() ? found->as_object() : json::object();
}

TEST(RunMain, MapsEveryFailureToItsError) {
  const std::string safari = R"({"app_name":"Safari"})", noImage = R"({"app_name":"Safari","include_image":false})";
  const std::string screen = R"({"target":"screen"})", region = R"({"target":"region"})";
  const std::string noTarget = "target_required", notRunning = "target_app_not_running";
  const std::string mayNotRead = "accessibility_permission_required", failed = "capture_failed";
  const std::string mayNotSee = "screen_recording_permission_required", fallback = "helper_serialize_failed";
  const auto without = [](auto... members) { return [=](FakeDesktop& d) { ((d.*members = {}), ...); }; };
  const auto mute = without(&FakeDesktop::isTrusted), blind = without(&FakeDesktop::mayRecordScreen);
  const auto muteAndBlind = without(&FakeDesktop::isTrusted, &FakeDesktop::mayRecordScreen);
  const auto muteAndEmpty = without(&FakeDesktop::isTrusted, &FakeDesktop::content);
  const auto minimized = [](auto& d) { d.content->windows[0].isOnScreen = false; };
  const auto unencodable = [](auto& d) { d.imageSize = {-1, -1}; };
  const auto dropping = [](auto& d) { d.deliver = [](const auto& handle) { std::thread([handle] {}).detach(); }; };
  for (const auto& [reason, request, code, identifier, arrange] : ArrangedCases{
           {"no input", "", noTarget, {}, {}},
           {"empty names", R"({"app_bundle_id":"","app_name":""})", noTarget, {}, {}},
           {"nobody of that name", R"({"app_name":" No One "})", notRunning, " No One ", {}},
           {"nor identifier", R"({"app_name":"N","app_bundle_id":"org"})", notRunning, "org", {}},
           {"a blank one is one", R"({"app_bundle_id":" "})", notRunning, " ", {}},
           {"even an empty one", R"({"app_name":"N","app_bundle_id":""})", notRunning, "", {}},
           {"a target and no name", R"({"target":"app"})", notRunning, "<unspecified>", {}},
           {"no permission to capture", safari, mayNotSee, "", blind},
           {"before that for the tree", safari, mayNotSee, "", muteAndBlind},
           {"no tree, and no image", noImage, mayNotRead, "", mute},
           {"nor of a sensitive application", R"({"app_name":"Vault"})", mayNotRead, "", mute},
           {"it replaces the capture's error", safari, mayNotRead, "", muteAndEmpty},
           {"no content", safari, failed, "", without(&FakeDesktop::content)},
           {"no display", safari, "no_primary_display", "", [](auto& d) { d.content->displays.clear(); }},
           {"no window", safari, "target_app_has_no_window", "", [](auto& d) { d.content->windows.clear(); }},
           {"minimized", safari, "target_window_minimized", "", minimized},
           {"a region without one", region, failed, {}, {}},
           {"no screenshot", safari, failed, "", without(&FakeDesktop::imageSize)},
           {"no encoding", safari, failed, "", unencodable},
           {"a backend that throws", safari, failed, "", [](auto& d) { d.deliver = [](const auto&) { throw 1; }; }},
           {"a backend that never answers", safari, fallback, "", [](auto& d) { d.deliver = [](const auto&) {}; }},
           {"nor does a thread of it", safari, fallback, "", dropping},
           {"a clock that throws", screen, fallback, "", without(&FakeDesktop::date)},
           {"no number of JSON's", screen, fallback, "", [](auto& d) { d.screen->backingScaleFactor = 1.0 / 0.0; }},
       }) {
    auto desktop = twoApplications();
    if (arrange) arrange(desktop);
    const auto response = answer(desktop, request);
    EXPECT_TRUE(response == wholeReply(code, identifier)) << reason << ": " << response;
    EXPECT_TRUE(code != failed || desktop.lastResort + "\n" == desktop.output) << reason << ": should it get stuck";
    EXPECT_TRUE(code != noTarget || desktop.calls == Calls{"readInputToEnd"}) << reason << ": nobody is asked";
  }
}

}  // namespace
}  // namespace tavik
