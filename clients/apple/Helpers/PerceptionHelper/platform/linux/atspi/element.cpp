#include "platform/linux/atspi/element.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <iterator>
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
  if (known.visible) return known.visible;
  if (!known.extents || !known.placement) return std::nullopt;
  return frameOfExtents(*known.extents, known.isInPixels ? Placement{} : *known.placement);
}

Value position(const Knowledge& known) {
  const auto rect = frame(known);
  return rect ? Value(Point{.x = rect->x, .y = rect->y}) : std::nullopt;
}

Value size(const Knowledge& known) {
  const auto rect = frame(known);
  return rect ? Value(Size{.width = rect->width, .height = rect->height}) : std::nullopt;
}

/// True of a combo box whose text is typed into a password field, or may be: Qt names it after that text.
bool isNamedAfterSecret(const Knowledge& known) {
  return known.role == "AXComboBox" && std::ranges::any_of(known.children, [](const auto& child) {
           return child->known().role.value_or("AXSecureTextField") == "AXSecureTextField";
         });
}

/// Without its role an object may be such a combo box.
Value title(const Knowledge& known) {
  return known.role && !isNamedAfterSecret(known) ? unlessEmpty(known.name) : std::nullopt;
}

struct Attribute {
  std::string_view name;
  unsigned facts;
  Value (*read)(const Knowledge& known);
};

constexpr std::array kAttributes{
    Attribute{"AXRole", fact::role, &role},
    Attribute{"AXTitle", fact::role | fact::name, &title},
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

Element::Element(std::shared_ptr<Session> session, dbus::Reference reference, std::optional<Placement> placement,
                 std::shared_ptr<const Lineage> parent)
    : session_(std::move(session)),
      lineage_(std::make_shared<Lineage>(Lineage{.reference = std::move(reference), .parent = std::move(parent)})),
      known_{.placement = placement} {}

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
  known_.isInPixels = isOnPageInPixels();
  return attribute->read(known_);
}

void Element::ask(unsigned facts) {
  const unsigned fresh = facts & ~asked_;
  asked_ |= fresh;
  const auto isFresh = [fresh](unsigned fact) { return (fresh & fact) != 0; };
  if (isFresh(fact::role)) askRole();
  if (isFresh(fact::states)) withStates([] {});
  askProperties(fresh & fact::kProperties);
  if (!isFresh(fact::text | fact::extents)) return;
  const auto askOf = [this, isFresh](const Interfaces& interfaces) {
    if (isFresh(fact::text) && interfaces.text) askText();
    const bool isSomewhere = !session_->placesOpenMenusOnly || !isInClosedMenu();
    if (isFresh(fact::extents) && interfaces.component && isSomewhere) askExtents();
  };
  if (session_->hasTextEverywhere) return askOf({.component = true, .text = true});
  withInterfaces([this, askOf] {
    if (known_.interfaces) askOf(*known_.interfaces);
  });
}

void Element::withInterfaces(const std::function<void()>& then) {
  if (std::exchange(askedInterfaces_, true)) return then();
  session_->conversation.ask(reference(), kAccessible, "GetInterfaces", [this, then](const dbus::Answer& answer) {
    known_.interfaces = readInterfaces(answer.reply);
    then();
  });
}

void Element::withRoleNumber(const std::function<void()>& then) {
  if (roleNumber_) return then();
  session_->conversation.ask(reference(), kAccessible, "GetRole", [this, then](const dbus::Answer& answer) {
    roleNumber_ = readUInt32(answer.reply);
    lineage_->isPage = roleNumber_ && axRole(*roleNumber_, false) == "AXWebArea";
    then();
  });
}

void Element::withStates(const std::function<void()>& then) {
  asked_ |= fact::states;
  if (known_.states) return then();
  session_->conversation.ask(reference(), kAccessible, "GetState", [this, then](const dbus::Answer& answer) {
    known_.states = readStates(answer.reply);
    then();
  });
}

void Element::askRole() {
  withRoleNumber([this] {
    if (!roleNumber_) return;
    if (needsRoleName(*roleNumber_)) {
      session_->conversation.ask(reference(), kAccessible, "GetRoleName", [this](const dbus::Answer& named) {
        if (const auto roleName = readString(named.reply)) known_.role = axRole(*roleName);
      });
    } else if (needsLineState(*roleNumber_)) {
      withStates([this] {
        if (known_.states) known_.role = axRole(*roleNumber_, (*known_.states & kMultiLine) != 0);
      });
    } else {
      known_.role = axRole(*roleNumber_, false);
      if (known_.role == "AXComboBox") askRolesOfChildren();
    }
  });
}

