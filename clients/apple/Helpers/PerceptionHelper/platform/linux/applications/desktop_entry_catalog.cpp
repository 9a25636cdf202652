#include "platform/linux/applications/desktop_entry_catalog.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "platform/posix/regular_file.h"
#include "text/utf8.h"

namespace tavik::platform::applications {
namespace {

namespace fs = std::filesystem;

/// The longest desktop files, with all of their translations, have some 100 kB.
constexpr std::size_t kLargestFile = std::size_t{1024} * 1024;

/// The id of a file in a folder of entries: its path from there, with '-' for '/'. Empty when the file is no entry.
std::string idOf(const fs::path& path, const fs::path& folder) {
  constexpr std::string_view kSuffix = ".desktop";
  auto id = path.lexically_relative(folder).generic_string();
  if (!id.ends_with(kSuffix) || !text::isValidUTF8(id)) return {};
  id.resize(id.size() - kSuffix.size());
  std::ranges::replace(id, '/', '-');
  return id;
}

/// The paths of the entries in a folder and below it, by id.
std::map<std::string, std::string> filesOf(const std::string& folder) {
  std::map<std::string, std::string> files;
  std::error_code error;
  fs::recursive_directory_iterator item(folder, fs::directory_options::skip_permission_denied, error);
  for (; !error && item != fs::recursive_directory_iterator(); item.increment(error)) {
    if (auto id = idOf(item->path(), folder); !id.empty()) files.emplace(std::move(id), item->path().string());
  }
  return files;
}

/// The value of an environment variable; one that is empty counts as unset.
std::string variable(const char* name, const std::string& otherwise) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : otherwise;
}

}  // namespace

std::vector<std::string> applicationFolders() {
  std::istringstream paths(variable("XDG_DATA_HOME", variable("HOME", "") + "/.local/share") + ":" +
                           variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
  std::vector<std::string> folders;
  for (std::string path; std::getline(paths, path, ':');) {
    if (fs::path(path).is_absolute()) folders.push_back((fs::path(path) / "applications").string());
  }
  return folders;
}

std::size_t DesktopEntryCatalog::size() {
  list();
  return items_.size();
}

const DesktopEntry* DesktopEntryCatalog::at(std::size_t index) {
  list();
  auto& item = items_[index];
  if (!item.isRead) {
    item.isRead = true;
    if (const auto text = posix::readRegularFile(item.path, kLargestFile)) {
      item.entry = parseDesktopEntry(item.id, *text);
    }
  }
  return item.entry ? &*item.entry : nullptr;
}

const DesktopEntry* DesktopEntryCatalog::find(std::string_view id) {
  list();
  const auto item = std::ranges::find_if(items_, [&](const Item& candidate) { return candidate.id == id; });
  return item != items_.end() ? at(static_cast<std::size_t>(item - items_.begin())) : nullptr;
}

void DesktopEntryCatalog::list() {
  if (isListed_) return;
  isListed_ = true;
  std::set<std::string> seen;
  for (const auto& folder : folders_()) {
    for (auto& [id, path] : filesOf(folder)) {
      if (seen.insert(id).second) items_.push_back({.id = id, .path = path});
    }
  }
}

}  // namespace tavik::platform::applications
