#include "quorvane/scan/worktrees/GitCommand.h"

#include "quorvane/scan/worktrees/GitOutput.h"

#include <array>
#include <chrono>
#include <utility>

namespace quorvane {

namespace {

constexpr std::chrono::seconds timeLimit{20};
constexpr std::size_t outputLimit = std::size_t{64} << 20;
constexpr std::size_t mostFilters = 64;

constexpr auto noFile = "/dev/null";
constexpr auto noFolder = "/nonexistent";
constexpr auto noProgram = "/bin/false";

/// Set over whatever the repository says. Some forbid programs; the others forbid git to overlook a change.
constexpr std::array<std::pair<const char*, const char*>, 19> configuration = {{
    {"core.fsmonitor", "false"},
    {"core.hooksPath", noFile},
    {"core.pager", "cat"},
    {"core.sshCommand", noProgram},
    {"core.askPass", noProgram},
    {"protocol.allow", "never"},
    {"submodule.recurse", "false"},
    {"safe.bareRepository", "explicit"},
    {"core.useReplaceRefs", "false"},
    {"core.untrackedCache", "false"},
    {"core.checkStat", "default"},
    {"core.trustctime", "true"},
    {"core.ignoreStat", "false"},
    {"core.ignoreCase", "false"},
    {"core.fileMode", "true"},
    {"core.symlinks", "true"},
    {"core.excludesFile", noFile},
    {"core.attributesFile", noFile},
    {"gc.auto", "0"},
}};

std::map<std::string, std::string> plainEnvironment(const FilePath& worktree) {
  return {
      {"PATH", "/usr/bin:/bin"},
      {"LC_ALL", "C"},
      {"HOME", noFolder},
      {"XDG_CONFIG_HOME", noFolder},
      {"GIT_CONFIG_NOSYSTEM", "1"},
      {"GIT_CONFIG_SYSTEM", noFile},
      {"GIT_CONFIG_GLOBAL", noFile},
      {"GIT_ATTR_NOSYSTEM", "1"},
      {"GIT_OPTIONAL_LOCKS", "0"},
      {"GIT_NO_LAZY_FETCH", "1"},
      {"GIT_ALLOW_PROTOCOL", ""},  // set and empty: no transport at all
      {"GIT_NO_REPLACE_OBJECTS", "1"},
      {"GIT_GRAFT_FILE", noFile},
      {"GIT_CEILING_DIRECTORIES", parentOf(worktree).bytes},
      {"GIT_TERMINAL_PROMPT", "0"},
      {"GIT_PAGER", "cat"},
      {"GIT_EDITOR", noProgram},
      {"GIT_ASKPASS", noProgram},
      {"SSH_ASKPASS", noProgram},
      {"GIT_SSH_COMMAND", noProgram},
  };
}

}  // namespace

GitCommand::GitCommand(ProcessRunner& processRunner, FilePath gitURL, FilePath worktree, StopToken stop)
    : processRunner_(processRunner),
      gitURL_(std::move(gitURL)),
      worktree_(std::move(worktree)),
      stop_(std::move(stop)),
      environment_(plainEnvironment(worktree_)) {
  for (const auto& [key, value] : configuration) configure(key, value);
}

/// Not as "-c" arguments, where a name with "=" in it would be cut.
void GitCommand::configure(std::string key, std::string value) {
  const std::string number = std::to_string(configuredCount_++);
  environment_.insert_or_assign("GIT_CONFIG_KEY_" + number, std::move(key));
  environment_.insert_or_assign("GIT_CONFIG_VALUE_" + number, std::move(value));
  environment_.insert_or_assign("GIT_CONFIG_COUNT", std::to_string(configuredCount_));
}

bool GitCommand::disarmFilters() {
  constexpr int noneFound = 1;
  const auto answer = run({"config", "--null", "--name-only", "--get-regexp", "^filter\\."});
  if (!answer) return false;
  if (answer->exitCode == noneFound) return answer->output.empty();
  const auto names = gitFilterNames(answer->output);
  if (answer->exitCode != 0 || !names || names->size() > mostFilters) return false;
  for (const std::string& name : *names) {
    for (const char* command : {".clean", ".smudge", ".process"}) configure("filter." + name + command, "");
    configure("filter." + name + ".required", "false");
  }
  return true;
}

std::optional<GitCommand::Answer> GitCommand::run(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"--no-pager", "--no-optional-locks", "--literal-pathspecs"});
  ProcessRequest request;
  request.executable = gitURL_;
  request.arguments = std::move(arguments);
  request.environment = environment_;
  request.workingFolder = worktree_;
  request.timeLimit = timeLimit;
  request.outputLimit = outputLimit;
  auto result = processRunner_.run(request, stop_);
  if (!result || stop_.stopRequested() || result->didTimeOut) return std::nullopt;
  if (!result->isOutputComplete || result->droppedOutputBytes > 0) return std::nullopt;
  return Answer{result->exitCode, std::move(result->standardOutput)};
}

std::optional<std::string> GitCommand::outputOf(std::vector<std::string> arguments) const {
  auto answer = run(std::move(arguments));
  if (!answer || answer->exitCode != 0) return std::nullopt;
  return std::move(answer->output);
}

}  // namespace quorvane
