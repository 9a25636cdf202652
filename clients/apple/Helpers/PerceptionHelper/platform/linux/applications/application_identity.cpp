#include "platform/linux/applications/application_identity.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "text/caseless_equal.h"

namespace tavik::platform::applications {
namespace {

/// How an entry fits a window, the best way first; `unit` says that it fits the process.
enum class Fit : std::uint8_t { unit, startupClass, id, endOfID, none };

/// Equal, and known.
bool matches(std::string_view known, std::string_view other) { return !known.empty() && known == other; }

Fit fitOf(const DesktopEntry& entry, const ApplicationEvidence& evidence, const text::CaselessKey& classKey) {
  const auto endOfID = std::string_view(entry.id).substr(entry.id.rfind('.') + 1);
  const bool saysClass = !entry.startupClass.empty() && classKey;
  if (saysClass && text::caselessKey(entry.startupClass) == classKey) return Fit::startupClass;
  if (matches(evidence.className, entry.id)) return Fit::id;
  const bool isEnd = matches(evidence.className, endOfID) || matches(evidence.instanceName, endOfID);
  return isEnd ? Fit::endOfID : Fit::none;
}

/// The first entries of the catalog that fit best; null where none does.
struct BestEntries {
  const DesktopEntry* ofProgram = nullptr;  ///< among those that start the program, however it fits the window
  const DesktopEntry* ofWindow = nullptr;   ///< among all
};

BestEntries bestEntries(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog) {
  BestEntries best;
  auto programsFit = Fit::none, windowsFit = Fit::none;
  const auto classKey = text::caselessKey(evidence.className);
  for (std::size_t i = 0; i < catalog.size(); ++i) {
    const auto* const entry = catalog.at(i);
    if (entry == nullptr) continue;
    const auto fit = fitOf(*entry, evidence, classKey);
    if (fit < windowsFit) {
      windowsFit = fit;
      best.ofWindow = entry;
    }
    const bool startsIt = matches(evidence.executable, entry->program) && !entry->noDisplay;
    const auto programFit = matches(evidence.unitID, entry->id) ? Fit::unit : fit;
    if (startsIt && (best.ofProgram == nullptr || programFit < programsFit)) {
      programsFit = programFit;
      best.ofProgram = entry;
    }
  }
  return best;
}

/// Identifiers in the order of their worth, each once.
class Identifiers {
 public:
  void add(std::string_view identifier) {
    if (!identifier.empty() && std::ranges::find(list_, identifier) == list_.end()) list_.emplace_back(identifier);
  }
  void add(const DesktopEntry* entry) {
    if (entry != nullptr) add(entry->id);
  }
  std::vector<std::string> take() { return std::move(list_); }
  bool isEmpty() const { return list_.empty(); }
  const std::string& best() const { return list_.front(); }

 private:
  std::vector<std::string> list_;
};

/// The first of these that is not empty.
std::optional<std::string> firstKnown(std::initializer_list<std::string_view> texts) {
  const auto* const known = std::ranges::find_if_not(texts, &std::string_view::empty);
  return known != texts.end() ? std::optional(std::string(*known)) : std::nullopt;
}

}  // namespace

ApplicationIdentity identify(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog) {
  const auto best = bestEntries(evidence, catalog);
  Identifiers identifiers;
  identifiers.add(evidence.flatpakID);
  identifiers.add(best.ofProgram);
  identifiers.add(catalog.find(evidence.gtkApplicationID));
  identifiers.add(best.ofWindow);
  identifiers.add(evidence.gtkApplicationID);
  if (best.ofProgram == nullptr && best.ofWindow == nullptr) {
    identifiers.add(evidence.instanceName);
    identifiers.add(evidence.className);
  }
  if (best.ofProgram == nullptr) identifiers.add(evidence.executable);
  const auto* const entry = identifiers.isEmpty() ? nullptr : catalog.find(identifiers.best());
  const auto name = entry != nullptr ? entry->name : "";
  return {.bundleIdentifiers = identifiers.take(),
          .localizedName = firstKnown({name, evidence.className, evidence.processName}),
          .noDisplay = entry != nullptr && entry->noDisplay};
}

}  // namespace tavik::platform::applications
