#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/ApplicationFolders.h"

#include <vector>

namespace quorvane {

/// A place whose content may be cleaned.
struct CleaningRoot {
  FilePath pattern;             ///< absolute; a component "*" stands for any one component
  bool includesItself = false;  ///< the place is an item of its own

  bool operator==(const CleaningRoot&) const = default;
};

/// How far a folder's protection reaches. Whatever holds a protected folder is protected with it.
enum class Protection {
  itself,      ///< the folder
  content,     ///< and what is in it, except in the cleaning roots that lie deeper inside
  everything,  ///< and the cleaning roots inside too; only a home inside is exempt
};

/// A folder that is not cleaned, though a cleaning root may hold it.
struct ProtectedFolder {
  FilePath path;
  Protection protection = Protection::itself;

  bool operator==(const ProtectedFolder&) const = default;
};

/// A folder in which only what lies strictly inside one place may be cleaned, and there always.
struct GuardedContainer {
  FilePath container;
  FilePath open;

  bool operator==(const GuardedContainer&) const = default;
};

/// Where cleaning is allowed in one home; all paths absolute and standardised.
struct CleaningRules {
  FilePath home;
  std::vector<CleaningRoot> roots;
  std::vector<ProtectedFolder> protectedFolders;
  std::vector<GuardedContainer> containers;
  bool judgesPathAsGiven = true;  ///< besides its resolved form, which is always judged
};

/// The roots are a fixed list.
CleaningRules macosCleaningRules(const FilePath& home);

/// The roots come from the tables of locations, since on Linux they are what those name.
CleaningRules linuxCleaningRules(const ApplicationFolders& folders, std::vector<CleaningRoot> roots);

}  // namespace quorvane
