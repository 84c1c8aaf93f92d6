#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/platform/ProcessRunner.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// Runs git in one worktree under an environment of its own making, in which the repository's configuration can start
/// no program, write nothing and fetch nothing. Reads only.
class GitCommand {
 public:
  struct Answer {
    int exitCode = 0;
    std::string output;
  };

  GitCommand(ProcessRunner& processRunner, FilePath gitURL, FilePath worktree, StopToken stop);

  /// Takes the power away from the filter drivers that the repository's configuration names; before any command that
  /// looks at files. False when that cannot be made sure.
  bool disarmFilters();

  /// Waits for the command, at most some twenty seconds. Nothing when it did not run to its end by itself, or left more
  /// output than is kept.
  std::optional<Answer> run(std::vector<std::string> arguments) const;

  /// The output of a command that succeeded.
  std::optional<std::string> outputOf(std::vector<std::string> arguments) const;

 private:
  void configure(std::string key, std::string value);

  ProcessRunner& processRunner_;
  FilePath gitURL_;
  FilePath worktree_;
  StopToken stop_;
  std::map<std::string, std::string> environment_;
  std::size_t configuredCount_ = 0;
};

}  // namespace quorvane
