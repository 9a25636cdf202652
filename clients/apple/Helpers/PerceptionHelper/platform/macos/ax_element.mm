#include "platform/macos/ax_element.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <span>
#include <string_view>

#include "platform/macos/ax_value.h"
#include "platform/macos/cf_string.h"

namespace tavik::platform::macos {
namespace {

static_assert(kAXErrorSuccess == 0 && kAXErrorCannotComplete == -25204);

constexpr std::string_view kChildren = "AXChildren";

using Answers = std::map<std::string_view, std::optional<AttributeValue>>;

/// The elements from the root of a walk down to one of them.
struct Lineage {
  CFRef<AXUIElementRef> element = {};
  std::shared_ptr<const Lineage> parent = {};
};

class AXElement final : public UIElement {
 public:
  AXElement(Lineage lineage, std::shared_ptr<SilentProcesses> silent)
      : lineage_(std::make_shared<Lineage>(std::move(lineage))), silent_(std::move(silent)) {}

  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override {
    if (const auto plan = std::exchange(plan_, std::nullopt)) readBatch(*plan);
    const auto known = answers_.find(name);
    return known != answers_.end() ? known->second : readSingly(name);
  }

  /// The depths of `plan` count from this element.
  void readInBatches(const WalkPlan& plan) { plan_ = plan; }

 private:
  AXUIElementRef element() const { return lineage_->element.get(); }

  std::optional<AttributeValue> readSingly(std::string_view name) const {
    const auto attribute = makeString(name);
    CFRef<CFTypeRef> value;
    const bool isRead =
        attribute && isAnswered([&] { return AXUIElementCopyAttributeValue(element(), attribute.get(), value.out()); });
    return isRead && value ? std::optional(valueOf(name, value.get())) : std::nullopt;
  }

  /// Sends the message, unless the element's process is silent. True when it succeeds.
  template <class Message>
  bool isAnswered(const Message& message) const {
    pid_t process = 0;
    AXUIElementGetPid(element(), &process);
    if (silent_->contains(process)) return false;
    const AXError error = message();
    if (error == kAXErrorCannotComplete) silent_->insert(process);
    return error == kAXErrorSuccess;
  }

  /// Of children, those that this element is itself below are left out: a tree that contains itself has no end.
  AttributeValue valueOf(std::string_view name, CFTypeRef object) const {
    const auto parent = name == kChildren ? lineage_ : nullptr;
    auto value = attributeValue(object, [&](CFRef<AXUIElementRef> element) {
      return std::make_shared<AXElement>(Lineage{.element = std::move(element), .parent = parent}, silent_);
    });
    auto* const elements = std::get_if<std::vector<UIElementRef>>(&value);
    if (parent && elements != nullptr) {
      std::erase_if(*elements, [&](const auto& child) { return isBelow(static_cast<AXElement&>(*child).element()); });
    }
    return value;
  }

  bool isBelow(AXUIElementRef element) const {
    const auto* ancestor = lineage_.get();
    while (ancestor != nullptr && !CFEqual(ancestor->element.get(), element)) ancestor = ancestor->parent.get();
    return ancestor != nullptr;
  }

  void readBatch(const WalkPlan& plan);

  std::shared_ptr<const Lineage> lineage_;
  std::shared_ptr<SilentProcesses> silent_;
  std::optional<WalkPlan> plan_ = {};  ///< nothing: no batch is to be read, or it has been
  Answers answers_ = {};
};

CFRef<CFArrayRef> makeArray(std::span<const std::string_view> names) {
  std::vector<CFRef<CFStringRef>> strings;
  std::vector<const void*> values;
  for (const auto name : names) values.push_back(strings.emplace_back(makeString(name)).get());
  return adopted(
      CFArrayCreate(kCFAllocatorDefault, values.data(), static_cast<CFIndex>(values.size()), &kCFTypeArrayCallBacks));
}

/// What is read of an element whose children are not visited.
std::vector<std::string_view> withoutChildren(std::span<const std::string_view> attributes) {
  std::vector<std::string_view> names;
  std::ranges::remove_copy(attributes, std::back_inserter(names), kChildren);
  return names;
}

void markChildren(const AttributeValue& children, const WalkPlan& plan) {
  const auto* const list = std::get_if<std::vector<UIElementRef>>(&children);
  if (list == nullptr) return;
  for (const auto& child : *list) readInBatches(child, plan);
}

void AXElement::readBatch(const WalkPlan& plan) {
  const std::vector names = plan.maxDepth > 0 ? std::vector(plan.attributes.begin(), plan.attributes.end())
                                              : withoutChildren(plan.attributes);
  CFRef<CFArrayRef> values;
  const bool isRead = isAnswered([&] {
    constexpr AXCopyMultipleAttributeOptions kNoOptions{};
    return AXUIElementCopyMultipleAttributeValues(element(), makeArray(names).get(), kNoOptions, values.out());
  });
  if (!isRead || !values || CFArrayGetCount(values.get()) != std::ssize(names)) return;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const CFTypeRef value = CFArrayGetValueAtIndex(values.get(), static_cast<CFIndex>(i));
    if (value == nullptr) continue;
    if (isAbsence(value)) {
      answers_.emplace(names[i], std::nullopt);
    } else if (!isPlaceholder(value)) {
      answers_.emplace(names[i], valueOf(names[i], value));
    }
  }
  if (const auto children = answers_.find(kChildren); children != answers_.end() && children->second) {
    auto below = plan;
    --below.maxDepth;
    markChildren(*children->second, below);
  }
}

}  // namespace

UIElementRef makeElement(CFRef<AXUIElementRef> element, std::shared_ptr<SilentProcesses> silent) {
  return std::make_shared<AXElement>(Lineage{.element = std::move(element)}, std::move(silent));
}

void readInBatches(const UIElementRef& element, const WalkPlan& plan) {
  static_cast<AXElement&>(*element).readInBatches(plan);
}

}  // namespace tavik::platform::macos
