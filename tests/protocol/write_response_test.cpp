#include "protocol/write_response.h"

#include <limits>
#include <string>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace tavik {
namespace {

std::vector<std::string> written(const ResponseDictionary& response) {
  fake::FakeDesktop desktop;
  writeResponse(response, *fake::makePlatform(desktop).streams);
  return desktop.outputWrites;
}

TEST(WriteResponse, IsOneWriteOfCompactJSONAndOneOfALineFeed) {
  const ResponseDictionary response{
      {"text", "\u00e9 \"\\\n\u0001 /"}, {"null", nullptr}, {"list", {1, true, "x", 2.5}}};
  const auto writes = written(response);
  ASSERT_EQ(writes.size(), 2U);
  EXPECT_EQ(writes[1], "\n");
  EXPECT_EQ(writes[0].find('\n'), std::string::npos);
  EXPECT_EQ(writes[0].find(": "), std::string::npos);
  EXPECT_EQ(boost::json::parse(writes[0]).as_object(), response);
}

TEST(WriteResponse, WritesTheFallbackForWhatJSONCannotExpress) {
  const std::string fallback = R"({"ok": false, "code": "helper_serialize_failed"})";
  ASSERT_EQ(fallback.size(), 48U);
  for (const ResponseDictionary& response : {
           ResponseDictionary{{"number", std::numeric_limits<double>::quiet_NaN()}},
           ResponseDictionary{{"deep", {{{"number", -std::numeric_limits<double>::infinity()}}}}},
           ResponseDictionary{{"text", "\xFF"}},
           ResponseDictionary{{"\xC0\x80", 1}},
       }) {
    EXPECT_EQ(written(response), (std::vector<std::string>{fallback, "\n"}));
  }
}

TEST(WriteError, HasAHintOnlyWhenThereIsOne) {
  fake::FakeDesktop desktop;
  const auto platform = fake::makePlatform(desktop);
  writeError({.code = "c", .error = "e"}, *platform.streams);
  EXPECT_EQ(boost::json::parse(desktop.outputWrites[0]),
            (boost::json::value{{"ok", false}, {"code", "c"}, {"error", "e"}}));
  writeError({.code = "c", .error = "e", .hint = "h"}, *platform.streams);
  EXPECT_EQ(boost::json::parse(desktop.outputWrites[2]).at("hint"), "h");
}

}  // namespace
}  // namespace tavik
