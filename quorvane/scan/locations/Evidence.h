#pragma once

#include "quorvane/base/CaseNames.h"

#include <string_view>

namespace quorvane {

/// What a rule's word on safety rests on.
enum class EvidenceKind {
  none,             ///< nothing: the rule vouches for nothing
  ownersWord,       ///< the owner's documentation says what the place is; `source` is the page
  clearingCommand,  ///< the owner has a command that empties the place; `source` is the command
  rebuildCommand,   ///< a command makes or fetches all of it again; `source` is the command
  cacheTag,         ///< only what carries a cache directory tag counts
  baseDirectories,  ///< the base directory standard: what lies in the cache home is not essential
  logFile,          ///< nothing reads a log but people
  age,              ///< how old it is; only a person knows whether it is still wanted
  repositoryState,  ///< what git can prove of it
  undocumented,     ///< its owner says nothing of the place
};
QV_CASE_NAMES(EvidenceKind, none, ownersWord, clearingCommand, rebuildCommand, cacheTag, baseDirectories, logFile, age,
              repositoryState, undocumented)

/// Why a place is as safe as its rule says.
struct Evidence {
  EvidenceKind kind = EvidenceKind::none;
  std::string_view source = {};     ///< a page without its scheme, or a command; empty for the kinds that name none
  std::string_view broughtBy = {};  ///< the command that brings it back; empty where its owner needs none

  bool operator==(const Evidence&) const = default;
};

/// Whether evidence of this kind can make a place safe.
constexpr bool vouches(EvidenceKind kind) {
  return kind != EvidenceKind::none && kind != EvidenceKind::age && kind != EvidenceKind::undocumented;
}

/// Whether what lies at such a place ever comes back by itself or by a command.
constexpr bool comesBack(EvidenceKind kind) {
  return kind != EvidenceKind::logFile && kind != EvidenceKind::age && kind != EvidenceKind::repositoryState;
}

}  // namespace quorvane
