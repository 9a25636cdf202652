#include "platform/linux/applications/identified_application.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace tavik::platform::applications {
namespace {

class IdentifiedApplication final : public RunningApplication {
 public:
  explicit IdentifiedApplication(ApplicationRecord record) : record_(std::move(record)) {}

  std::int32_t processIdentifier() override { return record_.processID; }
  std::vector<std::string> bundleIdentifiers() override { return identity().bundleIdentifiers; }
  std::optional<std::string> bundleIdentifier() override {
    const auto& identifiers = identity().bundleIdentifiers;
    return identifiers.empty() ? std::nullopt : std::optional(identifiers.front());
  }
  std::optional<std::string> localizedName() override { return identity().localizedName; }
  ActivationPolicy activationPolicy() override {
    const bool isOffered = record_.policy != ActivationPolicy::regular || !identity().noDisplay;
    return isOffered ? record_.policy : ActivationPolicy::accessory;
  }

 private:
  const ApplicationIdentity& identity() {
    if (!identity_) identity_ = record_.identify();
    return *identity_;
  }

  ApplicationRecord record_;
  std::optional<ApplicationIdentity> identity_ = {};
};

}  // namespace

RunningApplicationRef makeApplication(ApplicationRecord record) {
  return std::make_shared<IdentifiedApplication>(std::move(record));
}

std::vector<RunningApplicationRef> withIdentifier(const std::vector<RunningApplicationRef>& applications,
                                                  std::string_view identifier) {
  std::vector<RunningApplicationRef> first, besides;
  for (const auto& application : applications) {
    const auto identifiers = application->bundleIdentifiers();
    const auto found = std::ranges::find(identifiers, identifier);
    if (found != identifiers.end()) (found == identifiers.begin() ? first : besides).push_back(application);
  }
  first.insert(first.end(), besides.begin(), besides.end());
  return first;
}

}  // namespace tavik::platform::applications
