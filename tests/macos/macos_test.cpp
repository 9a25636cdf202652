#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <span>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "capture/base64.h"
#include "driver/host_task.h"
#include "macos/fake/world.h"
#include "platform/platform.h"

namespace tavik {
namespace {

using namespace fake;
namespace json = boost::json;

/// A file without a name, which child processes have too.
class File {
 public:
  explicit File(const std::string& text) {
    std::fputs(text.c_str(), file_);
    std::rewind(file_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { std::fclose(file_); }
  int descriptor() const { return ::fileno(file_); }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor()); }
  std::string content() const {
    std::ostringstream text;
    text << std::ifstream(path()).rdbuf();
    return text.str();
  }

 private:
  std::FILE* file_ = std::tmpfile();
};

/// Runs `pass` to the exit of a process of its own, in a world of its own and with a time limit, and yields its output.
/// Neither the program nor the ledger, at the end, has a word to say on standard error.
std::string run(const std::function<std::int32_t()>& pass, const World& desktop, const std::string& input) {
  const File in(input), out(""), error("");
  std::fflush(nullptr);  // lest the child writes it once more
  const auto child = ::fork();
  if (child == 0) {
    ::dup2(in.descriptor(), STDIN_FILENO);
    ::dup2(out.descriptor(), STDOUT_FILENO);
    ::dup2(error.descriptor(), STDERR_FILENO);
    ::alarm(5);
    world() = desktop;
    std::atexit([] { std::fputs(liveObjects().c_str(), stderr); });
    platform::runToExit(pass);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(error.content(), "");
  return out.content();
}

/// What is asked, in which world, and what the answer has to hold at a JSON pointer (null: nothing there).
struct Case {
  std::string request, pointer;
  json::value expected;
  std::set<std::string> failing = {};
  std::function<void(World&)> arrange = [](World&) {};
};

Maker field(const std::string& role, const std::string& value) {
  return element({{"AXRole", text(role)}, {"AXValue", text(value)}});
}

/// A child of a window below which the walk reaches its deepest level, where nobody may ask for children.
Maker chainToTheDeepestLevel() {
  Maker chain = element({{"AXHelp", text("deepest")}, {"AXChildren", [] {
                                                         std::fputs("a list is read that nobody visits", stderr);
                                                         return nullptr;
                                                       }}});
  for (int depth = 7; depth > 0; --depth) chain = element({{"AXChildren", list({chain})}});
  return chain;
}

/// A window with everything that an element may say, truthful or not, and more children than are walked.
Maker mailWindow() {
  std::vector<Maker> children{
      field("AXSecureTextField", "hunter2"),
      element({{"AXRole", text("AXSlider")},
               {"AXValue", number(0.5)},
               {"AXTitle", boolean(true)},
               {"AXHelp", list({})},
               {"AXDescription", point(1, 2)},
               {"AXPosition", point(3, 4)},
               {"AXChildren", text("none")}}),
      element({{"AXTitle", text(std::string("a") + kUnpairedSurrogate + "z \xF0\x9F\x93\xAC")},
               {"AXValue", [] { return nullptr; }},
               {"AXPosition", size(8, 9)},
               {"AXSize", size(30.9, 40)}}),
      element({{"AXPosition", point(0, 0)}, {"AXSize", size(std::nan(""), 1)}, {"AXChildren", list({})}}),
      element({{"AXPosition", text("left")},
               {"AXSize", number(3)},
               {"AXChildren", list({field("AXImage", ""), text("a stranger")})}}),
  };
  children.push_back(chainToTheDeepestLevel());
  while (children.size() < 60) children.push_back(element({{"AXHelp", text(std::to_string(children.size()))}}));
  return element({{"AXRole", text("AXWindow")},
                  {"AXTitle", text("Inbox")},
                  {"AXHelp", text("Letters")},
                  {"AXDescription", text("unread")},
                  {"AXPosition", point(-3.5, 12.9)},
                  {"AXSize", size(1200, 900)},
                  {"AXChildren", list(children)}});
}

const File kPolicy("bundle_id_blocklist:\n- org.v*\nax_role_text_blocklist:\n- AXSecureTextField\n"),
    kLenientPolicy("#\n");

World twoApplications() {
  const Element mail{{"AXMainWindow", mailWindow()}, {"AXFocusedUIElement", field("AXTextArea", "Dear Ada")}};
  const Element vault{{"AXWindows", list({field("AXWindow", "first"), field("AXWindow", "second")})}};
  return {.resource = kPolicy.path(),
          .applications = {{3, "com.example.Mail", "Mail agent", 1},
                           {7, "com.example.Mail", "Mail", 0, mail},
                           {8, "org.vault", "Vault", 0, vault},
                           {9, std::nullopt, "Hidden", 0}},
          .frontmost = 7,
          .scale = 1.5,
          .screenNumber = number(5),
          .displays = {{2, 1440, 900}, {3, 800, 600}},
          .windows = {{70, std::nullopt, 0, 0, 1440, 24},
                      {71, 7, 0, 0, 2000, 2000, true, 3},
                      {72, 7, 20, 30, 1000.7, 600.9},
                      {91, 9, 0, 0, 300, 200, false}}};
}

/// Asks until an answer is wrong.
void expectAnswers(const std::vector<Case>& cases) {
  for (const auto& [request, pointer, expected, failing, arrange] : cases) {
    auto desktop = twoApplications();
    desktop.failing = failing;
    arrange(desktop);
    const auto output = run([] { return hostTask(platform::makePlatform()); }, desktop, request);
    EXPECT_EQ(output.find('\n'), output.size() - 1) << "exactly one line: " << output;
    boost::system::error_code failure;
    const auto response = json::parse(output, failure);
    const auto* const found = response.find_pointer(pointer, failure);
    ASSERT_EQ(found != nullptr ? *found : json::value(), expected) << request << testing::PrintToString(failing);
  }
}

/// The data URL of the picture that the fake encoder describes so.
json::value imageURL(const std::string& type, const std::string& description) {
  const auto content = "public." + type + ", " + description;
  std::string url = "data:image/" + type + ";base64,";
  appendBase64(std::as_bytes(std::span(content)), url);
  return json::value(url);
}

const std::string kMail = R"({"app_bundle_id":"com.example.Mail")";
const std::string kScreen = R"({"target":"screen"})";
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
  const std::set<std::string> singles{"a single AXRole", "a single AXTitle", "a single AXValue", "a single AXPosition"};
  std::vector<Case> cases;
  for (const auto& failing : std::vector<std::set<std::string>>{{},
                                                                {batch},
                                                                {untouched},
                                                                {batch, untouched},
                                                                {"a full batch"},
                                                                {"a batched AXRole"},
                                                                {"a batched AXSize"},
                                                                {"a reason in a batch"},
                                                                singles}) {
    cases.push_back({kTree, "/data/ax_tree", tree, failing});
  }
  expectAnswers(cases);
}

TEST(MacOS, TakesThePictureThatIsAskedFor) {
  const auto read = kMail + R"(,"level":"read"})", small = kMail + R"(,"max_long_edge_px":500})";
  const auto region = R"({"target":"region","region":{"x":-10,"y":20,"w":300,"h":200}})";
  const auto focus = R"({"target":"focused_element","max_long_edge_px":0})";
  const std::string window = "1000x600 window 72 of display 2";
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
      {focus, "/data/image", jpeg("2000x2000 window 71 of display 2")},
  });
}

