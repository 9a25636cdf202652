#include "protocol/decode_request.h"

#include <algorithm>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "protocol/read_request.h"
#include "text/grapheme_clusters.h"

namespace tavik {
namespace {

std::string description(std::string_view json) {
  const auto decoded = decodeRequest(json);
  const auto* const error = std::get_if<DecodeError>(&decoded);
  return error != nullptr ? error->description : "(decoded)";
}

TEST(DecodeRequest, TakesEveryFieldAsItIsSent) {
  struct Case {
    std::string reason, json;
    Request expected;
  };
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  for (const auto& [reason, json, expected] : {
           Case{"nothing", "{}", {}},
           Case{"all of them",
                R"({"level":"pixel_perfect","target":"region","region":{"x":-1,"y":2,"w":3,"h":4},"include_image":true,
                    "include_ax_tree":false,"include_caption":true,"max_long_edge_px":-7,"format":"PNG",
                    "app_bundle_id":"a.b","app_name":" x ","allow_focus_steal":false})",
                {.level = Level::pixel_perfect,
                .target = Target::region,
                .region = Region{.x = -1, .y = 2, .w = 3, .h = 4},
                .include_image = true,
                .include_ax_tree = false,
                .include_caption = true,
                .max_long_edge_px = -7,
                .format = "PNG",
                .app_bundle_id = "a.b",
                .app_name = " x ",
                .allow_focus_steal = false}},
           Case{"null is absent",
                R"({"level":null,"region":null,"app_name":null,"target":"screen"})",
                {.target = Target::screen}},
           Case{"empty is present", R"({"app_name":""})", {.app_name = ""}},
           Case{"other keys are ignored, also those in another case",
                R"({"Level":"READ","x":[{"level":1}],"target":"app"})",
                {.target = Target::app}},
           Case{"other keys of a region too",
                R"({"region":{"h":1,"w":2,"y":3,"x":4,"z":"?"}})",
                {.region = Region{.x = 4, .y = 3, .w = 2, .h = 1}}},
           Case{"the ends of the range",
                R"({"region":{"x":9223372036854775807,"y":-9223372036854775808,"w":2.0,"h":1e3}})",
                {.region = Region{.x = most, .y = least, .w = 2, .h = 1000}}},
           Case{"escapes, NUL included",
                R"({"app_name":"\u00e9\ud83d\ude00\u0000"})",
                {.app_name = std::string("\u00e9\U0001F600\0", 7)}},
           Case{"blanks around", " \t\r\n{ }\n ", {}},
       }) {
    const auto decoded = decodeRequest(json);
    ASSERT_TRUE(std::holds_alternative<Request>(decoded)) << reason << ": " << description(json);
    EXPECT_EQ(std::get<Request>(decoded), expected) << reason;
  }
}

TEST(DecodeRequest, SaysWhatIsWrongAndWhere) {
  struct Case {
    std::string json, description;
  };
  const std::string whole = "expected a whole number of the signed 64-bit range, found ";
  for (const auto& [json, expected] : {
           Case{R"({"level":"READ"})", R"(level: "READ" is not one of auto, ax_only, glance, read, pixel_perfect)"},
           Case{R"({"level":" read"})", R"(level: " read" is not one of auto, ax_only, glance, read, pixel_perfect)"},
           Case{R"({"level":3})", "level: expected a string, found 3"},
           Case{R"({"target":"window"})", R"(target: "window" is not one of app, focused_element, screen, region)"},
           Case{R"({"region":[1,2,3,4]})", "region: expected an object, found an array"},
           Case{R"({"region":{"x":1,"y":2,"w":3}})", "region.h: missing"},
           Case{R"({"region":{"x":0.5,"y":2,"w":3,"h":4}})", "region.x: " + whole + "5E-1"},
           Case{R"({"region":{"x":1,"y":null,"w":3,"h":4}})", "region.y: " + whole + "null"},
           Case{R"({"include_image":1})", "include_image: expected true or false, found 1"},
           Case{R"({"include_caption":"true"})", R"(include_caption: expected true or false, found "true")"},
           Case{R"({"allow_focus_steal":0})", "allow_focus_steal: expected true or false, found 0"},
           Case{R"({"max_long_edge_px":"800"})", "max_long_edge_px: " + whole + R"("800")"},
           Case{R"({"max_long_edge_px":9223372036854775808})", "max_long_edge_px: " + whole + "9223372036854775808"},
           Case{R"({"max_long_edge_px":true})", "max_long_edge_px: " + whole + "true"},
           Case{R"({"format":{}})", "format: expected a string, found an object"},
           Case{R"({"app_name":["x"]})", "app_name: expected a string, found an array"},
           Case{R"({"format":1,"level":2})",
                "level: expected a string, found 2"},  // the members' order decides, not the text's
           Case{"[]", "request: expected an object, found an array"},
           Case{"null", "request: expected an object, found null"},
           Case{R"("x")", R"(request: expected an object, found "x")"},
           Case{"\n ", "invalid JSON at line 2, column 2: incomplete JSON"},
           Case{R"({"level":)", "invalid JSON at line 1, column 10: incomplete JSON"},
           Case{"{\n\"\u00e9\": x}", "invalid JSON at line 2, column 6: syntax error"},
           Case{"{} {}", "invalid JSON at line 1, column 4: extra data"},
       }) {
    EXPECT_EQ(description(json), expected) << json;
  }
}

