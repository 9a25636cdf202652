#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/doctor/finding.h"

namespace tavik::doctor {

/// A running application that one can switch to.
struct ApplicationReport {
  std::string identifier = {};
  std::string name = {};
  bool isFrontmost = false;
  bool isSensitive = false;                   ///< by the policy; its tree is not looked at
  std::optional<std::int64_t> elements = {};  ///< of its main window's tree, as far as they are counted
  std::optional<std::string> toolkit = {};
  std::optional<std::string> remedy = {};  ///< what gives it a tree
};

/// What the policy's reader takes a line for.
struct PolicyLineReport {
  std::size_t number = 0;
  std::string_view takenFor = {};  ///< "section", "application", "role" or "nothing"
  std::string text = {};
  std::vector<std::string> matches = {};  ///< the identifiers of running and installed applications that it covers
};

struct PolicyReport {
  std::optional<std::string> file = {};  ///< in valid UTF-8; nothing for the policy that is compiled in
  bool isDelivered = false;              ///< its text is that of the policy that comes with the program
  std::size_t applications = 0;          ///< patterns
  std::size_t roles = 0;
  std::vector<PolicyLineReport> lines = {};  ///< but for blank ones and comments
};

struct DoctorReport {
  std::vector<Finding> findings = {};
  std::vector<ApplicationReport> applications = {};
  std::optional<PolicyReport> policy = {};  ///< nothing where the file is none
};

/// True where there is nothing to mend.
bool isAllWell(const DoctorReport& report);

}  // namespace tavik::doctor
