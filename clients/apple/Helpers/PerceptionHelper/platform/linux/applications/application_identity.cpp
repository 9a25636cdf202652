#include "platform/linux/applications/application_identity.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/linux/applications/interpreter.h"
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

/// The first of the entries that rank best.
template <class Rank>
class BestEntry {
 public:
  void consider(const DesktopEntry& entry, Rank rank) {
    if (entry_ != nullptr && rank >= rank_) return;
    entry_ = &entry;
    rank_ = rank;
  }
  const DesktopEntry* get() const { return entry_; }

 private:
  const DesktopEntry* entry_ = nullptr;
  Rank rank_ = {};
};

/// What the catalog has for the evidence; of entries that are alike, the first.
struct Candidates {
  BestEntry<std::pair<Fit, bool>> ofProgram = {};          ///< by the program, then by the window, then without options
  BestEntry<std::pair<bool, Fit>> ofWindow = {};           ///< one that is shown, then by the window
  BestEntry<Fit> closest = {};                             ///< by the window alone
  std::vector<const DesktopEntry*> programsSettings = {};  ///< those that start the program for its settings
};

/// An interpreter is not what it runs.
bool starts(const DesktopEntry& entry, const ApplicationEvidence& evidence) {
  return matches(isInterpreter(evidence.executable) ? evidence.script : evidence.executable, entry.program);
}

Candidates candidates(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog) {
  Candidates found;
  const auto classKey = text::caselessKey(evidence.className);
  for (std::size_t i = 0; i < catalog.size(); ++i) {
    const auto* const entry = catalog.at(i);
    if (entry == nullptr) continue;
    const auto fit = fitOf(*entry, evidence, classKey);
    if (fit != Fit::none) {
      found.ofWindow.consider(*entry, {entry->noDisplay, fit});
      found.closest.consider(*entry, fit);
    }
    if (entry->noDisplay || !starts(*entry, evidence)) continue;
    const auto programFit = matches(evidence.unitID, entry->id) ? Fit::unit : fit;
    if (programFit == Fit::none && entry->hasOptions && entry->isForSettings) {
      found.programsSettings.push_back(entry);
    } else {
      found.ofProgram.consider(*entry, {programFit, entry->hasOptions});
    }
  }
  return found;
}

/// True for what a toolkit calls every program that does not name itself, and for an interpreter.
bool isGeneric(std::string_view name) {
  constexpr std::array<std::string_view, 4> kToolkits{"tk", "swt", "fltk", "opendialog"};
  std::string lower(name);
  std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; });
  return std::ranges::find(kToolkits, lower) != kToolkits.end() || lower.starts_with("sun-awt-x11-") ||
         isInterpreter(lower);
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

/// The first of these that is known.
std::optional<std::string> firstKnown(std::initializer_list<std::string_view> texts) {
  const auto* const known = std::ranges::find_if_not(texts, &std::string_view::empty);
  return known != texts.end() ? std::optional(std::string(*known)) : std::nullopt;
}

/// The same, where it is nobody else's.
std::string_view firstOwn(std::initializer_list<std::string_view> texts) {
  const auto* const own =
      std::ranges::find_if(texts, [](std::string_view text) { return !text.empty() && !isGeneric(text); });
  return own != texts.end() ? *own : "";
}

/// What the application is called where entries do not tell enough, in the order of its worth.
std::vector<std::string_view> namesOf(const ApplicationEvidence& evidence, bool hasProgram, bool hasEntry) {
  std::vector<std::string_view> names;
  if (!hasEntry) names = {evidence.instanceName, evidence.className};
  if (!hasProgram) names.insert(names.end(), {evidence.script, evidence.executable});
  return names;
}

}  // namespace

ApplicationIdentity identify(const ApplicationEvidence& evidence, DesktopEntryCatalog& catalog) {
  const auto found = candidates(evidence, catalog);
  Identifiers identifiers;
  identifiers.add(evidence.flatpakID);
  identifiers.add(found.ofProgram.get());
  identifiers.add(catalog.find(evidence.gtkApplicationID));
  identifiers.add(found.ofWindow.get());
  identifiers.add(found.closest.get());
  const bool hasProgram = found.ofProgram.get() != nullptr && !isInterpreter(evidence.executable);
  const auto names = namesOf(evidence, hasProgram, hasProgram || found.ofWindow.get() != nullptr);
  for (const auto name : names) {
    if (!isGeneric(name)) identifiers.add(name);
  }
  identifiers.add(evidence.gtkApplicationID);
  for (const auto name : names) identifiers.add(name);
  for (const auto* const entry : found.programsSettings) identifiers.add(entry);
  const auto* const entry = identifiers.isEmpty() ? nullptr : catalog.find(identifiers.best());
  const auto& [flatpakID, gtkApplicationID, instanceName, className, executable, processName, unitID, script] =
      evidence;
  const auto name = entry != nullptr ? std::string_view(entry->name) : "";
  const auto own = firstOwn({className, script, executable, processName});
  return {.bundleIdentifiers = identifiers.take(),
          .localizedName = firstKnown({name, own, className, processName}),
          .noDisplay = entry != nullptr && entry->noDisplay};
}

}  // namespace tavik::platform::applications
