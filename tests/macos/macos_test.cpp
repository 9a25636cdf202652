#include <cmath>
#include <functional>
#include <iostream>
#include <span>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "capture/base64.h"
#include "driver/host_task.h"
#include "fake/fake_platform.h"
#include "macos/fake/world.h"
#include "platform/platform.h"

namespace tavik {
namespace {

using namespace fake;
using namespace std::string_literals;
namespace json = boost::json;

/// Runs `pass` to the exit of a process of its own. Nothing, LeakSanitizer included, may write to standard error, where
/// failures go, so that they count whatever the status.
void run(const std::function<void()>& pass) {
  const auto passAndTell = [&] {
    pass();
    waitForHandlers();
    world() = {};
    const auto& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
    for (int i = 0; i < result.total_part_count(); ++i) std::cerr << result.GetTestPartResult(i).message() << '\n';
    return 0;
  };
  EXPECT_EXIT((::alarm(20), platform::runToExit(passAndTell)), testing::ExitedWithCode(0), "^$");
}

/// What is asked, in which world, and what the answer has to hold at a JSON pointer (null: nothing there).
struct Case {
  std::string request, pointer;
  json::value expected;
  std::set<std::string> failing = {};
  std::function<void(World&)> arrange = [](World&) {};
};

/// A process that shows an element in a window of another one.
constexpr std::int32_t kRemoteView = 77;

Held field(const std::string& role, const std::string& value) {
  return element({{"AXRole", text(role)}, {"AXValue", text(value)}});
}

/// A child of a window below which the walk reaches its deepest level, where nobody may ask for children.
Held chainToTheDeepestLevel() {
  auto chain = element({{"AXHelp", text("deepest")}, {"AXChildren", object(Untouchable{})}});
  for (int depth = 7; depth > 0; --depth) chain = element({{"AXChildren", list({chain})}});
  return chain;
}

/// A window with everything that an element may say, truthful or not, and more children than are walked.
Held mailWindow() {
  List children{
      field("AXSecureTextField", "hunter2"),
      element({{"AXRole", text("AXSlider")},
               {"AXValue", object(0.5)},
               {"AXTitle", object(true)},
               {"AXHelp", list({})},
               {"AXDescription", point(1, 2)},
               {"AXPosition", point(3, 4)},
               {"AXChildren", text("none")}}),
      element({{"AXTitle", text(std::string("a") + kUnpairedSurrogate + "z \xF0\x9F\x93\xAC")},
               {"AXValue", nullptr},
               {"AXPosition", size(8, 9)},
               {"AXSize", size(30.9, 40)}}),
      element({{"AXPosition", point(0, 0)}, {"AXSize", size(std::nan(""), 1)}, {"AXChildren", list({})}}),
      element({{"AXPosition", text("left")},
               {"AXSize", object(3.0)},
               {"AXChildren", list({field("AXImage", ""), text("a stranger")})}}),
  };
  children.push_back(chainToTheDeepestLevel());
  children.push_back(element({{"AXHelp", text("6")}, {"AXChildren", object(Itself{})}}));
  children.push_back(element({{"AXHelp", text("7")}}, kRemoteView));
  while (children.size() < 60) children.push_back(element({{"AXHelp", text(std::to_string(children.size()))}}));
  return element({{"AXRole", text("AXWindow")},
                  {"AXTitle", text("Inbox")},
                  {"AXHelp", text("Letters")},
                  {"AXDescription", text("unread")},
                  {"AXPosition", point(-3.5, 12.9)},
                  {"AXSize", size(1200, 900)},
                  {"AXChildren", list(children)}});
}

/// The path of a file with this text, which is gone with the process.
std::string file(const std::string& text) {
  const int descriptor = ::memfd_create("policy", 0);
  EXPECT_EQ(::write(descriptor, text.data(), text.size()), std::ssize(text));
  return "/proc/self/fd/" + std::to_string(descriptor);
}

const auto kPolicy = file("bundle_id_blocklist:\n- org.v*\nax_role_text_blocklist:\n- AXSecureTextField\n"),
           kLenientPolicy = file("#\n");

World twoApplications() {
  const Dictionary mail{{"AXMainWindow", mailWindow()}, {"AXFocusedUIElement", field("AXTextArea", "Dear Ada")}};
  const Dictionary vault{{"AXWindows", list({field("AXWindow", "first"), field("AXWindow", "second")})}};
  const Application mailApplication{7, "com.example.Mail", "Mail", 0, mail};
  return {.resource = kPolicy,
          .applications = {{8, "org.vault", "Vault", 0, vault},
                           {3, "com.example.Mail", "Mail agent", 1},
                           mailApplication,
                           {9, std::nullopt, "Hidden", 0},
                           {10, "org.hidden", "Hidden", 0}},
          .frontmost = mailApplication,
          .scale = 1.5,
          .screen = {{"NSScreenNumber", object(5.0)}},
          .displays = {{2, {-1440, 100, 1440, 900}}, {3, {0, 0, 800, 600}}},
          .windows = {{70, std::nullopt, true, 0, {-1440, 100, 1440, 24}},
                      {71, {{7}}, true, 3, {-1440, 100, 2000, 2000}},
                      {72, {{7}}, true, 0, {-1420, 130, 1000.7, 600.9}},
                      {91, {{9}}, false, 0, {0, 0, 300, 200}}}};
}

/// Asks the whole program; its standard streams are in memory.
void expectAnswers(const std::vector<Case>& cases) {
  run([&] {
    for (const auto& [request, pointer, expected, failing, arrange] : cases) {
      world() = twoApplications();
      world().failing = failing;
      arrange(world());
      FakeDesktop console{.input = request};
      auto platform = platform::makePlatform({});
      platform.streams = std::move(makePlatform(console).streams);
      EXPECT_EQ(hostTask(platform), 0);
      EXPECT_EQ(console.output.find('\n'), console.output.size() - 1) << "exactly one line: " << console.output;
      boost::system::error_code failure;
      const auto response = json::parse(console.output, failure);
      const auto* const found = response.find_pointer(pointer, failure);
      EXPECT_EQ(found != nullptr ? *found : json::value(), expected) << request << testing::PrintToString(failing);
      EXPECT_EQ(console.error, "");
    }
  });
}

/// The data URL of the picture that the fake encoder describes so.
json::value imageURL(const std::string& type, const std::string& description) {
  const auto content = "public." + type + ", " + description;
  std::string url = "data:image/" + type + ";base64,";
  appendBase64(std::as_bytes(std::span(content)), url);
  return json::value(url);
}

const std::string kMail = R"({"app_bundle_id":"com.example.Mail")", kScreen = R"({"target":"screen"})";
const std::string kTree = kMail + R"(,"level":"ax_only"})";

TEST(MacOS, ReadsTheSameTreeHoweverReadsFail) {
  auto tree = json::parse(
      R"({"role":"AXWindow","title":"Inbox","help":"Letters","description":"unread","frame":[-3,12,1200,900],"children":[
          {"role":"AXSecureTextField","value":"<redacted>"}, {"role":"AXSlider"},
          {"title":"a?z \uD83D\uDCEC","frame":[0,0,30,40]}, {}, {"frame":[0,0,0,0]}]})");
  json::value chain{{"help", "deepest"}};
  for (int depth = 7; depth > 0; --depth) chain = json::object{{"children", json::array{chain}}};
  tree.at("children").as_array().push_back(chain);
  for (int i = 6; i < 50; ++i) tree.at("children").as_array().emplace_back(json::object{{"help", std::to_string(i)}});
  const std::string batch = "AXUIElementCopyMultipleAttributeValues", untouched = "an untouched out-parameter";
  const std::vector<std::set<std::string>> failures{
      {},
      {batch},
      {untouched},
      {batch, untouched},
      {"characters in one place"},
      {"a full batch"},
      {"a batched AXRole"},
      {"a batched AXSize"},
      {"a reason in a batch"},
      {"a single AXRole", "a single AXTitle", "a single AXValue", "a single AXPosition"}};
  constexpr int kMainWindow = 1, kElements = 1 + 50 + 7;  // the window, its children, what is below one of these
  std::vector<Case> cases{{kTree, "/data/ax_tree", tree, {}, [](World& w) { w.messages = kMainWindow + kElements; }}};
  constexpr int kSingly = 412;  // where no batch succeeds: one that fails, and every attribute that the walk reads
  for (const auto& failing : failures) {
    cases.push_back({kTree, "/data/ax_tree", tree, failing, [](World& w) { w.messages = kSingly; }});
  }
  expectAnswers(cases);
}

