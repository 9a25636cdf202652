#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The policy file line by line, as the program takes it: for the policy itself, and for whoever explains it.
namespace tavik {

/// What the reader takes a line for.
enum class PolicyLineKind : std::uint8_t {
  skipped,  ///< blank, or nothing that it knows
  comment,
  header,  ///< of any section, known or not
  item,
};

enum class PolicySection : std::uint8_t { none, bundleIds, axRoles };

struct PolicyLine {
  std::size_t number = 0;      ///< of the first line feed's line in it, from 1
  std::string_view text = {};  ///< without whitespace at its ends; with more than one CR LF where it is several lines
  PolicyLineKind kind = PolicyLineKind::skipped;
  /// What is open from a header on, and what an item is added to: nothing behind an unknown header, and before the
  /// first.
  PolicySection section = PolicySection::none;
  std::string_view item = {};  ///< of an item, without its quotes; one that is empty adds nothing
};

/// Reads a policy file's text, which outlives it.
class PolicyLines {
 public:
  explicit PolicyLines(std::string_view text) : rest_(text) {}
  /// The next line; nothing at the end.
  std::optional<PolicyLine> next();

 private:
  std::string_view rest_;
  std::size_t number_ = 1;
  PolicySection section_ = PolicySection::none;
};

/// The section with this name; none where there is none.
PolicySection sectionNamed(std::string_view name);

}  // namespace tavik
