#pragma once

#include "quorvane/core/SafetyLevel.h"
#include "quorvane/core/ScanCategory.h"
#include "quorvane/scan/locations/Evidence.h"
#include "quorvane/scan/locations/LocationFolders.h"
#include "quorvane/scan/locations/ScanSettings.h"
#include "quorvane/scan/locations/ScanStep.h"
#include "quorvane/scan/policy/CleaningRules.h"

#include <span>
#include <string_view>
#include <vector>

namespace quorvane {

/// What of a location becomes an item.
enum class LocationSubject {
  entries,      ///< each thing directly in the folder
  files,        ///< each regular file directly in the folder
  itself,       ///< the folder or file as a whole
  parts,        ///< those of the folder's entries that the rule names, each as a whole
  taggedBelow,  ///< each folder up to three levels below that carries a cache directory tag
};

/// How the safety of an item follows from its rule and from what is found there.
enum class LocationKind {
  cache,        ///< as the rule says; blocked for a sensitive application
  anyCache,     ///< safe only for a known name or with a cache directory tag, review without; blocked as above
  log,          ///< as the rule says; blocked for a sensitive application
  build,        ///< as the rule says; blocked while something in it is less than a day old
  archive,      ///< as the rule says
  worktree,     ///< by the state of its git worktree
  old,          ///< as the rule says; no item before its content is 30 calendar days old
  deviceBackup  ///< by what the backup says of itself
};

/// What may lie in a cache and is not made again as easily as the rest.
struct HeldBack {
  std::string_view entry = {};  ///< directly in the item; empty: nothing
  std::string_view reasonKey = {};
};

/// One location of a table. A path component "*" stands for any one folder.
struct LocationRule {
  ScanStep step;
  ScanCategory category;
  LocationBase base;
  std::string_view path;  ///< below the base; empty for the base itself
  LocationSubject subject;
  LocationKind kind;
  SafetyLevel safety;
  std::string_view reasonKey;
  std::string_view name = {};        ///< the program, and which of its places; empty for a rule of no one program
  Evidence evidence = {};            ///< why it is as safe as the rule says
  std::string_view extensions = {};  ///< between blanks, lower-case: only names with one of them
  std::string_view namePart = {};    ///< only names that contain this as a whole word
  std::string_view parts = {};       ///< between "|": the entries of a rule with parts
  HeldBack heldBack = {};            ///< of a rule of kind `build`: with it, an item is for review
};

/// Something in a cache home whose owner is known to make it again.
struct KnownCache {
  std::string_view name;  ///< as its owner spells it; found in any case
  ScanCategory category;
  std::string_view program;
  Evidence evidence;
  bool isFile = false;  ///< the owner makes a file of that name; else a folder
};

/// Everything that a scan knows of one kind of home.
struct LocationTable {
  std::span<const LocationRule> rules;      ///< in the order of the steps
  std::span<const KnownCache> knownCaches;  ///< for rules of kind `anyCache`
  std::span<const std::string_view>
      browserBundleFragments;  ///< a cache whose lower-cased name contains one is a browser's
  bool showsLastNamePiece;     ///< a name with dots is shown by its last piece, as bundle identifiers want it
};

/// The two tables.
const LocationTable& locationTable(HomeLayout layout);
const LocationTable& linuxLocations();
const LocationTable& macLocations();

/// The entries that a rule names; none for a rule without parts.
std::vector<std::string_view> partsOf(const LocationRule& rule);

/// Whether a rule for entries or files wants one of this name.
bool asksFor(const LocationRule& rule, std::string_view name);

/// The known cache of this name, in any case; null without one.
const KnownCache* knownCache(const LocationTable& table, std::string_view name);

/// Where cleaning is allowed in a home: for the Linux layout, the places that its table names.
CleaningRules cleaningRules(const ScanSettings& settings, const LocationFolders& folders);

}  // namespace quorvane
