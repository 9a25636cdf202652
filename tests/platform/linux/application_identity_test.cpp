#include "platform/linux/application_identity.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/file_descriptor.h"
#include "platform/linux/process_evidence.h"

namespace tavik::platform::desktop_entries {
namespace {

namespace fs = std::filesystem;

/// Folders of desktop entries that go when the test ends.
class Folders {
 public:
  Folders() {
    std::string pattern = (fs::temp_directory_path() / "entries-XXXXXX").string();
    root_ = ::mkdtemp(pattern.data());
  }
  Folders(const Folders&) = delete;
  Folders& operator=(const Folders&) = delete;
  ~Folders() { fs::remove_all(root_); }

  /// Writes an entry with these lines into a file below one of the folders.
  void add(const std::string& path, const std::string& lines) const {
    fs::create_directories((root_ / path).parent_path());
    std::ofstream(root_ / path) << "[Desktop Entry]\nType=Application\n" << lines;
  }
  std::string path(const std::string& name) const { return (root_ / name).string(); }
  DesktopEntryCatalog catalog() const { return DesktopEntryCatalog({path("user"), path("missing"), path("system")}); }

 private:
  fs::path root_;
};

TEST(DesktopEntry, IsReadInTheUsersLanguage) {
  const std::string text =
      "[Desktop Entry]\nType=Application\nName=Calculator\nName[de]=Rechner\nExec=\"/opt/my apps/calc\" --new %U\n"
      "StartupWMClass=Calc\n[Desktop Action about]\nName=About\nName[de]=Info\nExec=other\n";
  for (const auto& [language, name] :
       {std::pair{"C", "Calculator"}, {"de_AT.UTF-8", "Rechner"}, {"fr", "Calculator"}}) {
    ::setenv("LANGUAGE", language, 1);
    ::setenv("LC_ALL", language, 1);
    const auto entry = parseDesktopEntry("calc", text);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, name) << language;
    EXPECT_EQ(entry->program, "calc");
    EXPECT_EQ(entry->startupClass, "Calc");
  }
  ::unsetenv("LANGUAGE");
  ::unsetenv("LC_ALL");
}

TEST(DesktopEntry, IsNothingElse) {
  struct Row {
    const char* reason;
    std::string text;
  };
  const std::vector<Row> rows{
      {"empty", ""},
      {"no key file", "\xFF\xFE garbage"},
      {"deleted", "[Desktop Entry]\nType=Application\nName=A\nHidden=true\n"},
      {"a link", "[Desktop Entry]\nType=Link\nName=A\n"},
      {"only an action", "[Desktop Action a]\nType=Application\nName=A\n"},
  };
  for (const auto& [reason, text] : rows) EXPECT_FALSE(parseDesktopEntry("id", text)) << reason;
  EXPECT_TRUE(parseDesktopEntry("id", "[Desktop Entry]\nType=Application\nExec=\"unclosed\nName=\xFF\n"))
      << "an entry with broken values is one without them";
}

TEST(DesktopEntryCatalog, TheUsersFilesComeFirst) {
  const Folders folders;
  folders.add("system/applications.desktop", "Name=System\n");
  folders.add("user/applications.desktop", "Name=User\n");
  folders.add("system/deleted.desktop", "Name=Deleted by the user\n");
  folders.add("user/deleted.desktop", "Hidden=true\n");
  folders.add("system/kde/tools/calc.desktop", "Name=In a folder\n");
  folders.add("system/notes.txt", "Name=No entry\n");
  ASSERT_EQ(0, ::mkfifo(folders.path("system/pipe.desktop").c_str(), 0600));
  const posix::FileDescriptor silentWriter(::open(folders.path("system/pipe.desktop").c_str(), O_RDWR));
  auto catalog = folders.catalog();
  ASSERT_TRUE(catalog.find("applications"));
  EXPECT_EQ(catalog.find("applications")->name, "User");
  EXPECT_FALSE(catalog.find("deleted")) << "the system's entry of that id does not come back";
  ASSERT_TRUE(catalog.find("kde-tools-calc"));
  EXPECT_FALSE(catalog.find("pipe")) << "and nobody waits for its writer";
  EXPECT_EQ(catalog.size(), 4U);
}

TEST(ApplicationIdentity, FollowsTheBestEvidence) {
  const Folders folders;
  folders.add("system/aaa.desktop", "Name=Interpreter\nExec=tool\nNoDisplay=true\n");
  folders.add("system/org.example.Tool.desktop", "Name=By program\nExec=/usr/bin/tool %f\n");
  folders.add("system/org.example.viewer.desktop", "Name=By end of id\nNoDisplay=true\n");
  folders.add("system/Viewer.desktop", "Name=By id\n");
  folders.add("system/zzz.desktop", "Name=By class\nStartupWMClass=VIEWER\n");
  struct Row {
    const char* reason;
    ApplicationEvidence evidence;
    std::optional<std::string> identifier, name;
  };
  const std::vector<Row> rows{
      {"the sandbox's word is final",
       {.flatpakID = "Viewer", .gtkApplicationID = "other", .className = "other", .processName = "p"},
       "Viewer",
       "By id"},
      {"an application without an entry",
       {.gtkApplicationID = "org.gtk.Demo", .className = "Demo"},
       "org.gtk.Demo",
       "Demo"},
      {"StartupWMClass, before the id, in any case",
       {.instanceName = "tool", .className = "Viewer", .executable = "tool"},
       "zzz",
       "By class"},
      {"the id, in the same case", {.className = "Tool", .executable = "other"}, "org.example.Tool", "By program"},
      {"the id's end is the instance",
       {.instanceName = "viewer", .className = "V"},
       "org.example.viewer",
       "By end of id"},
      {"the program, but not that of a hidden interpreter",
       {.instanceName = "i", .className = "c", .executable = "tool"},
       "org.example.Tool",
       "By program"},
      {"the window only",
       {.instanceName = "unknown", .className = "Unknown", .processName = "p"},
       "unknown",
       "Unknown"},
      {"the process only", {.executable = "daemon", .processName = "daemon"}, std::nullopt, "daemon"},
      {"nothing", {}, std::nullopt, std::nullopt},
  };
  auto catalog = folders.catalog();
  for (const auto& [reason, evidence, identifier, name] : rows) {
    const auto identity = identify(evidence, catalog);
    EXPECT_EQ(identity.bundleIdentifier, identifier) << reason;
    EXPECT_EQ(identity.localizedName, name) << reason;
    EXPECT_EQ(identity.noDisplay, identifier == "org.example.viewer") << reason;
  }
}

TEST(ProcessEvidence, KnowsAStoppedProcess) {
  const auto self = ::getpid();
  EXPECT_FALSE(posix::isStopped(self));
  EXPECT_FALSE(posix::executableName(self).empty());
  EXPECT_EQ(posix::executableName(self).substr(0, 15), posix::processName(self));
  EXPECT_EQ(posix::flatpakID(self), "");
  const auto child = ::fork();
  if (child == 0) {
    ::raise(SIGSTOP);
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
  EXPECT_TRUE(posix::isStopped(child));
  ::kill(child, SIGKILL);
  ::waitpid(child, &status, 0);
  EXPECT_EQ(posix::executableName(child), "") << "it is gone";
}

}  // namespace
}  // namespace tavik::platform::desktop_entries
