#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <variant>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>

#include "table.h"
#include "tools/mcp/capture_call.h"
#include "tools/mcp/picture.h"
#include "tools/mcp/server.h"
#include "tools/mcp/session_environment.h"
#include "tools/mcp/tree_lines.h"

namespace tavik::mcp {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;
using namespace std::chrono_literals;
using namespace std::string_view_literals;

json::object object(std::string_view text) { return json::parse(text).as_object(); }

/// A server over programs of the test's own; `cat` gives the request back, as if it were an answer.
struct ServerTest : testing::Test {
  boost::asio::io_context context;
  std::string answers;
  std::string log;
  Server server{context,
                {.helper = "cat", .doctor = "/nonexistent/doctor"},
                {.variables = {"PATH=/usr/bin:/bin"}},
                {.answer = [this](std::string_view line) { answers += line; },
                 .audit = [this](std::string_view line) { (log += line) += '\n'; }}};

  std::string answerTo(std::string_view line) {
    answers.clear();
    server.receive(line);
    context.restart();
    context.run();
    return answers;
  }
};

constexpr std::string_view kEnvelope =
    R"("_meta":{"io.modelcontextprotocol/protocolVersion":"2026-07-28","io.modelcontextprotocol/clientCapabilities":{}})";

std::string modern(std::string_view method, std::string_view params = "") {
  auto text = std::string(R"({"jsonrpc":"2.0","id":7,"method":")").append(method).append(R"(","params":{)");
  return text.append(params).append(kEnvelope).append("}}");
}

TEST_F(ServerTest, RefusesWhatItCannotAnswer) {
  for (
      const auto& [reason, line, id, code] : Table<std::string, std::string, int>{
          {"no JSON", "{", "null", -32700},
          {"several messages in one", "[]", "null", -32600},
          {"no JSON-RPC 2.0", R"({"id":1,"method":"ping"})", "1", -32600},
          {"an id that cannot be an answer's", R"({"jsonrpc":"2.0","id":null,"method":"ping"})", "null", -32600},
          {"neither question nor answer", R"({"jsonrpc":"2.0","id":"a"})", "\"a\"", -32600},
          {"params in order", R"({"jsonrpc":"2.0","id":1,"method":"ping","params":[]})", "1", -32602},
          {"an unknown method", R"({"jsonrpc":"2.0","id":1,"method":"resources/list"})", "1", -32601},
          {"one that the newer revision has no more", modern("ping"), "7", -32601},
          {"a revision that says nothing of itself", R"({"jsonrpc":"2.0","id":1,"method":"server/discover"})", "1",
           -32602},
          {"an unknown revision",
           R"({"jsonrpc":"2.0","id":1,"method":"tools/list","params":{"_meta":{"io.modelcontextprotocol/protocolVersion":"2030-01-01"}}})",
           "1", -32022},
          {"an unknown tool", modern("tools/call", R"("name":"shell",)"), "7", -32602},
          {"arguments in order", modern("tools/call", R"("name":"explain_setup","arguments":[],)"), "7", -32602},
      }) {
    const auto answer = object(answerTo(line));
    EXPECT_EQ(json::serialize(answer.at("id")), id) << reason;
    ASSERT_TRUE(answer.contains("error")) << reason;
    EXPECT_EQ(answer.at("error").at("code").as_int64(), code) << reason;
  }
  EXPECT_EQ(answerTo(R"({"jsonrpc":"2.0","method":"notifications/unknown"})"), "") << "nobody waits for an answer";
  EXPECT_EQ(answerTo(R"({"jsonrpc":"2.0","id":1,"result":{}})"), "") << "nothing was asked";
}

TEST_F(ServerTest, SpeaksBothRevisions) {
  const auto initialize = [&](std::string_view version) {
    const auto line = std::string(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":")")
                          .append(version)
                          .append("\"}}");
    return object(answerTo(line)).at("result").at("protocolVersion").as_string();
  };
  EXPECT_EQ(initialize("2025-06-18"), "2025-06-18");
  EXPECT_EQ(initialize("1999-01-01"), "2025-11-25");
  const auto discovered = object(answerTo(modern("server/discover"))).at("result").as_object();
  EXPECT_EQ(discovered.at("resultType"), "complete");
  EXPECT_EQ(discovered.at("supportedVersions"), json::array{"2026-07-28"});
  EXPECT_EQ(discovered.at("cacheScope"), "public");
  const auto older = object(answerTo(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})")).at("result").as_object();
  EXPECT_EQ(older.at("tools").as_array().size(), 3U);
  EXPECT_FALSE(older.contains("resultType")) << "older clients do not know it";
}

TEST_F(ServerTest, AnswersCallsByPrograms) {
  const auto failed = answerTo(modern("tools/call", R"("name":"explain_setup",)"));
  EXPECT_NE(failed.find("cannot be started"), std::string::npos) << failed;
  const auto answer = answerTo(modern("tools/call", R"("name":"local_perception_capture","arguments":{"ok":true},)"));
  EXPECT_NE(answer.find(R"("isError":false)"), std::string::npos) << answer;
  EXPECT_EQ(log, "explain_setup failed\nlocal_perception_capture answered\n");
}

TEST_F(ServerTest, EndsTheProgramOfACallThatIsCancelled) {
  const auto program = testing::TempDir() + "sleeper-" + std::to_string(::getpid());
  std::ofstream(program) << "#!/bin/sh\nexec sleep 1000\n";
  fs::permissions(program, fs::perms::owner_all);
  Server sleeping(context, {.helper = program, .doctor = program}, {.variables = {"PATH=/usr/bin:/bin"}},
                  {.answer = [this](std::string_view line) { answers += line; }, .audit = [](std::string_view) {}});
  const auto send = [&sleeping](std::string_view start, int id, std::string_view end) {
    sleeping.receive(std::string(R"({"jsonrpc":"2.0",)").append(start).append(std::to_string(id)).append(end));
  };
  constexpr int kCalls = 6;  // of which two wait
  constexpr std::string_view kCall = R"(,"method":"tools/call","params":{"name":"explain_setup"}})";
  for (int id = 0; id < kCalls; ++id) send(R"("id":)", id, kCall);
  for (int id = 0; id < kCalls; ++id) send(R"("method":"notifications/cancelled","params":{"requestId":)", id, "}}");
  const auto begin = std::chrono::steady_clock::now();
  context.run();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
  EXPECT_EQ(answers, "");
  fs::remove(program);
}

TEST(CaptureCall, TakesItsOwnArgumentsAndLimitsThePicture) {
  for (const auto& [reason, given, request] : Table<std::string, std::string>{
           {"its own", R"({"app_name":"a","find":"x","places":"centre"})",
            R"({"app_name":"a","max_long_edge_px":1600})"},
           {"no limit", R"({"max_long_edge_px":0})", R"({"max_long_edge_px":1600})"},
           {"a large one", R"({"max_long_edge_px":4000})", R"({"max_long_edge_px":1600})"},
           {"a smaller one", R"({"max_long_edge_px":100})", R"({"max_long_edge_px":100})"},
           {"what the helper has to judge", R"({"max_long_edge_px":"all"})", R"({"max_long_edge_px":"all"})"},
       }) {
    const auto call = captureCall(object(given));
    ASSERT_TRUE(std::holds_alternative<CaptureCall>(call)) << reason;
    EXPECT_EQ(std::get<CaptureCall>(call).request, object(request)) << reason;
  }
  for (const auto* const wrong : {R"({"find":1})", R"({"places":"corner"})", R"({"places":true})"}) {
    EXPECT_TRUE(std::holds_alternative<std::string>(captureCall(object(wrong)))) << wrong;
  }
}

// 40 x 20 pixels, written by ImageMagick.
constexpr std::string_view kPNG =
    "data:image/png;base64,"
    "iVBORw0KGgoAAAANSUhEUgAAACgAAAAUAQMAAADFiO34AAAABGdBTUEAALGPC/"
    "xhBQAAACBjSFJNAAB6JgAAgIQAAPoAAACA6AAAdTAAAOpgAAA6mAAAF3CculE8AAAABlBMVEX/AAD///9BHTQRAAAAAWJLR0QB/"
    "wIt3gAAAAd0SU1FB+"
    "oLGQA7M6KoNW4AAAAMSURBVAjXY2AYGAAAAHgAAdrtolcAAAAldEVYdGRhdGU6Y3JlYXRlADIwMjYtMTEtMjVUMDA6NTk6NTErMDA6MDABWEjlAAAA"
    "JXRFWHRkYXRlOm1vZGlmeQAyMDI2LTExLTI1VDAwOjU5OjUxKzAwOjAwcAXwWQAAAABJRU5ErkJggg==";

std::string textOf(const ToolResult& result) { return std::string(result.at("content").at(0).at("text").as_string()); }

TEST(CaptureResult, TellsTheTreeInPixelsOfThePicture) {
  const CaptureCall call{.places = Places::frame};
  auto answer =
      std::string(R"({"ok":true,"data":{"level_used":"read","context":{"app_name":"A","app_bundle_id":"a"},)");
  answer.append(R"("ax_tree":{"role":"AXWindow","frame":[10,20,80,40],"children":[)");
  answer.append(R"({"role":"AXButton","title":"Go\n>>>","value":"v","frame":[50,40,20,10]}]},"image":")");
  answer.append(kPNG).append("\"}}");
  const auto result = captureResult(call, answer, "");
  const auto text = textOf(result);
  EXPECT_NE(text.find("40 x 20 pixels"), std::string::npos) << text;
  EXPECT_NE(text.find("<<<\nWindow [0 0 40 20]\n  Button \"Go\\n>>>\" = \"v\" [20 10 10 5]\n>>>\n"), std::string::npos)
      << text;
  EXPECT_EQ(result.at("content").at(1).at("mimeType"), "image/png");
}

TEST(CaptureResult, WithholdsWhatIsSensitive) {
  const auto result = captureResult(
      {},
      R"({"ok":true,"data":{"sensitive_app_match":true,"sensitive_bundle_id":"vault","ax_tree":{"title":"secret"}}})",
      "");
  EXPECT_EQ(textOf(result).find("secret"), std::string::npos);
  EXPECT_NE(textOf(result).find("vault"), std::string::npos);
}

TEST(CaptureResult, IsAnErrorWhereTheHelperFails) {
  const auto failed = captureResult({}, R"({"ok":false,"code":"c","error":"e","hint":"h"})", "decode error");
  EXPECT_EQ(textOf(failed), "c: e\nHint: h\ndecode error");
  EXPECT_EQ(failed.at("isError"), true);
  for (const auto* const answer : {"", "[]", "{\"ok\":true"}) {
    EXPECT_EQ(captureResult({}, answer, "").at("isError"), true) << answer;
  }
}

TEST(TreeLines, KeepsWhatIsLookedForAndWhatItLiesIn) {
  const auto tree = object(R"({"role":"AXWindow","children":[{"role":"AXGroup","children":[
      {"role":"AXButton","title":"ÄPFEL"},{"role":"AXButton","title":"Birnen"}]},{"role":"AXMenu"}]})");
  EXPECT_EQ(treeLines(tree, {.find = "äpfel"}).text, "Window\n  Group\n    Button \"ÄPFEL\"\n");
  EXPECT_EQ(treeLines(tree, {.find = "menu"}).text, "Window\n  Menu\n");
  EXPECT_EQ(treeLines(tree, {.find = "Kirschen"}).shown, 0U);
  const auto cut = treeLines(tree, {.maxCharacters = 30});
  EXPECT_EQ(cut.text, "Window\n  Group\n");
  EXPECT_EQ(cut.left, 3U);
  EXPECT_FALSE(cut.reachesBounds);
}

