#pragma once

#include <ApplicationServices/ApplicationServices.h>
#include <any>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "platform/screen_capture.h"

namespace tavik::fake {

/// One reference to an object of the fake frameworks, or none, for as long as this or a copy exists.
using Held = std::shared_ptr<const void>;
using List = std::vector<Held>;                           ///< the value of an array
using Dictionary = std::map<std::string, Held>;           ///< the value of a dictionary
using Geometry = std::variant<CGPoint, CGSize, AXError>;  ///< the value of an AXValue
/// The value of an element: the attributes that it has, of which one that is null has no value, and its process.
struct Element {
  Dictionary attributes = {};
  std::int32_t pid = 0;
};
/// The value of an attribute that nobody may ask for.
struct Untouchable {};

/// Children that are the element itself, alone.
struct Itself {};

/// A new object with this value: one of the above, a string, a double, a bool, or nullptr for CFNull.
Held object(const std::any& value);
/// What stands for an unpaired surrogate in the strings of this world, which are UTF-8 otherwise.
inline constexpr char kUnpairedSurrogate = '\xFF';
inline Held text(const std::string& value) { return object(value); }
inline Held list(const List& values) { return object(values); }
inline Held point(double x, double y) { return object(Geometry(CGPoint{x, y})); }
inline Held size(double width, double height) { return object(Geometry(CGSize{width, height})); }
inline Held element(const Dictionary& attributes, std::int32_t pid = 7) { return object(Element{attributes, pid}); }

struct Application {
  std::int32_t pid = 0;
  std::optional<std::string> bundleIdentifier = {}, name = {};
  long activationPolicy = 0;
  Dictionary tree = {};
};

struct Display {
  std::uint32_t displayID = 0;
  platform::Rect frame = {};  ///< among the other displays
};

/// Everything that the fakes answer from.
struct World {
  Dictionary environment = {};
  std::optional<std::string> resource = {};  ///< the path of the policy that came with the program
  std::vector<Application> applications = {};
  std::optional<Application> frontmost = {};
  std::optional<double> scale = {};          ///< nothing: there is no main screen
  Dictionary screen = {};                    ///< the description of the main screen
  int messages = 1000;                       ///< how many may be sent to applications
  std::map<std::int32_t, int> answers = {};  ///< how many a process answers before it hangs; all where it is not listed
  std::vector<Display> displays = {};
  std::vector<platform::Window> windows = {};
  std::set<std::string> failing = {};  ///< what fails: names of functions, and others that the fakes ask for
};

World& world();

/// Returns when every completion handler has been called.
void waitForHandlers();

}  // namespace tavik::fake