TEST(MacOS, AnswersEveryFailureWithItsCode) {
  expectAnswers({
      {"{}", "/code", "target_required"},
      {R"({"app_name":"Mail agent"})", "/code", "target_app_not_running"},
      {R"({"app_bundle_id":"com.example"})", "/code", "target_app_not_running"},
      {R"({"app_name":"hidden"})", "/code", "target_window_minimized"},
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
  const auto lenient = [](World& w) { w.environment = {{"TAVIK_PERCEPTION_CONFIG", kLenientPolicy.path()}}; };
  expectAnswers({
      {focus, "/data/ax_tree", {{"role", "AXTextArea"}, {"value", "Dear Ada"}}},
      {focus, "/data/ax_tree", nullptr, {}, [](World& w) { w.frontmost.reset(); }},
      {focus, "/data/context/app_bundle_id", "com.example.Mail"},
      {focus, "/data/context/app_name", "Mail"},
      {focus, "/data/context/display_id", 5},
      {focus, "/data/context/display_id", 0, {}, [](World& w) { w.screenNumber = text("five"); }},
      {focus, "/data/context/display_id", 0, {}, [](World& w) { w.screenNumber = nullptr; }},
      {focus, "/data/context/display_id", nullptr, {}, [](World& w) { w.scale.reset(); }},
      {focus, "/data/context/scale_factor", 1.5},
      {vault, "/data/ax_tree/value", "first"},
      {vault, "/data/sensitive_bundle_id", "org.vault"},
      {vault, "/code", "target_app_has_no_window", {}, lenient},
      {kTree, "/data/ax_tree/children/0/value", "hunter2", {}, lenient},
      {kTree, "/data/ax_tree/children/0/value", "hunter2", {}, [](World& w) { w.resource.reset(); }},
  });
}

TEST(MacOS, CallsEachHandlerOnce) {
  for (const std::set<std::string>& failing : {std::set<std::string>{}, {"listing"}, {"capturing"}}) {
    auto desktop = twoApplications();
    desktop.failing = failing;
    const auto callsAreTwo = [] {
      const auto platform = platform::makePlatform();
      int calls = 0;
      const auto count = [&calls](const auto&) { ++calls; };
      platform.screenCapture->getShareableContent({}, count);
      liveObjects();  // waits for the handler
      platform.screenCapture->captureImage({.display = {.displayID = 2}}, {.showsCursor = false, .queueDepth = 1},
                                           count);
      liveObjects();
      return calls == 2 ? 0 : 1;
    };
    EXPECT_EQ(run(callsAreTwo, desktop, ""), "");
  }
}

}  // namespace
}  // namespace tavik
