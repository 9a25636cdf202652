#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <boost/json/object.hpp>

/// An accessibility tree as a model reads it.
namespace tavik::mcp {

/// What is told of where elements are.
enum class Places : std::uint8_t { none, centre, frame };

/// How pixels of the screen become those of the picture: less the corner, times the scale.
struct PictureMapping {
  double x = 0;
  double y = 0;
  double scale = 1;
};

struct TreeView {
  Places places = Places::none;
  std::optional<PictureMapping> mapping = {};  ///< without one, places are those on the screen
  std::string find = {};  ///< only elements with this text, case aside, and those around them; empty: all
  std::size_t maxCharacters = 60'000;
};

/// A line for each element, indented by its depth: its role without "AX", its texts as JSON strings, its place. Texts
/// therefore stay on their line, whatever they hold.
struct TreeLines {
  std::string text = {};
  std::size_t shown = 0;
  std::size_t left = 0;        ///< elements that there was no room for
  bool reachesBounds = false;  ///< some have as many children, or lie as deep, as the helper reads at most
};

TreeLines treeLines(const boost::json::object& root, const TreeView& view);

}  // namespace tavik::mcp
