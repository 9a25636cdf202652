#include "platform/linux/atspi/role_names.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tavik::platform::atspi {
namespace {

struct Row {
  std::string_view name;
  std::string_view axRole;
};

/// Every role of AT-SPI (AtspiRole), at the index that is its number. The AX roles follow the mappings of the W3C
/// (core-aam, html-aam, mathml-aam, dpub-aam) and Gecko's; a password field has a role of its own, so that its role
/// alone tells that it is secret. The rows "text" and "entry" hold the role of a single line.
constexpr std::array kRoles{
    Row{"invalid", "AXUnknown"},  // 0
    Row{"accelerator label", "AXStaticText"},
    Row{"alert", "AXGroup"},
    Row{"animation", "AXImage"},
    Row{"arrow", "AXUnknown"},
    Row{"calendar", "AXGroup"},
    Row{"canvas", "AXGroup"},
    Row{"check box", "AXCheckBox"},
    Row{"check menu item", "AXMenuItem"},
    Row{"color chooser", "AXColorWell"},
    Row{"column header", "AXCell"},  // 10
    Row{"combo box", "AXComboBox"},
    Row{"date editor", "AXTextField"},
    Row{"desktop icon", "AXImage"},
    Row{"desktop frame", "AXUnknown"},
    Row{"dial", "AXSlider"},
    Row{"dialog", "AXWindow"},
    Row{"directory pane", "AXBrowser"},
    Row{"drawing area", "AXGroup"},
    Row{"file chooser", "AXWindow"},
    Row{"filler", "AXGroup"},  // 20
    Row{"focus traversable", "AXUnknown"},
    Row{"font chooser", "AXWindow"},
    Row{"frame", "AXWindow"},
    Row{"glass pane", "AXGroup"},
    Row{"html container", "AXGroup"},
    Row{"icon", "AXImage"},
    Row{"image", "AXImage"},
    Row{"internal frame", "AXScrollArea"},
    Row{"label", "AXStaticText"},
    Row{"layered pane", "AXGroup"},  // 30
    Row{"list", "AXList"},
    Row{"list item", "AXGroup"},
    Row{"menu", "AXMenu"},
    Row{"menu bar", "AXMenuBar"},
    Row{"menu item", "AXMenuItem"},
    Row{"option pane", "AXGroup"},
    Row{"page tab", "AXRadioButton"},
    Row{"page tab list", "AXTabGroup"},
    Row{"panel", "AXGroup"},
    Row{"password text", "AXSecureTextField"},  // 40
    Row{"popup menu", "AXMenu"},
    Row{"progress bar", "AXProgressIndicator"},
    Row{"push button", "AXButton"},
    Row{"radio button", "AXRadioButton"},
    Row{"radio menu item", "AXMenuItem"},
    Row{"root pane", "AXGroup"},
    Row{"row header", "AXCell"},
    Row{"scroll bar", "AXScrollBar"},
    Row{"scroll pane", "AXScrollArea"},
    Row{"separator", "AXSplitter"},  // 50
    Row{"slider", "AXSlider"},
    Row{"spin button", "AXIncrementor"},
    Row{"split pane", "AXSplitGroup"},
    Row{"status bar", "AXGroup"},
    Row{"table", "AXTable"},
    Row{"table cell", "AXCell"},
    Row{"table column header", "AXCell"},
    Row{"table row header", "AXCell"},
    Row{"tearoff menu item", "AXMenuItem"},
    Row{"terminal", "AXTextArea"},  // 60
    Row{"text", "AXTextField"},
    Row{"toggle button", "AXCheckBox"},
    Row{"tool bar", "AXToolbar"},
    Row{"tool tip", "AXGroup"},
    Row{"tree", "AXOutline"},
    Row{"tree table", "AXTable"},
    Row{"unknown", "AXUnknown"},
    Row{"viewport", "AXGroup"},
    Row{"window", "AXWindow"},
    Row{"extended", "AXUnknown"},  // 70
    Row{"header", "AXGroup"},
    Row{"footer", "AXGroup"},
    Row{"paragraph", "AXGroup"},
    Row{"ruler", "AXRuler"},
    Row{"application", "AXApplication"},
    Row{"autocomplete", "AXComboBox"},
    Row{"editbar", "AXTextField"},
    Row{"embedded", "AXGroup"},
    Row{"entry", "AXTextField"},
    Row{"chart", "AXImage"},  // 80
    Row{"caption", "AXGroup"},
    Row{"document frame", "AXGroup"},
    Row{"heading", "AXHeading"},
    Row{"page", "AXGroup"},
    Row{"section", "AXGroup"},
    Row{"redundant object", "AXUnknown"},
    Row{"form", "AXGroup"},
    Row{"link", "AXLink"},
    Row{"input method window", "AXUnknown"},
    Row{"table row", "AXRow"},  // 90
    Row{"tree item", "AXRow"},
    Row{"document spreadsheet", "AXGroup"},
    Row{"document presentation", "AXGroup"},
    Row{"document text", "AXGroup"},
    Row{"document web", "AXWebArea"},
    Row{"document email", "AXGroup"},
    Row{"comment", "AXGroup"},
    Row{"list box", "AXList"},
    Row{"grouping", "AXGroup"},
    Row{"image map", "AXImageMap"},  // 100
    Row{"notification", "AXGroup"},
    Row{"info bar", "AXGroup"},
    Row{"level bar", "AXLevelIndicator"},
    Row{"title bar", "AXGroup"},
    Row{"block quote", "AXGroup"},
    Row{"audio", "AXGroup"},
    Row{"video", "AXGroup"},
    Row{"definition", "AXGroup"},
    Row{"article", "AXGroup"},
    Row{"landmark", "AXGroup"},  // 110
    Row{"log", "AXGroup"},
    Row{"marquee", "AXGroup"},
    Row{"math", "AXGroup"},
    Row{"rating", "AXLevelIndicator"},
    Row{"timer", "AXGroup"},
    Row{"static", "AXStaticText"},
    Row{"math fraction", "AXGroup"},
    Row{"math root", "AXGroup"},
    Row{"subscript", "AXGroup"},
    Row{"superscript", "AXGroup"},  // 120
    Row{"description list", "AXList"},
    Row{"description term", "AXGroup"},
    Row{"description value", "AXGroup"},
    Row{"footnote", "AXGroup"},
    Row{"content deletion", "AXGroup"},
    Row{"content insertion", "AXGroup"},
    Row{"mark", "AXGroup"},
    Row{"suggestion", "AXGroup"},
    Row{"push button menu", "AXMenuButton"},
    Row{"switch", "AXCheckBox"},  // 130
};
static_assert(kRoles.size() == 131);

constexpr std::uint32_t kExtended = 70;  // the object's role is beyond the enumeration: its name alone says which
constexpr std::uint32_t kText = 61;
constexpr std::uint32_t kEntry = 79;

constexpr bool isAt(std::uint32_t role, std::string_view name) { return kRoles.at(role).name == name; }
static_assert(isAt(0, "invalid") && isAt(40, "password text") && isAt(kText, "text") && isAt(kExtended, "extended"));
static_assert(isAt(kEntry, "entry") && isAt(100, "image map") && isAt(130, "switch"));

}  // namespace

bool needsRoleName(std::uint32_t role) { return role == kExtended || role >= kRoles.size(); }

bool isOfMenu(std::uint32_t role) { return axRole(role, false).starts_with("AXMenu"); }

bool needsLineState(std::uint32_t role) { return role == kText || role == kEntry; }

std::string_view axRole(std::uint32_t role, bool isMultiLine) {
  if (needsLineState(role) && isMultiLine) return "AXTextArea";
  return role < kRoles.size() ? kRoles.at(role).axRole : "AXUnknown";
}

std::string_view axRole(std::string_view roleName) {
  const auto* const row = std::ranges::find(kRoles, roleName, &Row::name);
  return row == kRoles.end() ? "AXUnknown" : row->axRole;
}

}  // namespace tavik::platform::atspi
