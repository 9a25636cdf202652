#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/applications/application_identity.h"
#include "platform/linux/applications/interpreter.h"
#include "platform/linux/applications/process_activity.h"
#include "platform/linux/applications/process_evidence.h"
#include "platform/linux/applications/read_in_child.h"
#include "platform/posix/file_descriptor.h"
#include "table.h"
#include "text/caseless_equal.h"

namespace tavik::platform::applications {
namespace {

namespace fs = std::filesystem;

/// With folders of desktop entries that go when the test ends.
struct DesktopEntryCatalogTest : testing::Test {
  const fs::path root = fs::temp_directory_path() / ("entries-" + std::to_string(::getpid()));
  ~DesktopEntryCatalogTest() override { fs::remove_all(root); }

  /// Writes an entry with these lines into a file below one of the folders.
  void add(const std::string& path, const std::string& lines) const {
    fs::create_directories((root / path).parent_path());
    std::ofstream(root / path) << "[Desktop Entry]\nType=Application\n" << lines;
  }
  DesktopEntryCatalog entries{[this] {
    return std::vector<std::string>{root / "user", root / "missing", root / "system"};
  }};
};

TEST(DesktopEntry, IsReadInTheUsersLanguage) {
  const std::string text =
      "# Comment\n[Desktop Entry]\nType=Application\nName = Early\nName=Calculator\nName[de]=Rechner\n"
      "Name[sr@latin]=Ra\\sun\nName[sr_RS]=\\q\nExec=\"/opt/my apps/c\\\\alc\" --new %U\r\n\n[Desktop Action about]\n"
      "Name=About\nName[de]=Info\nStartupWMClass=other\n[Desktop Entry]\nStartupWMClass=Calc\n";
  for (const auto& [language, name] : {std::pair{"C", "Calculator"},
                                       {"de_AT.UTF-8", "Rechner"},
                                       {"fr", "Calculator"},
                                       {"fr:de", "Rechner"},
                                       {"sr_RS.UTF-8@latin", "Ra un"}}) {
    ::setenv("LANGUAGE", language, 1);
    const auto entry = parseDesktopEntry("calc", text);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, name) << language;
    EXPECT_TRUE(entry->program == "calc" && entry->startupClass == "Calc");
  }
  ::unsetenv("LANGUAGE");
}

TEST(DesktopEntry, IsNothingElse) {
  const std::string start = "[Desktop Entry]\nType=Application\n";
  for (const auto& text : {std::string(), std::string("\xFF\xFE garbage"), start + "Hidden=true\n",
                           std::string("[Desktop Entry]\nType=Link\n"), start + "Name\n", "Name=Early\n" + start,
                           std::string("[Desktop Action a]\nType=Application\n")}) {
    EXPECT_FALSE(parseDesktopEntry("id", text)) << text;
  }
  const auto broken = parseDesktopEntry("id", start + "Exec=\"unclosed\nName=\xFF\n");
  ASSERT_TRUE(broken) << "an entry with broken values is one without them";
  EXPECT_EQ(broken->program + broken->name, "");
}

TEST(ApplicationFolders, AreTheUsersThenTheSystems) {
  ::setenv("XDG_DATA_HOME", "relative", 1);
  ::setenv("XDG_DATA_DIRS", "/a::relative:/b", 1);
  EXPECT_EQ(applicationFolders(), (std::vector<std::string>{"/a/applications", "/b/applications"}));
  ::setenv("XDG_DATA_HOME", "/h", 1);
  ::setenv("XDG_DATA_DIRS", "", 1);
  const std::vector<std::string> usual{"/h/applications", "/usr/local/share/applications", "/usr/share/applications"};
  EXPECT_EQ(applicationFolders(), usual);
  ::unsetenv("XDG_DATA_HOME");
  ::unsetenv("XDG_DATA_DIRS");
}

TEST_F(DesktopEntryCatalogTest, TheUsersFilesComeFirst) {
  add("system/applications.desktop", "Name=System\n");
  add("user/applications.desktop", "Name=User\n");
  add("system/deleted.desktop", "Name=Deleted by the user\n");
  add("user/deleted.desktop", "Hidden=true\n");
  add("system/kde/tools/calc.desktop", "Name=In a folder\n");
  add("system/notes.txt", "Name=No entry\n");
  add("system/\xFF.desktop", "Name=Of an id that no answer can hold\n");
  ASSERT_EQ(0, ::mkfifo((root / "system/pipe.desktop").c_str(), 0600));
  const posix::FileDescriptor silentWriter(::open((root / "system/pipe.desktop").c_str(), O_RDWR));
  ASSERT_TRUE(entries.find("applications"));
  EXPECT_EQ(entries.find("applications")->name, "User");
  EXPECT_FALSE(entries.find("deleted")) << "the system's entry of that id does not come back";
  EXPECT_TRUE(entries.find("kde-tools-calc"));
  EXPECT_FALSE(entries.find("pipe")) << "and nobody waits for its writer";
  EXPECT_EQ(entries.size(), 4U);
}

TEST_F(DesktopEntryCatalogTest, IdentifiesAnApplicationByTheBestEvidence) {
  add("system/aaa.desktop", "Name=Interpreter\nExec=script\nNoDisplay=true\n");
  add("system/org.example.Settings.desktop", "Name=By program\nExec=/usr/bin/tool --settings\n");
  add("system/org.example.Tool.desktop", "Name=By program and class\nExec=/usr/bin/tool %f\n");
  add("system/org.example.viewer.desktop", "Name=By end of id\nNoDisplay=true\n");
  add("system/Viewer.desktop", "Name=By id\n");
  add("system/zzz.desktop", "Name=By class\nStartupWMClass=VIEWER\n");
  const std::string tool = "org.example.Tool", settings = "org.example.Settings", viewer = "org.example.viewer";
  // Debian's, where what the windows say misleads.
  add("system/caja-browser.desktop", "Name=Caja\nExec=/usr/bin/caja --no-desktop --browser %U\n");
  add("system/caja.desktop", "Name=Hidden\nExec=/usr/bin/caja\nNoDisplay=true\n");
  add("system/a.gwenview_importer.desktop",
      "Name=Importer\nExec=gwenview_importer %u\nNoDisplay=true\nStartupWMClass=gwenview\n");
  add("system/org.kde.gwenview.desktop", "Name=Gwenview\nExec=gwenview %U\n");
  add("system/panel-preferences.desktop",
      "Name=Panel\nExec=xfce4-panel --preferences\nCategories=XFCE;Settings;DesktopSettings;\n");
  add("system/electrum.desktop", "Name=Electrum\nExec=env LANG=C 'electrum' %u\n");
  add("system/jar.desktop", "Name=Jar\nExec=java -jar /usr/share/java/ledger.jar\n");
  // sandbox, GTK's application id, instance, class, executable, process, unit, script
  const Table<ApplicationEvidence, std::vector<std::string>, std::optional<std::string>> cases{
      {"the sandbox's word comes first", {"Viewer", viewer, "", "", "", "p"}, {"Viewer", viewer}, "By id"},
      {"GTK's word, where an entry bears it out", {"", viewer, "", "Viewer"}, {viewer, "zzz"}, "By end of id"},
      {"and for want of better", {"", "org.gtk", "SWT", "Tk"}, {"org.gtk", "SWT", "Tk"}, "Tk"},
      {"else what the window calls itself", {"", "org.gtk", "i", "c", "p"}, {"i", "c", "p", "org.gtk"}, "c"},
      {"StartupWMClass, before the id, in any case", {"", "", "viewer", "Viewer"}, {"zzz"}, "By class"},
      {"the id's end is the instance", {"", "", "viewer", "V"}, {viewer}, "By end of id"},
      {"the program's entry, whatever the window says",
       {"", "", "", "Viewer", "tool"},
       {tool, "zzz"},
       "By program and class"},
      {"of several the one like the window", {"", "", "", "Settings", "tool"}, {settings}, "By program"},
      {"or the one of its unit", {"", "", "", "Tool", "tool", "", settings}, {settings, tool}, "By program"},
      {"where that starts the program", {"", "", "", "", "tool", "", "Viewer"}, {tool}, "By program and class"},
      {"but of no hidden interpreter", {"", "", "i", "c", "script"}, {"i", "c", "script"}, "c"},
      {"the window only", {"", "", "unknown", "Unknown", "", "p"}, {"unknown", "Unknown"}, "Unknown"},
      {"the process only", {"", "", "", "", "daemon", "daemon"}, {"daemon"}, "daemon"},
      {"the program, however it is called", {"", "", "", "Viewer", "vault"}, {"zzz", "vault"}, "By class"},
      {"nothing", {}, {}, std::nullopt},
      {"a hidden entry fits better, one that is shown counts more",
       {"", "", "gwenview", "gwenview"},
       {"org.kde.gwenview", "a.gwenview_importer"},
       "Gwenview"},
      {"what GTK says has no file, the program's has options",
       {"", "org.mate.Caja", "caja", "Caja", "caja"},
       {"caja-browser", "caja", "org.mate.Caja"},
       "Caja"},
      {"a program's settings are not the program",
       {"", "", "xfce4-panel", "Xfce4-panel", "xfce4-panel"},
       {"xfce4-panel", "Xfce4-panel", "panel-preferences"},
       "Xfce4-panel"},
      {"a toolkit's name for everybody is nobody's",
       {"", "", "FLTK", "FLTK", "flviewer", "flviewer"},
       {"flviewer", "FLTK"},
       "flviewer"},
      {"a script that an entry starts",
       {"", "", "", "Tk", "python3.11", "", "", "electrum"},
       {"electrum", "Tk", "python3.11"},
       "Electrum"},
      {"a script that none starts",
       {"", "", "tk", "Tk", "python3.11", "", "", "chrooted.py"},
       {"chrooted.py", "tk", "Tk", "python3.11"},
       "chrooted.py"},
      {"a Java program",
       {"", "", "sun-awt-X11-XFramePeer", "org-jar-Main", "java", "java", "", "Main"},
       {"org-jar-Main", "Main", "sun-awt-X11-XFramePeer", "java"},
       "org-jar-Main"},
      {"one that an entry starts", {"", "", "", "", "java", "java", "", "ledger"}, {"jar", "ledger", "java"}, "Jar"},
  };
  for (const auto& [reason, evidence, identifiers, name] : cases) {
    const auto identity = identify(evidence, entries);
    EXPECT_EQ(identity.bundleIdentifiers, identifiers) << reason;
    EXPECT_EQ(identity.localizedName, name) << reason;
    EXPECT_EQ(identity.noDisplay, !identifiers.empty() && identifiers.front() == viewer) << reason;
  }
}

TEST_F(DesktopEntryCatalogTest, FoldsALongClassOnceForAllEntries) {
  constexpr int kEntries = 200;
  for (int i = 0; i < kEntries; ++i) add("system/" + std::to_string(i) + ".desktop", "StartupWMClass=Viewer\n");
  const auto timeOf = [](const auto& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - begin;
  };
  identify({}, entries);  // reads them
  const std::string name(50'000, 'V');
  const auto folding = timeOf([&] { EXPECT_TRUE(text::caselessKey(name)); });
  const auto all = timeOf([&] { EXPECT_EQ(identify({.className = name}, entries).bundleIdentifiers.size(), 1U); });
  EXPECT_LT(all, folding * (kEntries / 10));
}

TEST(Interpreter, RunsWhatItsCommandLineNames) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"python3.11", "-I", "-W", "ignore", "/usr/bin/electrum", "-v"}, "electrum"},
      {{"python3", "-m", "package.viewer"}, "viewer"},
      {{"python3", "-c", "print()"}, ""},
      {{"python3", "-"}, ""},
      {{"python3"}, ""},
      {{"java", "-Xmx512m", "-cp", "/a.jar:/b.jar", "org.example.Main", "x"}, "Main"},
      {{"java", "-jar", "/usr/share/java/jameica.jar"}, "jameica"},
      {{"wish8.6", "gorilla.tcl"}, "gorilla.tcl"},
      {{"sh", std::string(300, 'x')}, ""},
      {{"xterm", "-e", "python3"}, ""},
      {{}, ""},
  };
  for (const auto& [commandLine, script] : cases) {
    EXPECT_EQ(scriptOf(commandLine), script) << testing::PrintToString(commandLine);
  }
}

