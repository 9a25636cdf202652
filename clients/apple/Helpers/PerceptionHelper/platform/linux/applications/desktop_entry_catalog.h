#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/applications/desktop_entry.h"

namespace tavik::platform::applications {

/// The folders that hold the installed applications' entries, those with precedence first; relative ones do not count
/// (freedesktop.org, XDG base directories).
std::vector<std::string> applicationFolders();

/// The desktop entries of some folders. Folders are listed at the first question, and each file is read when it is
/// asked for, once. Of several files with one id the first counts.
class DesktopEntryCatalog {
 public:
  /// `folders` is asked for them at that first question.
  explicit DesktopEntryCatalog(std::function<std::vector<std::string>()> folders) : folders_(std::move(folders)) {}

  /// How many ids there are.
  std::size_t size();
  /// The entry of the id with this index, in order of precedence; null when its file holds none.
  const DesktopEntry* at(std::size_t index);
  /// The entry with this id; null when there is none.
  const DesktopEntry* find(std::string_view id);

 private:
  struct Item {
    std::string id = {};
    std::string path = {};
    bool isRead = false;
    std::optional<DesktopEntry> entry = {};
  };

  void list();

  std::function<std::vector<std::string>()> folders_;
  bool isListed_ = false;
  std::vector<Item> items_ = {};
};

}  // namespace tavik::platform::applications
