#include "platform/linux/atspi/role_names.h"

#include <cstdint>
#include <string_view>
#include <tuple>

#include <gtest/gtest.h>

namespace tavik::platform::atspi {
namespace {

TEST(AXRole, FollowsTheNumberOfTheRole) {
  using Case = std::tuple<std::string_view, std::uint32_t, bool, std::string_view>;
  for (const auto& [reason, role, isMultiLine, expected] : {
           Case{"a password field, which Qt 5 calls \"text\"", 40, false, "AXSecureTextField"},
           Case{"a password stays secret over several lines", 40, true, "AXSecureTextField"},
           Case{"GTK's entries report \"text\"", 61, false, "AXTextField"},
           Case{"text views do too", 61, true, "AXTextArea"},
           Case{"an entry of one line", 79, false, "AXTextField"},
           Case{"an entry of several", 79, true, "AXTextArea"},
           Case{"a terminal needs no state for that", 60, false, "AXTextArea"},
           Case{"top-level window", 23, false, "AXWindow"},
           Case{"the state is of no interest elsewhere", 43, true, "AXButton"},
           Case{"the last known number", 130, false, "AXCheckBox"},
           Case{"far beyond", 0xFFFFFFFF, false, "AXUnknown"},
       }) {
    EXPECT_EQ(axRole(role, isMultiLine), expected) << reason;
  }
}

TEST(AXRole, FollowsTheNameOfARoleWithoutNumber) {
  EXPECT_TRUE(needsRoleName(70));   // ATSPI_ROLE_EXTENDED
  EXPECT_TRUE(needsRoleName(131));  // of a newer AT-SPI
  EXPECT_FALSE(needsRoleName(40));
  EXPECT_EQ(axRole("password text"), "AXSecureTextField");
  EXPECT_EQ(axRole("link"), "AXLink");
  EXPECT_EQ(axRole("Link"), "AXUnknown");
  EXPECT_EQ(axRole(""), "AXUnknown");
}

}  // namespace
}  // namespace tavik::platform::atspi