TEST(MacOS, AsksAProcessThatHangsOnceAndKeepsWhatHasAnswered) {
  const auto hangs = [](std::int32_t pid, int answers, int messages) {
    return [=](World& w) { w.answers = {{pid, answers}}, w.messages = messages; };
  };
  const json::value first{{"role", "AXSecureTextField"}, {"value", "<redacted>"}};
  const auto children = "/data/ax_tree/children";
  expectAnswers({
      {kTree, "/data/ax_tree", json::object(), {}, hangs(7, 0, 1)},
      // With the message to the remote view, which answers.
      {kTree, "/data/ax_tree/title", "Inbox", {}, hangs(7, 3, 5)},
      {kTree, children + "/0"s, first, {}, hangs(7, 3, 5)},
      {kTree, children + "/49"s, json::object(), {}, hangs(7, 3, 5)},
      {kTree, "/data/ax_tree", {{"role", "AXWindow"}}, {"AXUIElementCopyMultipleAttributeValues"}, hangs(7, 3, 4)},
      {kTree, children + "/7"s, json::object(), {}, hangs(kRemoteView, 0, 59)},
      {kTree, children + "/49"s, {{"help", "49"}}, {}, hangs(kRemoteView, 0, 59)},
  });
}

TEST(MacOS, TakesThePictureThatIsAskedFor) {
  const auto read = kMail + R"(,"level":"read"})", small = kMail + R"(,"max_long_edge_px":500})";
  const auto region = R"({"target":"region","region":{"x":-10,"y":20,"w":300,"h":200}})",
             negative = R"({"target":"region","region":{"x":-10,"y":20,"w":-300,"h":200}})";
  const auto focus = R"({"target":"focused_element","max_long_edge_px":0})";
  const std::string window = "1000x600 window 72 of display 2 at 0 0 1000 600";
  const auto jpeg = [](const std::string& description) { return imageURL("jpeg", "quality 0.850000, " + description); };
  expectAnswers({
      {read, "/data/image", jpeg(window)},
      {read, "/data/image", jpeg(window), {"AXIsProcessTrusted"}},
      {kMail + R"(,"level":"pixel_perfect"})", "/data/image", imageURL("png", window)},
      {kMail + R"(,"format":"jpg"})", "/data/image", imageURL("jpeg", window)},
      {small, "/data/image", jpeg("500x300 in P3 at quality 3 from " + window)},
      {small, "/data/image", jpeg("500x300 in device RGB at quality 3 from " + window), {"CGImageGetColorSpace"}},
      {small, "/data/image", jpeg(window), {"CGBitmapContextCreate"}},
      {small, "/data/image", jpeg(window), {"CGBitmapContextCreateImage"}},
      {kScreen, "/data/image", jpeg("1440x900 display 2")},
      {region, "/data/image", jpeg("300x200 display 2 -10 20 300 200")},
      {negative, "/data/image", jpeg("-300x200 display 2 -10 20 -300 200")},
      {focus, "/data/image", jpeg("2000x2000 window 71 of display 2 at 0 0 2000 2000")},
  });
}

