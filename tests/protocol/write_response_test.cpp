#include "protocol/write_response.h"

#include <limits>
#include <string>
#include <vector>

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
  constexpr double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();
  const std::vector<std::string> fallback{R"({"ok": false, "code": "helper_serialize_failed"})", "\n"};
  EXPECT_EQ(written({{"number", nan}}), fallback);
  EXPECT_EQ(written({{"deep", {{{"number", -infinity}}}}}), fallback);
  EXPECT_EQ(written({{"text", "\xFF"}}), fallback);
  EXPECT_EQ(written({{"\xC0\x80", 1}}), fallback);
}

TEST(WriteError, HasAHintOnlyWhenThereIsOne) {
  fake::FakeDesktop desktop;
  const auto platform = fake::makePlatform(desktop);
  writeError({.code = "c", .error = "e"}, *platform.streams);
  writeError({.code = "c", .error = "e", .hint = "h"}, *platform.streams);
  EXPECT_EQ(desktop.output(), R"({"ok":false,"code":"c","error":"e"})"
                              "\n"
                              R"({"ok":false,"code":"c","error":"e","hint":"h"})"
                              "\n");
}

}  // namespace
}  // namespace tavik
