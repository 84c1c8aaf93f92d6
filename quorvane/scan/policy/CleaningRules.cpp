#include "quorvane/scan/policy/CleaningRules.h"

#include <array>
#include <string_view>
#include <utility>

namespace quorvane {

namespace {

constexpr std::array<std::string_view, 16> macosRoots = {
    "Library/Caches",
    "Library/Logs",
    "Library/Developer/Xcode/DerivedData",
    "Library/Developer/Xcode/Archives",
    "Library/Saved Application State",
    "Library/WebKit",
    "Library/HTTPStorages",
    "Library/Cookies",
    "Library/Preferences",
    "Library/Application Support",
    "Library/Containers",
    "Library/LaunchAgents",
    "Downloads",
    ".codex/worktrees",
    ".claude/worktrees",
    ".cursor/worktrees",
};
constexpr std::array<std::string_view, 4> macosProtectedInHome = {"", "Library", "Documents", "Desktop"};
constexpr std::array<std::string_view, 5> macosProtected = {"/", "/Applications", "/Library", "/System", "/Users"};
constexpr std::string_view macosMail = "Library/Containers/com.apple.mail";
constexpr std::string_view macosMailDownloads = "Library/Containers/com.apple.mail/Data/Library/Mail Downloads";

/// A cache home that an environment variable puts into one of these is not believed.
constexpr std::array<std::string_view, 12> linuxSystemTrees = {
    "/bin", "/boot", "/dev", "/etc", "/lib", "/lib32", "/lib64", "/libx32", "/proc", "/sbin", "/sys", "/usr",
};
constexpr std::array<std::string_view, 16> linuxSharedFolders = {
    "/",    "/home", "/root",      "/opt",      "/srv",       "/mnt",     "/media",   "/run",
    "/tmp", "/var",  "/run/media", "/run/user", "/var/cache", "/var/lib", "/var/log", "/var/tmp",
};
constexpr std::array<std::string_view, 9> linuxFoldersOfThePerson = {
    ".cache", "Desktop", "Documents", "Downloads", "Music", "Pictures", "Public", "Templates", "Videos",
};
constexpr std::array<std::string_view, 13> linuxFoldersOfPrograms = {
    "",     ".config", ".local", ".local/share", ".local/state", ".var",         ".var/app",
    "snap", ".ssh",    ".gnupg", ".pki",         ".mozilla",     ".thunderbird",
};

template <class List>
void protect(std::vector<ProtectedFolder>& folders, const List& relative, const FilePath& base, Protection protection) {
  for (const std::string_view path : relative) folders.push_back({joined(base, path), protection});
}

template <class List>
void protect(std::vector<ProtectedFolder>& folders, const List& absolute, Protection protection) {
  for (const std::string_view path : absolute) folders.push_back({{std::string(path)}, protection});
}

}  // namespace

CleaningRules macosCleaningRules(const FilePath& home) {
  CleaningRules rules{.home = standardised(home), .roots = {}, .protectedFolders = {}, .containers = {}};
  for (const std::string_view root : macosRoots) rules.roots.push_back({joined(rules.home, root)});
  protect(rules.protectedFolders, macosProtectedInHome, rules.home, Protection::itself);
  protect(rules.protectedFolders, macosProtected, Protection::itself);
  rules.containers.push_back({joined(rules.home, macosMail), joined(rules.home, macosMailDownloads)});
  rules.judgesPathAsGiven = false;
  return rules;
}

CleaningRules linuxCleaningRules(const ApplicationFolders& folders, std::vector<CleaningRoot> roots) {
  CleaningRules rules{.home = folders.home, .roots = std::move(roots), .protectedFolders = {}, .containers = {}};
  auto& guarded = rules.protectedFolders;
  protect(guarded, linuxSystemTrees, Protection::everything);
  protect(guarded, linuxSharedFolders, Protection::content);
  protect(guarded, linuxFoldersOfThePerson, folders.home, Protection::itself);
  protect(guarded, linuxFoldersOfPrograms, folders.home, Protection::content);
  guarded.push_back({folders.cache, Protection::itself});
  for (const FilePath& folder : {folders.configuration, folders.data, folders.state})
    guarded.push_back({folder, Protection::content});
  guarded.push_back({folders.applicationSupport, Protection::everything});
  return rules;
}

}  // namespace quorvane
