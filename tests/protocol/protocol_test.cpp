#include <algorithm>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "protocol/decode_request.h"
#include "protocol/read_request.h"
#include "protocol/write_response.h"
#include "table.h"

namespace tavik {
namespace {

using namespace std::string_literals;

std::string description(std::string_view json) {
  const auto decoded = decodeRequest(json);
  const auto* const error = std::get_if<DecodeError>(&decoded);
  return error != nullptr ? error->description : "(decoded)";
}

TEST(DecodeRequest, TakesEveryFieldAsItIsSent) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  const auto ends = R"({"region":{"x":9223372036854775807.0,"y":-922337203685477580.8E1,"w":2.0,"h":1e3}})";
  const auto all =
      R"({"level":"pixel_perfect","target":"region","region":{"x":-1,"y":2,"w":3,"h":4},"include_image":true,
      "include_ax_tree":false,"include_caption":true,"max_long_edge_px":-7,"format":"PNG","app_bundle_id":"a.b",
      "app_name":" x ","allow_focus_steal":false})";
  const Request everything{
      Level::pixel_perfect, Target::region, Region{-1, 2, 3, 4}, true, false, true, -7, "PNG", "a.b", " x ", false};
  const Table<std::string, Request> cases{
      {"nothing", "{}", {}},
      {"all of them", all, everything},
      {"null is absent", R"({"level":null,"region":null,"target":"screen"})", {.target = Target::screen}},
      {"other keys are ignored", R"({"Level":"READ","x":[{}],"appName":"y","target":"app"})", {.target = Target::app}},
      {"also with a huge exponent", R"({"x":[-1e-99999999999999999999,"1e-9"],"format":"\"0.5"})", {.format = "\"0.5"}},
      {"a whole number, however written", R"({"max_long_edge_px":0.80E+003})", {.max_long_edge_px = 800}},
      {"nothing is nothing", R"({"max_long_edge_px":-0.0e-99999999999})", {.max_long_edge_px = 0}},
      {"also a region's", R"({"region":{"h":1,"w":2,"y":3,"x":4,"z":"?"}})", {.region = Region{4, 3, 2, 1}}},
      {"the ends of the range", ends, {.region = Region{kMost, -kMost - 1, 2, 1000}}},
      {"escapes", R"({"format":"\u00e9\ud83d\ude00\u0000"})", {.format = "\u00e9\U0001F600\0"s}},
  };
  for (const auto& [reason, json, expected] : cases) {
    const auto decoded = decodeRequest(json);
    ASSERT_TRUE(std::holds_alternative<Request>(decoded)) << reason << ": " << description(json);
    EXPECT_EQ(std::get<Request>(decoded), expected) << reason;
  }
}

TEST(DecodeRequest, SaysWhatIsWrongAndWhere) {
  const std::string fraction = "a fraction or a larger number";
  const std::string whole = "expected a whole number of the signed 64-bit range, found ";
  const Table<std::string> cases{
      {R"({"level":" read"})", R"(level: " read" is not one of auto, ax_only, glance, read, pixel_perfect)"},
      {R"({"level":"READ"})", R"(level: "READ" is not one of auto, ax_only, glance, read, pixel_perfect)"},
      {R"({"region":[1,2,3,4]})", "region: expected an object, found an array"},
      {R"({"region":{"x":1,"y":2,"w":3}})", "region.h: missing"},
      {R"({"region":{"x":0.5,"y":2,"w":3,"h":4}})", "region.x: " + whole + fraction},
      {R"({"region":{"x":1,"y":null,"w":3,"h":4}})", "region.y: " + whole + "null"},
      {R"({"max_long_edge_px":800.0000000000000001})", "max_long_edge_px: " + whole + fraction},
      {R"({"max_long_edge_px":9007199254740993.5})", "max_long_edge_px: " + whole + fraction},
      {R"({"max_long_edge_px":-1e-400})", "max_long_edge_px: " + whole + fraction},
      {R"({"max_long_edge_px":1e99999999999})", "max_long_edge_px: " + whole + fraction},
      {R"({"include_image":1})", "include_image: expected true or false, found 1"},
      {R"({"app_name":5})", "app_name: expected a string, found 5"},
      {R"({"include_caption":"true"})", R"(include_caption: expected true or false, found "true")"},
      {R"({"max_long_edge_px":"800"})", "max_long_edge_px: " + whole + R"("800")"},
      {R"({"max_long_edge_px":9223372036854775808})", "max_long_edge_px: " + whole + "9223372036854775808"},
      {R"({"format":{}})", "format: expected a string, found an object"},
      {R"({"format":1,"level":2})", "level: expected a string, found 2"},  // in the members' order
      {"null", "request: expected an object, found null"},
      {"\n ", "invalid JSON at line 2, column 2: incomplete JSON"},
      {"{\n\"\u00e9\": x}", "invalid JSON at line 2, column 6: syntax error"},
      {R"({"app_name":"x",})", "invalid JSON at line 1, column 17: syntax error"},
      {R"({"x":1.e-9})", "invalid JSON at line 1, column 8: syntax error"},
      {R"({"x":01e-9})", "invalid JSON at line 1, column 7: syntax error"},
      {"{/**/}", "invalid JSON at line 1, column 2: syntax error"},
      {"{\"x\":\"\xFF\"}", "invalid JSON at line 1, column 7: syntax error"},
      {"{} {}", "invalid JSON at line 1, column 4: extra data"},
  };
  for (const auto& [json, expected] : cases) EXPECT_EQ(description(json), expected) << json;
}