TEST(ProcessEvidence, KnowsTheApplicationOfAUnit) {
  const std::string user = "2:cpu:/\n0::/user.slice/user-1000.slice/user@1000.service/app.slice/";
  const Table<std::string> cases{
      {"app-gnome-org.gnome.Maps-4242.scope\n", "org.gnome.Maps"},
      {R"(app-firefox\x2desr-8f0a.scope/child)", "firefox-esr"},
      {"app-gnome.slice/app-org.kde.kate@autostart.service\n", "org.kde.kate"},
      {"app-org.kde.kate.service\n", "org.kde.kate"},
      {R"(app-a\x2\xg0\xff-1.scope)", "a\\x2\\xg0\uFFFD"},
      {"app-.scope\n", ""},
      {"vte-spawn-42.scope\n", ""},
      {"", ""},
  };
  for (const auto& [unit, application] : cases) EXPECT_EQ(applicationOfUnit(user + unit), application) << unit;
}

TEST(ProcessEvidence, TakesFlatpaksWordOnlyFromFileSystemsInMemory) {
  const std::string root = "65 42 0:40 / / rw,nosuid - tmpfs tmpfs rw,mode=755\n";
  const std::string file = "70 65 0:39 /bindfile02uPfN//deleted /.flatpak-info ro,nosuid shared:1 - tmpfs tmpfs rw\n";
  const std::string silent = "90 65 0:50 / / rw,nosuid - fuse silent rw,user_id=1000\n";
  const Table<std::string, bool> cases{
      {"as bubblewrap makes it", root + "67 65 0:21 / /proc rw - proc proc rw\n" + file, true},
      {"a root that may never answer, over the other", root + file + silent, false},
      {"the file too", root + "70 65 0:39 / /.flatpak-info ro - fuse - tmpfs rw\n", false},
      {"a file of the disk's own", root, false},
      {"a cut line", root + file.substr(0, 60), false},
      {"no table", "", false},
  };
  for (const auto& [reason, table, expected] : cases) EXPECT_EQ(isFlatpaksMountTable(table), expected) << reason;
}

