#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tavik::fake {

/// Makes one value with one reference, or none at all.
using Maker = std::function<const void*()>;
/// What stands for an unpaired surrogate in the strings of this world, which are UTF-8 otherwise.
inline constexpr char kUnpairedSurrogate = '\xFF';
Maker text(std::string value);
Maker number(double value);
Maker boolean(bool value);
Maker null();
Maker list(std::vector<Maker> values);
Maker point(double x, double y);
Maker size(double width, double height);

/// The attributes of an element by name; the others are missing.
using Element = std::map<std::string, Maker>;
Maker element(Element attributes);

struct Application {
  std::int32_t pid = 0;
  std::optional<std::string> bundleIdentifier = {}, name = {};
  long activationPolicy = 0;
  Element tree = {};
};

struct ListedWindow {
  std::uint32_t number = 0;
  std::optional<std::int32_t> pid = {};
  double x = 0, y = 0, width = 0, height = 0;
  bool isOnScreen = true;
  long layer = 0;
};

struct ListedDisplay {
  std::uint32_t number = 0;
  long width = 0, height = 0;
};

/// Everything that the fakes answer from.
struct World {
  std::map<std::string, std::string> environment = {};
  std::optional<std::string> resource = {};  ///< the path of the policy that came with the program
  std::vector<Application> applications = {};
  std::optional<std::int32_t> frontmost = {};
  std::optional<double> scale = {};  ///< nothing: there is no main screen
  Maker screenNumber = {};           ///< null: the main screen has none
  std::vector<ListedDisplay> displays = {};
  std::vector<ListedWindow> windows = {};
  std::set<std::string> failing = {};  ///< what fails: names of functions, and others that the fakes ask for
};

World& world();

/// What somebody still owns once all handlers have been called, line by line.
std::string liveObjects();

}  // namespace tavik::fake
