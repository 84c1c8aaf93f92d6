#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/ProcessTable.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// Which places running processes use, as one reading of the process table knew it. Made once for many questions: each
/// takes a few comparisons.
///
/// When the table could not be read, everything counts as in use. A process that cannot be looked into (a sandbox, a
/// key agent) counts as using only the folders named after its program.
class InUseIndex {
 public:
  explicit InUseIndex(const Outcome<std::vector<RunningProcess>, PosixError>& processes);

  /// Whether a process has its working folder, its executable, an open or a mapped file at or below this path, which is
  /// standardised with all links resolved.
  bool isInUse(const FilePath& canonicalPath) const;

  /// Whether a process that could be looked into has its working folder at or below this path.
  bool standsIn(const FilePath& canonicalPath) const;

  /// The programs that could not be looked into, sorted, each once.
  const std::vector<std::string>& uninspectable() const { return uninspectable_; }

  bool couldReadProcesses() const { return couldReadProcesses_; }

 private:
  void include(const RunningProcess& process);
  bool isNamedAfterUninspectable(std::string_view leaf) const;

  bool couldReadProcesses_ = false;
  std::vector<FilePath> used_;                 ///< sorted
  std::vector<FilePath> workingFolders_;       ///< sorted
  std::vector<std::string> uninspectable_;     ///< sorted
  std::vector<std::string> claimingPrograms_;  ///< sorted, lower-case: those of them whose names tell folders apart
};

}  // namespace quorvane