TEST(MacOS, AnswersEveryFailureWithItsCode) {
  expectAnswers({
      {R"({"app_name":"Mail agent"})", "/code", "target_app_not_running"},
      {R"({"app_bundle_id":"com.example"})", "/code", "target_app_not_running"},
      {R"({"app_name":"hidden"})", "/code", "target_app_has_no_window"},
      {kMail + "}", "/code", "target_app_has_no_window", {}, [](World& w) { w.windows.clear(); }},
      {kScreen, "/code", "no_primary_display", {}, [](World& w) { w.displays.clear(); }},
      {kScreen, "/code", "screen_recording_permission_required", {"CGPreflightScreenCaptureAccess"}},
      {kTree, "/code", "accessibility_permission_required", {"AXIsProcessTrusted"}},
      {kScreen, "/code", "capture_failed", {"listing"}},
      {kScreen, "/code", "capture_failed", {"listing", "withholding the value"}},
      {kScreen, "/code", "capture_failed", {"listing", "giving an error"}},
      {kScreen, "/code", "capture_failed", {"capturing"}},
      {kScreen, "/code", "capture_failed", {"capturing", "withholding the value"}},
      {kScreen, "/code", "capture_failed", {"capturing", "giving an error"}},
      {kScreen, "/code", "capture_failed", {"CGImageDestinationCreateWithData"}},
      {kScreen, "/code", "capture_failed", {"CGImageDestinationFinalize"}},
  });
}

