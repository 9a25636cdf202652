#include "platform/linux/atspi/element.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "platform/linux/atspi/role_names.h"
#include "text/trimming.h"

namespace tavik::platform::atspi {
namespace {

/// Above this many children a list of them all costs the application more than one call for each that is wanted.
constexpr std::int32_t kManyChildren = 200;

using Value = std::optional<AttributeValue>;

/// An empty text is AT-SPI's way of saying that there is none.
Value unlessEmpty(const std::optional<std::string>& text) {
  return text && !text->empty() ? Value(*text) : std::nullopt;
}

Value role(const Knowledge& known) { return known.role ? Value(std::string(*known.role)) : std::nullopt; }

/// True of a text that holds embedded objects and nothing else. Each stands in it as a U+FFFC, which no screen shows.
/// Among words they are left in: without them, the words on both sides would become one.
bool holdsOnlyObjects(std::string_view value) {
  constexpr std::string_view kObject = "\uFFFC";
  auto rest = text::trimmedOfWhitespaceAndNewlines(value);
  if (!rest.starts_with(kObject)) return false;
  while (rest.starts_with(kObject)) rest = text::trimmedOfWhitespaceAndNewlines(rest.substr(kObject.size()));
  return rest.empty();
}

Value value(const Knowledge& known) {
  const bool saysSomething = known.role && known.text && !holdsOnlyObjects(*known.text);
  return saysSomething ? Value(*known.text) : std::nullopt;
}

std::optional<Rect> frame(const Knowledge& known) {
  return known.extents && known.offset ? frameOfExtents(*known.extents, *known.offset) : std::nullopt;
}

Value position(const Knowledge& known) {
  const auto rect = frame(known);
  return rect ? Value(Point{.x = rect->x, .y = rect->y}) : std::nullopt;
}

Value size(const Knowledge& known) {
  const auto rect = frame(known);
  return rect ? Value(Size{.width = rect->width, .height = rect->height}) : std::nullopt;
}

struct Attribute {
  std::string_view name;
  unsigned facts;
  Value (*read)(const Knowledge& known);
};

constexpr std::array kAttributes{
    Attribute{"AXRole", fact::role, &role},
    Attribute{"AXTitle", fact::name, [](const Knowledge& known) { return unlessEmpty(known.name); }},
    Attribute{"AXValue", fact::role | fact::text, &value},
    Attribute{"AXHelp", fact::helpText, [](const Knowledge& known) { return unlessEmpty(known.helpText); }},
    Attribute{"AXDescription", fact::description,
              [](const Knowledge& known) { return unlessEmpty(known.description); }},
    Attribute{"AXPosition", fact::extents, &position},
    Attribute{"AXSize", fact::extents, &size},
};

const Attribute* findAttribute(std::string_view name) {
  const auto* const found = std::ranges::find(kAttributes, name, &Attribute::name);
  return found != kAttributes.end() ? found : nullptr;
}

/// References on their way: so many answers are missing.
struct Answers {
  std::vector<dbus::Reference> references;
  std::size_t missing;
};

}  // namespace

unsigned factsFor(std::span<const std::string_view> attributes) {
  unsigned facts = 0;
  for (const auto name : attributes) {
    if (const auto* const attribute = findAttribute(name)) facts |= attribute->facts;
  }
  return facts;
}

Element::Element(std::shared_ptr<Session> session, dbus::Reference reference, std::optional<Point> offset,
                 std::shared_ptr<const Lineage> parent)
    : session_(std::move(session)),
      lineage_(std::make_shared<Lineage>(Lineage{.reference = std::move(reference), .parent = std::move(parent)})),
      known_{.offset = offset} {}

std::optional<AttributeValue> Element::copyAttributeValue(std::string_view name) {
  if (name == "AXChildren") {
    withChildren(kAllChildren, [] {});
    session_->conversation.settle();
    if (known_.children.empty()) return std::nullopt;
    return std::vector<UIElementRef>(known_.children.begin(), known_.children.end());
  }
  const auto* const attribute = findAttribute(name);
  if (attribute == nullptr) return std::nullopt;
  ask(attribute->facts);
  session_->conversation.settle();
  return attribute->read(known_);
}

void Element::ask(unsigned facts) {
  const unsigned fresh = facts & ~asked_;
  asked_ |= fresh;
  const auto isFresh = [fresh](unsigned fact) { return (fresh & fact) != 0; };
  if (isFresh(fact::role)) askRole();
  if (isFresh(fact::states)) {
    session_->conversation.ask(reference(), kAccessible, "GetState",
                               [this](const dbus::Answer& answer) { known_.states = readStates(answer.reply); });
  }
  if (isFresh(fact::name)) askString("Name", known_.name);
  if (isFresh(fact::description)) askString("Description", known_.description);
  if (isFresh(fact::helpText)) askHelpText();
  if (!isFresh(fact::text | fact::extents)) return;
  withInterfaces([this, isFresh] {
    if (!known_.interfaces) return;
    if (isFresh(fact::text) && known_.interfaces->text) askText();
    if (isFresh(fact::extents) && known_.interfaces->component) askExtents();
  });
}

void Element::withInterfaces(const std::function<void()>& then) {
  if (std::exchange(askedInterfaces_, true)) return then();
  session_->conversation.ask(reference(), kAccessible, "GetInterfaces", [this, then](const dbus::Answer& answer) {
    known_.interfaces = readInterfaces(answer.reply);
    then();
  });
}

void Element::askRole() {
  session_->conversation.ask(reference(), kAccessible, "GetRole", [this](const dbus::Answer& answer) {
    const auto role = readUInt32(answer.reply);
    if (!role) return;
    if (needsRoleName(*role)) {
      session_->conversation.ask(reference(), kAccessible, "GetRoleName", [this](const dbus::Answer& named) {
        if (const auto roleName = readString(named.reply)) known_.role = axRole(*roleName);
      });
    } else if (needsLineState(*role)) {
      session_->conversation.ask(reference(), kAccessible, "GetState", [this, role](const dbus::Answer& stated) {
        if (const auto states = readStates(stated.reply)) known_.role = axRole(*role, (*states & kMultiLine) != 0);
      });
    } else {
      known_.role = axRole(*role, false);
    }
  });
}

void Element::askString(const char* property, std::optional<std::string>& result) {
  session_->conversation.askProperty(reference(), kAccessible, property, [this, &result](const dbus::Answer& answer) {
    result = admitted(readStringProperty(answer.reply));
  });
}

void Element::askHelpText() {
  if (session_->withoutHelpText.contains(reference().busName)) return;
  session_->conversation.askProperty(reference(), kAccessible, "HelpText", [this](const dbus::Answer& answer) {
    if (answer.isUnsupported) session_->withoutHelpText.insert(reference().busName);
    known_.helpText = admitted(readStringProperty(answer.reply));
  });
}

void Element::askText() {
  constexpr std::int32_t kToTheEnd = -1;
  const auto handler = [this](const dbus::Answer& answer) { known_.text = admitted(readString(answer.reply)); };
  session_->conversation.ask(reference(), kText, "GetText", handler, "ii", std::int32_t{0}, kToTheEnd);
}

void Element::askExtents() {
  const auto handler = [this](const dbus::Answer& answer) { known_.extents = readExtents(answer.reply); };
  session_->conversation.ask(reference(), kComponent, "GetExtents", handler, "u",
                             static_cast<std::uint32_t>(session_->coordinates));
}

void Element::withChildren(std::size_t limit, const std::function<void()>& then) {
  if (std::exchange(askedChildren_, true)) return then();
  session_->conversation.askProperty(
      reference(), kAccessible, "ChildCount", [this, limit, then](const dbus::Answer& answer) {
        const auto count = readInt32Property(answer.reply);
        if (!count || *count == 0) return then();
        const bool areMany = *count > kManyChildren && limit <= static_cast<std::size_t>(kManyChildren);
        areMany ? askChildrenByIndex(limit, then) : askAllChildren(limit, then);
      });
}

void Element::askAllChildren(std::size_t limit, const std::function<void()>& then) {
  session_->conversation.ask(reference(), kAccessible, "GetChildren", [this, limit, then](const dbus::Answer& answer) {
    const std::size_t taken = std::min(limit, session_->elementsLeft);
    adopt(readReferences(answer.reply, taken).value_or(std::vector<dbus::Reference>{}), then);
  });
}

void Element::askChildrenByIndex(std::size_t limit, const std::function<void()>& then) {
  if (limit == 0) return then();
  const auto answers =
      std::make_shared<Answers>(Answers{.references = std::vector<dbus::Reference>(limit), .missing = limit});
  for (std::size_t index = 0; index < limit; ++index) {
    const auto handler = [this, limit, then, answers, index](const dbus::Answer& answer) {
      answers->references[index] = readReference(answer.reply).value_or(dbus::Reference{});
      if (--answers->missing > 0) return;
      // A null object does not count as a child, so that later children move up: then the whole list is needed.
      if (std::ranges::find(answers->references, dbus::Reference{}) != answers->references.end()) {
        return askAllChildren(limit, then);
      }
      adopt(std::move(answers->references), then);
    };
    session_->conversation.ask(reference(), kAccessible, "GetChildAtIndex", handler, "i",
                               static_cast<std::int32_t>(index));
  }
}

bool Element::isBelow(const dbus::Reference& reference) const {
  const auto* ancestor = lineage_.get();
  while (ancestor != nullptr && ancestor->reference != reference) ancestor = ancestor->parent.get();
  return ancestor != nullptr;
}

void Element::adopt(std::vector<dbus::Reference> references, const std::function<void()>& then) {
  std::erase_if(references, [this](const dbus::Reference& child) { return isBelow(child); });
  const auto isForeign = [this](const dbus::Reference& child) { return child.busName != reference().busName; };
  const auto foreign = static_cast<std::size_t>(std::ranges::count_if(references, isForeign));
  const auto answers = std::make_shared<Answers>(Answers{.references = std::move(references), .missing = foreign});
  const auto finish = [this, then, answers] {
    std::erase(answers->references, dbus::Reference{});
    addChildren(std::move(answers->references));
    then();
  };
  if (foreign == 0) return finish();
  for (auto& child : answers->references) {
    if (!isForeign(child)) continue;
    const auto handler = [this, answers, finish, &child](const dbus::Answer& answer) {
      if (readReferenceProperty(answer.reply) != reference()) child = {};
      if (--answers->missing == 0) finish();
    };
    session_->conversation.askProperty(dbus::Reference(child), kAccessible, "Parent", handler);
  }
}

void Element::addChildren(std::vector<dbus::Reference> references) {
  references.resize(std::min(references.size(), session_->elementsLeft));
  session_->elementsLeft -= references.size();
  for (auto& reference : references) {
    known_.children.push_back(std::make_shared<Element>(session_, std::move(reference), known_.offset, lineage_));
  }
}

std::optional<std::string> Element::admitted(std::optional<std::string> text) {
  if (!text || text->size() > session_->textBytesLeft) return std::nullopt;
  session_->textBytesLeft -= text->size();
  return text;
}

}  // namespace tavik::platform::atspi
