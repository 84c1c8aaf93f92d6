#pragma once

#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/ProcessTable.h"

#include <memory>

namespace quorvane {

/// Whose processes are wanted, and where the system shows them.
struct ProcessTableRequest {
  FilePath root{"/proc"};
  std::uint32_t user = 0;      ///< 0, the administrator, sees everybody's
  std::int32_t ownNumber = 0;  ///< left out
};

/// Reads /proc; runs no program.
class LinuxProcessTable final : public ProcessTable {
 public:
  explicit LinuxProcessTable(ProcessTableRequest request);

  Outcome<std::vector<RunningProcess>, PosixError> read() override;

 private:
  Outcome<std::vector<std::int32_t>, PosixError> processNumbers(int root) const;
  std::optional<RunningProcess> process(int root, std::int32_t number);
  Outcome<std::string, PosixError> content(int folder, const char* name);
  PosixError inspect(int folder, RunningProcess& process);
  PosixError addOpenFiles(int folder, std::vector<FilePath>& paths);

  ProcessTableRequest request_;
  std::unique_ptr<FileSystem> fileSystem_;
};

}  // namespace quorvane