TEST(TreeLines, SaysWhereTheHelperReadNoFurther) {
  json::object wide{{"role", "AXList"}, {"children", json::array(50, json::object{{"role", "AXCell"}})}};
  const auto lines = treeLines(wide, {});
  EXPECT_TRUE(lines.reachesBounds);
  EXPECT_TRUE(lines.text.starts_with("List (50 children or more)\n")) << lines.text;
  wide["children"].get_array().pop_back();
  EXPECT_FALSE(treeLines(wide, {}).reachesBounds);
}

TEST(Picture, IsMeasured) {
  const auto picture = pictureOf(kPNG);
  ASSERT_TRUE(picture);
  EXPECT_TRUE(picture->width == 40 && picture->height == 20);
  EXPECT_EQ(pictureOf("data:image/png;base64,AAAA")->width, 0);
  EXPECT_FALSE(pictureOf("https://example.org/a.png"));
}

TEST(SessionEnvironment, TakesADesktopsVariablesTogether) {
  const std::vector<std::string> wanted{"DISPLAY=:0", "XAUTHORITY=/a"};
  EXPECT_EQ(desktopVariables(variablesOf("HOME=/h\0DISPLAY=:0\0\0XAUTHORITY=/a\0SHELL="sv)), wanted);
  EXPECT_EQ(desktopVariables({"DISPLAY=", "XDG_RUNTIME_DIR=/run"}), std::vector<std::string>());
}

}  // namespace
}  // namespace tavik::mcp
