#include "platform/linux/applications/application_identity.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "text/caseless_equal.h"

namespace tavik::platform::applications {
namespace {

/// Why an entry fits, the best reason first.
enum class Fit : std::uint8_t { startupClass, id, endOfID, program, none };

/// Equal, and known.
bool matches(std::string_view known, std::string_view other) { return !known.empty() && known == other; }

Fit fitOf(const DesktopEntry& entry, const ApplicationEvidence& evidence) {
  const auto endOfID = std::string_view(entry.id).substr(entry.id.rfind('.') + 1);
  if (!entry.startupClass.empty() && text::caselessEqual(entry.startupClass, evidence.className)) {
    return Fit::startupClass;
  }
  if (matches(evidence.className, entry.id)) return Fit::id;
  if (matches(evidence.className, endOfID) || matches(evidence.instanceName, endOfID)) return Fit::endOfID;
  return matches(evidence.executable, entry.program) && !entry.noDisplay ? Fit::program : Fit::none;
}

/// The entry that fits best, the first among equals; null when none does.
const DesktopEntry* bestEntry(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog) {
  const DesktopEntry* best = nullptr;
  auto bestFit = Fit::none;
  for (std::size_t i = 0; i < catalog.size() && bestFit != Fit::startupClass; ++i) {
    const auto* const entry = catalog.at(i);
    const auto fit = entry != nullptr ? fitOf(*entry, evidence) : Fit::none;
    if (fit >= bestFit) continue;
    bestFit = fit;
    best = entry;
  }
  return best;
}

/// The first of these that is not empty.
std::optional<std::string> firstKnown(std::initializer_list<std::string_view> texts) {
  for (const auto text : texts) {
    if (!text.empty()) return std::string(text);
  }
  return std::nullopt;
}

}  // namespace

ApplicationIdentity identify(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog) {
  auto identifier = firstKnown({evidence.flatpakID, evidence.gtkApplicationID});
  const auto* const entry = identifier ? catalog.find(*identifier) : bestEntry(evidence, catalog);
  if (!identifier) identifier = firstKnown({entry != nullptr ? entry->id : "", evidence.instanceName});
  const auto name = entry != nullptr ? entry->name : "";
  return {.bundleIdentifier = identifier,
          .localizedName = firstKnown({name, evidence.className, evidence.processName}),
          .noDisplay = entry != nullptr && entry->noDisplay};
}

}  // namespace tavik::platform::applications