TEST(DecodeRequest, SurvivesHostileInput) {
  constexpr std::size_t kMegabyte = 1 << 20;
  const auto failsAt = [](std::string_view json, std::string_view position) {
    const auto text = description(json);
    EXPECT_TRUE(text.starts_with("invalid JSON at " + std::string(position))) << text;
  };
  failsAt(R"({"x":)" + std::string(2 * kMegabyte, '['), "line 1, column 51");
  failsAt(std::string(64 * kMegabyte, ' '), "line 1, column 67108865");
  failsAt("\xEF\xBB\xBF{}", "line 1, column 1");
  failsAt(std::string("{}\0", 3), "line 1, column 3");
  failsAt(R"({"app_name":"\ud800"})", "line 1, column ");
  EXPECT_EQ(description(R"({"app_name":")" + std::string(64 * kMegabyte, 'a') + "\"}"), "(decoded)");
  EXPECT_EQ(description(R"({"x":)" + std::string(400, '[') + std::string(400, ']') + "}"), "(decoded)");
}

TEST(ReadRequest, PutsOneShortLineOnStandardErrorForAFailureAndNothingElse) {
  std::string marks;
  for (int i = 0; i < 10'000; ++i) marks += "\u0301";
  const std::string controls = R"({"include_image":"a\nb\u001b[2J\u0000\u202e\u2028\u2029\ue000"})";
  const std::string spelledOut = "\"a\\u{A}b\\u{1B}[2J\\u{0}\\u{202E}\\u{2028}\\u{2029}\\u{E000}\"\n";
  for (const auto& [reason, input, end] : Table<std::string, std::string>{
           {"no input", "", ""},
           {"what is quoted is cut", R"({"level":")" + std::string(1'000'000, 'x') + "\"}", "perfect\n"},
           {"one endless character is cut too", R"({"include_image":"x)" + marks + "\"}", "\u0301\u2026\"\n"},
           {"control characters are spelled out", controls, spelledOut},
       }) {
    fake::FakeDesktop desktop{.input = input};
    EXPECT_TRUE(readRequest(*fake::makePlatform(desktop).streams) == Request{} && desktop.output.empty()) << reason;
    EXPECT_EQ(desktop.error.starts_with("[tavik-perception-helper] decode error: "), !end.empty()) << reason;
    EXPECT_TRUE(desktop.error.ends_with(end)) << reason << ": " << desktop.error;
    EXPECT_EQ(std::ranges::count(desktop.error, '\n'), end.empty() ? 0 : 1) << reason;
    EXPECT_LE(desktop.error.size(), 300U) << reason;
  }
}

TEST(WriteResponse, IsOneLineOfCompactJSONOrTheFallback) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN(), kInfinity = std::numeric_limits<double>::infinity();
  const std::string longText(100'000, 'x');
  const ResponseDictionary all{{"text", "\u00e9 \"\\\n\u0001 /"}, {"null", nullptr}, {"list", {1, true, "x", 2.5}}};
  const std::string fallback = R"({"ok": false, "code": "helper_serialize_failed"})";
  for (const auto& [reason, response, line] : Table<ResponseDictionary, std::string>{
           {"more than a pipe holds", {{"text", longText}}, R"({"text":")" + longText + R"("})"},
           {"all kinds", all, R"({"text":"é \"\\\n\u0001 /","null":null,"list":[1,true,"x",2.5E0]})"},
           {"no number", {{"number", kNan}}, fallback},
           {"infinite, deep inside", {{"deep", {{{"number", -kInfinity}}}}}, fallback},
           {"no UTF-8", {{"text", "\xFF"}}, fallback},
           {"nor in a name", {{"\xC0\x80", 1}}, fallback},
       }) {
    fake::FakeDesktop desktop;
    writeResponse(response, *fake::makePlatform(desktop).streams);
    EXPECT_EQ(desktop.output, line + "\n") << reason;
  }
}

TEST(WriteError, HasAHintOnlyWhenThereIsOne) {
  fake::FakeDesktop desktop;
  writeError({.code = "c", .error = "e"}, *fake::makePlatform(desktop).streams);
  EXPECT_EQ(desktop.output, "{\"ok\":false,\"code\":\"c\",\"error\":\"e\"}\n");
}

}  // namespace
}  // namespace tavik