void Element::askRolesOfChildren() {
  withChildren(kAllChildren, [this] {
    for (const auto& child : known_.children) child->ask(fact::role);
  });
}

void Element::withVisibility(const std::function<void()>& then) {
  withStates([this, then] {
    if (!known_.states || (*known_.states & (kVisible | kShowing)) != 0) return then();
    withRoleNumber([this, then] {
      isHidden_ = !roleNumber_ || !isOfMenu(*roleNumber_);
      then();
    });
  });
}

void Element::askProperties(unsigned fresh) {
  if (askedAllProperties_ || (session_->hasAllProperties && std::popcount(fresh) > 1)) return withAllProperties([] {});
  if ((fresh & fact::name) != 0) askString("Name", known_.name);
  if ((fresh & fact::description) != 0) askString("Description", known_.description);
  if ((fresh & fact::helpText) != 0) askHelpText();
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
  const auto handler = [this](const dbus::Answer& answer) {
    known_.extents = readExtents(answer.reply);
    lineage_->extents = known_.extents;
  };
  session_->conversation.ask(reference(), kComponent, "GetExtents", handler, "u",
                             static_cast<std::uint32_t>(session_->coordinates));
}

void Element::withAllProperties(const std::function<void()>& then) {
  if (childCount_) return then();
  awaitingProperties_.push_back(then);
  if (std::exchange(askedAllProperties_, true)) return;
  session_->conversation.askAllProperties(reference(), kAccessible, [this](const dbus::Answer& answer) {
    auto properties = readAllProperties(answer.reply);
    known_.name = admitted(std::move(properties.name));
    known_.description = admitted(std::move(properties.description));
    known_.helpText = admitted(std::move(properties.helpText));
    childCount_ = properties.childCount.value_or(0);
    for (const auto& next : std::exchange(awaitingProperties_, {})) next();
  });
}

/// The role first: without it, what is said after it would not be shown, should the application hang on the rest.
void Element::askAhead() {
  if (!session_->hasAllProperties) return withChildCount([] {});
  ask(fact::role);
  withAllProperties([] {});
}

void Element::withChildCount(const std::function<void()>& then) {
  if (askedAllProperties_) return withAllProperties(then);
  if (childCount_) return then();
  session_->conversation.askProperty(reference(), kAccessible, "ChildCount", [this, then](const dbus::Answer& answer) {
    childCount_ = readInt32Property(answer.reply);
    then();
  });
}

void Element::withChildren(std::size_t limit, const std::function<void()>& then, Descent descent) {
  if (std::exchange(askedChildren_, true)) return then();
  descent_ = descent;
  withChildCount([this, limit, then] {
    const std::int32_t count = childCount_.value_or(0);
    if (count == 0) return then();
    const bool areMany = count > kManyChildren && limit <= static_cast<std::size_t>(kManyChildren);
    const Indices all{.begin = 0, .end = static_cast<std::size_t>(std::max(count, 0))};
    areMany ? askChildrenByIndex(all, limit, then) : askAllChildren(limit, then);
  });
}

void Element::askAllChildren(std::size_t limit, const std::function<void()>& then) {
  session_->conversation.ask(reference(), kAccessible, "GetChildren", [this, limit, then](const dbus::Answer& answer) {
    auto references = readReferences(answer.reply, session_->elementsLeft);
    adoptUpTo(limit, std::move(references).value_or(std::vector<dbus::Reference>{}), then);
  });
}

void Element::adoptUpTo(std::size_t limit, std::vector<dbus::Reference> references, const std::function<void()>& then) {
  const auto missing = static_cast<std::ptrdiff_t>(std::min(limit - known_.children.size(), references.size()));
  const auto end = references.begin() + missing;
  std::vector<dbus::Reference> rest(std::make_move_iterator(end), std::make_move_iterator(references.end()));
  references.erase(end, references.end());
  adopt(std::move(references), [this, limit, then, rest = std::move(rest)] {
    const bool isEnough = rest.empty() || known_.children.size() == limit || session_->elementsLeft == 0;
    isEnough ? then() : adoptUpTo(limit, rest, then);
  });
}