TEST(ProcessEvidence, KnowsTheProgramOfAProcess) {
  const auto self = ::getpid();
  EXPECT_FALSE(executableName(self).empty());
  EXPECT_EQ(executableName(self).substr(0, 15), processName(self));
  EXPECT_EQ(flatpakID(self), "");
  EXPECT_EQ(executableName(-1), "") << "no such process";
  const auto program = fs::temp_directory_path() / ("program-" + std::to_string(self));
  fs::copy_file("/bin/sleep", program);
  const auto child = ::fork();
  if (child == 0) ::execl(program.c_str(), "sleep", "9", nullptr), ::_exit(1);
  while (executableName(child) == executableName(self)) std::this_thread::yield();
  fs::remove(program);
  EXPECT_EQ(executableName(child), program.filename()) << "an update has replaced it";
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

using namespace std::chrono_literals;

TEST(ProcessEvidence, KnowsTheScriptOfAProcess) {
  const auto file = testing::TempDir() + "script-" + std::to_string(::getpid());
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  const posix::FileDescriptor line(::open(file.c_str(), O_RDWR));
  const auto child = ::fork();
  if (child == 0) ::execl("/bin/sh", "sh", "-e", file.c_str(), nullptr);  // which waits for its first line
  const auto shell = fs::canonical("/bin/sh").filename().string();
  const auto end = std::chrono::steady_clock::now() + 10s;
  while (executableName(child) != shell && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(scriptName(child, shell), fs::path(file).filename());
  EXPECT_EQ(scriptName(child, "xterm"), "") << "it runs no scripts";
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(readInChild(file, 1, 50ms), std::nullopt) << "it never ends";
  ::unlink(file.c_str());
}

/// Waits for what is sent, reads it, and waits for more.
void listen(int descriptor) {
  char byte = 0;
  while (::read(descriptor, &byte, 1) == 1) {
  }
}

void stop(int descriptor) {
  char byte = 0;
  if (::read(descriptor, &byte, 1) == 1) ::raise(SIGSTOP);
}

/// The same, with more open files than anybody looks through to know that it does.
void listenAmongMany(int descriptor) {
  constexpr int kMany = 1500;
  const rlimit room{.rlim_cur = kMany + 100, .rlim_max = kMany + 100};
  if (::setrlimit(RLIMIT_NOFILE, &room) != 0) ::_exit(1);
  for (int copy = 0; copy < kMany; ++copy) {
    if (::dup(descriptor) < 0) ::_exit(1);
  }
  listen(descriptor);
}

void compute(int) {
  volatile unsigned int steps = 0;
  while (true) steps = steps + 1;
}

using Behaviour = void (*)(int descriptor);

/// Whether a process that does this, with a message waiting for it, is idle before long; it needs some time to begin,
/// and to read.
bool becomesIdle(Behaviour behaviour, std::chrono::milliseconds patience) {
  int ends[2] = {};
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  EXPECT_EQ(::write(ends[0], "x", 1), 1);
  const auto child = ::fork();
  if (child == 0) {
    ::close(ends[0]);
    behaviour(ends[1]);
    ::_exit(0);
  }
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!isIdle(child) && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(5ms);
  const bool idle = isIdle(child);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  for (const int descriptor : ends) ::close(descriptor);
  return idle;
}

TEST(ProcessActivity, OnlyAProcessThatHasReadEverythingIsIdle) {
  EXPECT_TRUE(becomesIdle(listen, 10s));
  for (const auto& [reason, behaviour] : Table<Behaviour>{
           {"it waits for something else", [](int) { ::pause(); }},
           {"it is busy", &compute},
           {"one thread listens, another hangs", [](int from) { std::thread(listen, from).detach(), ::pause(); }},
           {"it is stopped", &stop},
           {"it has too many open files to tell", &listenAmongMany},
       }) {
    EXPECT_FALSE(becomesIdle(behaviour, 200ms)) << reason;
  }
  EXPECT_FALSE(isIdle(0)) << "an unknown process";
}

}  // namespace
}  // namespace tavik::platform::applications
