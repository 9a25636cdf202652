#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/reply.h"
#include "platform/linux/atspi/session.h"
#include "platform/linux/atspi/window_matching.h"
#include "platform/linux/dbus/conversation.h"

namespace tavik::platform::atspi {

/// What can be asked of an object, apart from its children. Several are combined with |.
namespace fact {
enum : unsigned { role = 1, states = 2, name = 4, description = 8, helpText = 16, text = 32, extents = 64 };
inline constexpr unsigned kProperties = name | description | helpText;
}  // namespace fact

class Element;

/// What is known of an object so far.
struct Knowledge {
  std::optional<std::string_view> role = {};  ///< the AX role
  std::optional<States> states = {};
  std::optional<Interfaces> interfaces = {};
  std::optional<std::string> name = {};
  std::optional<std::string> description = {};
  std::optional<std::string> helpText = {};
  std::optional<std::string> text = {};
  std::optional<Extents> extents = {};
  std::optional<Placement> placement = {};  ///< of the extents in its window, if that is known
  std::optional<Rect> visible = {};         ///< of a window that the window system has
  bool isInPixels = false;                  ///< its extents are the frame, whatever the placement says
  std::vector<std::shared_ptr<Element>> children = {};
};

/// What a walk has to ask for to read these attributes of an object; its children are asked for apart.
unsigned factsFor(std::span<const std::string_view> attributes);

/// The objects from the root of a tree down to one of it, and what those below have to know of each.
struct Lineage {
  dbus::Reference reference = {};
  std::shared_ptr<const Lineage> parent = {};
  std::optional<Extents> extents = {};
  bool isPage = false;  ///< a page of a browser
};

/// An object of an accessibility tree. Asks for each thing at most once, when it is first wanted, and keeps what it was
/// told: a thing that could not be read then stays unread. Settle the
/// session before destroying the element: pending replies point into it.
class Element final : public UIElement {
 public:
  static constexpr std::size_t kAllChildren = SIZE_MAX;
  /// Whether the children will be asked for theirs.
  enum class Descent : std::uint8_t { ends, goesOn };
  /// `parent` is null for the root of a tree.
  Element(std::shared_ptr<Session> session, dbus::Reference reference, std::optional<Placement> placement,
          std::shared_ptr<const Lineage> parent = {});

  /// A combo box with a password field has no "AXTitle". An element whose role could not be read has no "AXValue"
  /// either, because what must not be shown is told by the role. "AXValue" is the text of the Text interface as the
  /// toolkit gives it to anyone, bullets for a password; it is asked for without the number of its characters, for
  /// which GTK 4.8 gives away hidden text. A text that only holds the places of embedded objects, as Chromium's
  /// containers have, is none.
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override;

  /// Asks for those facts that have not been asked for. They are known once the session has settled.
  void ask(unsigned facts);
  /// Calls `then` when the object's interfaces are known, or known to be unreadable.
  void withInterfaces(const std::function<void()>& then);
  /// Calls `then` when the children are known: at least the first `limit`, all of them when they are not many more.
  /// What no user can bring into view by scrolling or opening a menu is no child; the windows of an application always
  /// are.
  void withChildren(std::size_t limit, const std::function<void()>& then, Descent descent = Descent::ends);

  const std::shared_ptr<Session>& session() const { return session_; }
  const dbus::Reference& reference() const { return lineage_->reference; }
  const Knowledge& known() const { return known_; }
  std::shared_ptr<const Lineage> lineage() const { return lineage_; }
  /// For a window, before its children are known.
  void place(const PlacedWindow& placed) {
    known_.visible = placed.visible;
    known_.placement = placed.placement;
  }

 private:
  struct Indices {
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  void askRole();
  void askRolesOfChildren();
  /// Asks for what will be wanted of a child whose children are wanted.
  void askAhead();
  void withChildCount(const std::function<void()>& then);
  /// Asks for those facts in one message where several are wanted and the application can be asked so.
  void askProperties(unsigned fresh);
  /// Asks for name, description, help text and the number of children in one message.
  void withAllProperties(const std::function<void()>& then);
  void withRoleNumber(const std::function<void()>& then);
  void withStates(const std::function<void()>& then);
  /// Calls `then` when it is known whether the object is hidden: neither visible nor showing, but for closed menus.
  void withVisibility(const std::function<void()>& then);
  /// Takes those of the last `count` children away that are hidden.
  void dropHidden(std::size_t count, const std::function<void()>& then);
  /// Adopts these, the first first, until there are `limit` children.
  void adoptUpTo(std::size_t limit, std::vector<dbus::Reference> references, const std::function<void()>& then);
  void askHelpText();
  void askText();
  void askExtents();
  void askString(const char* property, std::optional<std::string>& result);
  void askAllChildren(std::size_t limit, const std::function<void()>& then);
  /// Adopts those children until there are `limit`; a null object is none.
  void askChildrenByIndex(Indices indices, std::size_t limit, const std::function<void()>& then);
  /// Takes them for its children, but for those that it is itself below, and for those of other processes that have
  /// another parent: anybody can claim anybody's objects.
  void adopt(std::vector<dbus::Reference> references, const std::function<void()>& then);
  bool isBelow(const dbus::Reference& reference) const;
  /// True on the pages of Chromium, which are in pixels where its windows are not. What is known of the objects that it
  /// is in decides.
  bool isOnPageInPixels() const;
  /// As far as the role and the states are known.
  bool isInClosedMenu() const;
  std::size_t addChildren(std::vector<dbus::Reference> references);
  std::optional<std::string> admitted(std::optional<std::string> text);

  std::shared_ptr<Session> session_;
  std::shared_ptr<Lineage> lineage_;
  Knowledge known_;
  unsigned asked_ = 0;
  bool askedInterfaces_ = false;
  bool askedChildren_ = false;
  bool isHidden_ = false;
  std::vector<std::shared_ptr<Element>> hidden_;  ///< of its children; answers to them may still come
  Descent descent_ = Descent::ends;
  std::optional<std::int32_t> childCount_;
  bool askedAllProperties_ = false;
  std::vector<std::function<void()>> awaitingProperties_;
  std::optional<std::uint32_t> roleNumber_;
};

}  // namespace tavik::platform::atspi
