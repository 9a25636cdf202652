#include "platform/macos/ax_element.h"

#include <array>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "platform/macos/ax_value.h"
#include "platform/macos/cf_string.h"

namespace tavik::platform::macos {
namespace {

static_assert(kAXErrorSuccess == 0);

using Answers = std::map<std::string, std::optional<AttributeValue>, std::less<>>;

/// What a walk reads of every element; the last one only of those whose children it visits.
constexpr std::array kWalkedAttributes{"AXRole",        "AXTitle",    "AXValue", "AXHelp",
                                       "AXDescription", "AXPosition", "AXSize",  "AXChildren"};

class AXElement final : public UIElement {
 public:
  explicit AXElement(CFRef<AXUIElementRef> element) : element_(std::move(element)) {}

  std::optional<AttributeValue> copyAttributeValue(std::string_view name) const override {
    if (const auto depth = std::exchange(batchDepth_, std::nullopt)) readBatch(*depth);
    const auto known = answers_.find(name);
    return known != answers_.end() ? known->second : readSingly(name);
  }

  void readInBatches(int depth) const { batchDepth_ = depth; }

 private:
  std::optional<AttributeValue> readSingly(std::string_view name) const {
    const auto attribute = makeString(name);
    CFRef<CFTypeRef> value;
    const bool isRead =
        attribute && AXUIElementCopyAttributeValue(element_.get(), attribute.get(), value.out()) == kAXErrorSuccess;
    return isRead && value ? std::optional(attributeValue(value.get())) : std::nullopt;
  }

  void readBatch(int depth) const;

  CFRef<AXUIElementRef> element_;
  /// How many levels below this element are to be read in batches; nothing when this one is not, or has been.
  mutable std::optional<int> batchDepth_ = {};
  mutable Answers answers_ = {};
};

CFRef<CFArrayRef> makeArray(std::span<const CFRef<CFStringRef>> strings) {
  std::vector<const void*> values;
  for (const auto& string : strings) values.push_back(string.get());
  return CFRef(
      CFArrayCreate(kCFAllocatorDefault, values.data(), static_cast<CFIndex>(values.size()), &kCFTypeArrayCallBacks));
}

void markChildren(const std::optional<AttributeValue>& children, int depth) {
  const auto* const list = children ? std::get_if<std::vector<UIElementRef>>(&*children) : nullptr;
  if (list == nullptr) return;
  for (const auto& child : *list) readInBatches(child, depth);
}

void AXElement::readBatch(int depth) const {
  std::vector<CFRef<CFStringRef>> names;
  for (const char* const name : kWalkedAttributes) names.push_back(makeString(name));
  if (depth <= 0) names.pop_back();
  const auto attributes = makeArray(names);
  constexpr AXCopyMultipleAttributeOptions noOptions{};
  CFRef<CFArrayRef> values;
  const auto error = AXUIElementCopyMultipleAttributeValues(element_.get(), attributes.get(), noOptions, values.out());
  if (error != kAXErrorSuccess || !values || CFArrayGetCount(values.get()) != std::ssize(names)) return;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const CFTypeRef value = CFArrayGetValueAtIndex(values.get(), static_cast<CFIndex>(i));
    if (value == nullptr) continue;
    if (isAbsence(value)) {
      answers_.emplace(kWalkedAttributes[i], std::nullopt);
    } else if (!isPlaceholder(value)) {
      answers_.emplace(kWalkedAttributes[i], attributeValue(value));
    }
  }
  if (const auto children = answers_.find("AXChildren"); children != answers_.end())
    markChildren(children->second, depth - 1);
}

}  // namespace

UIElementRef makeElement(CFRef<AXUIElementRef> element) { return std::make_shared<AXElement>(std::move(element)); }

void readInBatches(const UIElementRef& element, int maxDepth) {
  static_cast<const AXElement&>(*element).readInBatches(maxDepth);
}

}  // namespace tavik::platform::macos
