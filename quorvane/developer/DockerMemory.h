#pragma once

#include "quorvane/developer/DockerClient.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace quorvane {

/// What clients were answered, for as long as nothing is asked twice. One thread at a time.
class DockerMemory {
 public:
  using Arguments = DockerClient::Arguments;

  /// What this run came to, or the silence of its endpoint: once a run had no status, each one is answered like it.
  std::optional<CommandResult> known(const std::string& endpoint, const Arguments& arguments) const;
  void keep(const std::string& endpoint, const Arguments& arguments, const CommandResult& result);

 private:
  std::map<std::pair<std::string, Arguments>, CommandResult> answers_;
  std::map<std::string, CommandResult> silences_;
};

}  // namespace quorvane
