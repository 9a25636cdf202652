#include "tools/mcp/tree_lines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

#include "accessibility/walk_ax_element.h"
#include "text/caseless_equal.h"
#include "tools/mcp/json_members.h"

namespace tavik::mcp {
namespace {

namespace json = boost::json;

bool hasMostChildren(std::size_t count) { return std::cmp_greater_equal(count, kMaxAXChildren); }

const json::array& childrenOf(const json::object& element) { return array(element, "children"); }

std::string_view roleOf(const json::object& element) {
  const auto role = string(element, "role");
  return role.starts_with("AX") ? role.substr(2) : role;
}

std::size_t countOf(const json::object& element) {
  std::size_t count = 1;
  for (const auto& child : childrenOf(element)) {
    if (child.is_object()) count += countOf(child.get_object());
  }
  return count;
}

/// How many characters a text in UTF-8 has: all bytes but those that go on with one.
std::size_t charactersOf(std::string_view text) {
  constexpr unsigned kMask = 0xC0, kContinuation = 0x80;
  const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & kMask) != kContinuation; };
  return static_cast<std::size_t>(std::ranges::count_if(text, begins));
}

class Search {
 public:
  explicit Search(std::string_view wanted) : key_(text::caselessKey(wanted)), isForAll_(wanted.empty()) {}

  bool isForAll() const { return isForAll_; }

  bool finds(const json::object& element) const {
    constexpr std::array<std::string_view, 4> kKeys{"title", "value", "description", "help"};
    const auto holds = [&](std::string_view text) {
      const auto key = text::caselessKey(text);
      return key && key_ && key->find(*key_) != std::u32string::npos;
    };
    return holds(roleOf(element)) ||
           std::ranges::any_of(kKeys, [&](std::string_view key) { return holds(string(element, key)); });
  }

  /// True where the element itself or one below it is found.
  bool leadsThrough(const json::object& element) const {
    return isForAll_ || finds(element) || std::ranges::any_of(childrenOf(element), [this](const json::value& child) {
             return child.is_object() && leadsThrough(child.get_object());
           });
  }

 private:
  text::CaselessKey key_;
  bool isForAll_;
};

std::string placeOf(const json::object& element, const TreeView& view) {
  auto frame = numbers(array(element, "frame"));
  if (view.places == Places::none || frame.size() != 4) return "";
  const auto mapping = view.mapping.value_or(PictureMapping{});
  const auto whole = [&](double value) { return std::to_string(std::llround(value * mapping.scale)); };
  frame[0] -= mapping.x;
  frame[1] -= mapping.y;
  if (view.places == Places::centre) {
    return std::string(" @").append(whole(frame[0] + frame[2] / 2)).append(",").append(whole(frame[1] + frame[3] / 2));
  }
  std::string numbers;
  for (const double value : frame) numbers.append(numbers.empty() ? " [" : " ").append(whole(value));
  return numbers += ']';
}

std::string lineOf(const json::object& element, std::size_t depth, const TreeView& view) {
  const std::size_t count = childrenOf(element).size();
  auto line = std::string(2 * depth, ' ').append(roleOf(element));
  if (const auto title = string(element, "title"); !title.empty()) line.append(" ").append(quoted(title));
  if (const auto value = string(element, "value"); !value.empty()) line.append(" = ").append(quoted(value));
  for (const std::string_view key : {"description", "help"}) {
    const auto text = string(element, key);
    if (!text.empty()) line.append(" ").append(key).append(" ").append(quoted(text));
  }
  line += placeOf(element, view);
  if (hasMostChildren(count)) line.append(" (").append(std::to_string(count)).append(" children or more)");
  return line += '\n';
}

class LineWriter {
 public:
  explicit LineWriter(const TreeView& view) : view_(view), search_(view.find) {}

  void write(const json::object& element, std::size_t depth) {
    if (!search_.leadsThrough(element)) return;
    auto line = lineOf(element, depth, view_);
    characters_ += charactersOf(line);
    if (characters_ > view_.maxCharacters) {
      lines_.left += search_.isForAll() ? countOf(element) : 1;
      return;
    }
    lines_.text += line;
    ++lines_.shown;
    const auto& children = childrenOf(element);
    lines_.reachesBounds =
        lines_.reachesBounds || hasMostChildren(children.size()) || std::cmp_equal(depth, kMaxAXDepth);
    for (const auto& child : children) {
      if (child.is_object()) write(child.get_object(), depth + 1);
    }
  }

  TreeLines take() { return std::move(lines_); }

 private:
  const TreeView& view_;
  Search search_;
  std::size_t characters_ = 0;
  TreeLines lines_;
};

}  // namespace

TreeLines treeLines(const json::object& root, const TreeView& view) {
  LineWriter writer(view);
  writer.write(root, 0);
  return writer.take();
}

}  // namespace tavik::mcp
