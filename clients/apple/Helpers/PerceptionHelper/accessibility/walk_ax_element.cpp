#include "accessibility/walk_ax_element.h"

#include <algorithm>
#include <string>
#include <utility>

#include "text/grapheme_clusters.h"

namespace tavik {
namespace {

using platform::UIElement;

std::optional<std::string> stringAttr(UIElement& element, std::string_view name) {
  auto value = element.copyAttributeValue(name);
  auto* const text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text != nullptr ? std::optional(std::move(*text)) : std::nullopt;
}

/// The value as the geometry type asked for; zeros when it is of another type, as AXValueGetValue leaves them.
template <class Geometry>
Geometry geometry(const platform::AttributeValue& value) {
  const auto* const found = std::get_if<Geometry>(&value);
  return found != nullptr ? *found : Geometry{};
}

std::optional<ResponseArray> frameAttr(UIElement& element) {
  const auto position = element.copyAttributeValue("AXPosition");
  if (!position) return std::nullopt;
  const auto size = element.copyAttributeValue("AXSize");
  if (!size) return std::nullopt;
  const auto [x, y] = geometry<platform::Point>(*position);
  const auto [width, height] = geometry<platform::Size>(*size);
  ResponseArray frame;
  for (const double number : {x, y, width, height}) {
    const auto whole = platform::truncated(number);
    if (!whole) return std::nullopt;
    frame.emplace_back(*whole);
  }
  return frame;
}

void add(std::string_view key, const std::optional<std::string>& text, ResponseDictionary& node) {
  if (text) node[key] = *text;
}

void addCounted(std::string_view key, const std::optional<std::string>& text, ResponseDictionary& node,
                AXSummary& summary) {
  if (text) summary.textChars += text::characterCount(*text);
  add(key, text, node);
}

void addValue(UIElement& element, bool isBlocked, ResponseDictionary& node, AXSummary& summary) {
  const auto value = stringAttr(element, "AXValue");
  if (!value || !isBlocked) return addCounted("value", value, node, summary);
  node["value"] = "<redacted>";
  summary.redactionApplied = true;
}

void addChildren(UIElement& element, WalkDepth depth, ResponseDictionary& node, AXSummary& summary,
                 const SensitiveAppsConfig& redaction) {
  const auto value = element.copyAttributeValue("AXChildren");
  const auto* const elements = value ? std::get_if<std::vector<platform::UIElementRef>>(&*value) : nullptr;
  if (elements == nullptr || elements->empty()) return;
  ResponseArray children;
  const auto count = std::min(elements->size(), static_cast<std::size_t>(kMaxAXChildren));
  children.reserve(count);
  const WalkDepth childDepth{.depth = depth.depth + 1, .maxDepth = depth.maxDepth};
  for (std::size_t i = 0; i < count; ++i) {
    children.emplace_back(walkAXElement(*(*elements)[i], childDepth, summary, redaction));
  }
  node["children"] = std::move(children);
}

}  // namespace

ResponseDictionary walkAXElement(UIElement& element, WalkDepth depth, AXSummary& summary,
                                 const SensitiveAppsConfig& redaction) {
  ++summary.nodeCount;
  ResponseDictionary node;
  const auto role = stringAttr(element, "AXRole");
  const bool isBlocked = role && redaction.axRoleTextBlocklist.contains(*role);
  add("role", role, node);
  addCounted("title", stringAttr(element, "AXTitle"), node, summary);
  addValue(element, isBlocked, node, summary);
  add("help", stringAttr(element, "AXHelp"), node);
  addCounted("description", stringAttr(element, "AXDescription"), node, summary);
  if (auto frame = frameAttr(element)) node["frame"] = std::move(*frame);
  if (depth.depth < depth.maxDepth) addChildren(element, depth, node, summary, redaction);
  return node;
}

}  // namespace tavik