void Element::askChildrenByIndex(Indices indices, std::size_t limit, const std::function<void()>& then) {
  const auto wanted = std::min(limit - known_.children.size(), indices.end - indices.begin);
  if (wanted == 0 || session_->elementsLeft == 0) return then();
  const auto answers =
      std::make_shared<Answers>(Answers{.references = std::vector<dbus::Reference>(wanted), .missing = wanted});
  const Indices rest{.begin = indices.begin + wanted, .end = indices.end};
  for (std::size_t index = 0; index < wanted; ++index) {
    const auto handler = [this, rest, limit, then, answers, index](const dbus::Answer& answer) {
      answers->references[index] = readReference(answer.reply).value_or(dbus::Reference{});
      if (--answers->missing > 0) return;
      std::erase(answers->references, dbus::Reference{});
      adopt(std::move(answers->references), [this, rest, limit, then] { askChildrenByIndex(rest, limit, then); });
    };
    session_->conversation.ask(reference(), kAccessible, "GetChildAtIndex", handler, "i",
                               static_cast<std::int32_t>(indices.begin + index));
  }
}

bool Element::isBelow(const dbus::Reference& reference) const {
  const auto* ancestor = lineage_.get();
  while (ancestor != nullptr && ancestor->reference != reference) ancestor = ancestor->parent.get();
  return ancestor != nullptr;
}

bool Element::isInClosedMenu() const {
  return roleNumber_ && isOfMenu(*roleNumber_) && known_.states && (*known_.states & kShowing) == 0;
}

bool Element::isOnPageInPixels() const {
  if (!known_.placement || known_.placement->scale == 1) return false;
  const Lineage* page = nullptr;
  for (const Lineage* at = lineage_.get(); at != nullptr; at = at->parent.get()) {
    if (at->isPage) page = at;
  }
  if (page == nullptr || !page->parent || !page->extents || !page->parent->extents) return false;
  return countsPixels(*page->extents, *page->parent->extents, known_.placement->scale);
}

void Element::adopt(std::vector<dbus::Reference> references, const std::function<void()>& then) {
  std::erase_if(references, [this](const dbus::Reference& child) { return isBelow(child); });
  const auto isForeign = [this](const dbus::Reference& child) { return child.busName != reference().busName; };
  const auto foreign = static_cast<std::size_t>(std::ranges::count_if(references, isForeign));
  const auto answers = std::make_shared<Answers>(Answers{.references = std::move(references), .missing = foreign});
  const auto finish = [this, then, answers] {
    std::erase(answers->references, dbus::Reference{});
    dropHidden(addChildren(std::move(answers->references)), then);
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

void Element::dropHidden(std::size_t count, const std::function<void()>& then) {
  const bool isApplication = lineage_->parent == nullptr;
  const std::vector fresh(known_.children.end() - static_cast<std::ptrdiff_t>(count), known_.children.end());
  if (isApplication || fresh.empty()) return then();
  const auto missing = std::make_shared<std::size_t>(count);
  for (const auto& child : fresh) {
    // Its answer is there with the next one, which saves a turn for each level of the tree.
    if (descent_ == Descent::goesOn) child->askAhead();
    child->withVisibility([this, then, missing] {
      if (--*missing > 0) return;
      const auto isHidden = [](const auto& element) { return element->isHidden_; };
      std::ranges::copy_if(known_.children, std::back_inserter(hidden_), isHidden);
      session_->elementsLeft += std::erase_if(known_.children, isHidden);
      then();
    });
  }
}

std::size_t Element::addChildren(std::vector<dbus::Reference> references) {
  references.resize(std::min(references.size(), session_->elementsLeft));
  session_->elementsLeft -= references.size();
  for (auto& reference : references) {
    known_.children.push_back(std::make_shared<Element>(session_, std::move(reference), known_.placement, lineage_));
  }
  return references.size();
}

std::optional<std::string> Element::admitted(std::optional<std::string> text) {
  if (!text || text->size() > session_->textBytesLeft) return std::nullopt;
  session_->textBytesLeft -= text->size();
  return text;
}

}  // namespace tavik::platform::atspi