TEST(MacOS, DescribesApplicationsScreenAndPolicy) {
  const auto focus = R"({"target":"focused_element","include_image":false})", vault = R"({"app_name":" vault "})";
  const auto lenient = [](World& w) { w.environment = {{"TAVIK_PERCEPTION_CONFIG", text(kLenientPolicy)}}; };
  expectAnswers({
      {focus, "/data/ax_tree", {{"role", "AXTextArea"}, {"value", "Dear Ada"}}},
      {focus, "/data/ax_tree", nullptr, {}, [](World& w) { w.frontmost.reset(); }},
      {focus, "/data/context/app_bundle_id", "com.example.Mail"},
      {focus, "/data/context/app_bundle_id", "unknown", {}, [](World& w) { w.frontmost->bundleIdentifier.reset(); }},
      {focus, "/data/context/app_name", "Mail"},
      {focus, "/data/context/display_id", 5},
      {focus, "/data/context/display_id", 0, {}, [](World& w) { w.screen["NSScreenNumber"] = text("five"); }},
      {focus, "/data/context/display_id", 0, {}, [](World& w) { w.screen["NSScreenNumber"] = object(5.5); }},
      {focus, "/data/context/display_id", 0, {}, [](World& w) { w.screen.clear(); }},
      {focus, "/data/context/display_id", nullptr, {}, [](World& w) { w.scale.reset(); }},
      {focus, "/data/context/scale_factor", 1.5},
      {R"({"app_name":"hidden","level":"ax_only"})", "/data/context/app_bundle_id", "unknown"},
      {vault, "/data/ax_tree/value", "first"},
      {vault, "/data/sensitive_bundle_id", "org.vault"},
      {vault, "/code", "target_app_has_no_window", {}, lenient},
      {kTree, "/data/ax_tree/children/0/value", "hunter2", {}, lenient},
      {kTree, "/data/ax_tree/children/0/value", "<redacted>", {}, [](World& w) { w.resource.reset(); }},
  });
}

TEST(MacOS, CallsEachHandlerOnce) {
  run([] {
    for (const std::set<std::string>& failing : {std::set<std::string>{}, {"listing"}, {"capturing"}}) {
      world() = twoApplications();
      world().failing = failing;
      const auto platform = platform::makePlatform({});
      EXPECT_EQ(platform.host->userName(), "ada");
      int calls = 0;
      const auto count = [&calls](const auto&) { ++calls; };
      platform.screenCapture->getShareableContent({}, count);
      waitForHandlers();
      platform.screenCapture->captureImage({.display = {.displayID = 2}}, {.showsCursor = false, .queueDepth = 1},
                                           count);
      waitForHandlers();
      EXPECT_EQ(calls, 2) << testing::PrintToString(failing);
      bool isPicture = true;
      platform.screenCapture->captureImage({.display = {.displayID = 2}, .includedWindow = platform::Window{999}},
                                           {.showsCursor = false, .queueDepth = 1},
                                           [&](const auto& outcome) { isPicture = outcome.index() == 0; });
      waitForHandlers();
      EXPECT_FALSE(isPicture) << "of the whole display, in place of a window that is gone";
    }
  });
}

TEST(MacOS, ExitsWithTheStatusOfThePassAndLetsEveryoneSpeakWhoWaitsForThat) {
  const auto pass = [] { return std::atexit([] { std::cerr << "bye"; }), 3; };
  EXPECT_EXIT(platform::runToExit(pass), testing::ExitedWithCode(3), "^bye$");
}

}  // namespace
}  // namespace tavik
