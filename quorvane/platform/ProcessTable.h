#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/PosixError.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorvane {

struct RunningProcess {
  std::int32_t identifier = 0;
  std::uint32_t owner = 0;
  std::string program;              ///< the name of its executable, as far as the system tells it
  bool isInspectable = false;       ///< whether the next two could be read, and hold all there is
  FilePath workingFolder;           ///< empty when it has none
  std::vector<FilePath> openPaths;  ///< executable, open files and folders, mapped files; absolute, links resolved
};

class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  /// Every running process of the user whom this process runs as (all users' for the administrator), this process
  /// left out. One that ends while it is looked at is left out too.
  virtual Outcome<std::vector<RunningProcess>, PosixError> read() = 0;
};

}  // namespace quorvane