TEST(DecodeRequest, SurvivesHostileInput) {
  constexpr std::size_t megabyte = 1 << 20;
  const auto failsAt = [](std::string_view json, std::string_view position) {
    const auto text = description(json);
    EXPECT_TRUE(text.starts_with("invalid JSON at " + std::string(position))) << text;
  };
  failsAt(std::string(2 * megabyte, '['), "line 1, column 51");
  failsAt(R"({"x":)" + std::string(2 * megabyte, '['), "line 1, column 51");
  failsAt(std::string(64 * megabyte, ' '), "line 1, column 67108865");
  failsAt("\xEF\xBB\xBF{}", "line 1, column 1");
  failsAt(std::string("\0{}", 3), "line 1, column 1");
  failsAt(std::string("{}\0", 3), "line 1, column 3");
  failsAt("{\"app_name\":\"\xFF\"}", "line 1, column 14");
  failsAt(R"({"app_name":"\ud800"})", "line 1, column ");
  failsAt(R"({"x":1e99999999999999999999})", "line 1, column ");
  const auto decoded = decodeRequest(R"({"app_name":")" + std::string(64 * megabyte, 'a') + "\"}");
  ASSERT_TRUE(std::holds_alternative<Request>(decoded));
  EXPECT_EQ(std::get<Request>(decoded).app_name->size(), 64 * megabyte);
  EXPECT_EQ(description(R"({"x":)" + std::string(400, '[') + std::string(400, ']') + "}"), "(decoded)");
}

TEST(ReadRequest, PutsOneShortLineOnStandardErrorForAFailureAndNothingElse) {
  struct Case {
    std::string reason, input;
    bool fails;
  };
  std::string marks;
  for (int i = 0; i < 10'000; ++i) marks += "\u0301";
  for (const auto& [reason, input, fails] : {
           Case{"no input", "", false},
           Case{"an empty request", "{}", false},
           Case{"blanks are no JSON", " \n", true},
           Case{"what the diagnostic quotes is cut", R"({"level":")" + std::string(1'000'000, 'x') + "\"}", true},
           Case{"one endless character is cut too", R"({"level":"x)" + marks + "\"}", true},
           Case{"control characters are spelled out", R"({"target":"a\nb\u001b[2J\u0000\u202e\u2028"})", true},
       }) {
    fake::FakeDesktop desktop{.input = input};
    const auto platform = fake::makePlatform(desktop);
    EXPECT_EQ(readRequest(*platform.streams), Request{}) << reason;
    EXPECT_TRUE(desktop.outputWrites.empty()) << reason;
    EXPECT_EQ(desktop.error.starts_with("[tavik-perception-helper] decode error: "), fails) << reason;
    EXPECT_EQ(std::count(desktop.error.begin(), desktop.error.end(), '\n'), fails ? 1 : 0) << reason;
    const bool hasControl = std::any_of(desktop.error.begin(), desktop.error.end(),
                                        [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\n'; });
    EXPECT_FALSE(hasControl || desktop.error.find("\u202e") != std::string::npos) << reason << desktop.error;
    EXPECT_LE(text::characterCount(desktop.error), 300) << reason;
    EXPECT_LE(desktop.error.size(), 1200U) << reason;
  }
}

}  // namespace
}  // namespace tavik
