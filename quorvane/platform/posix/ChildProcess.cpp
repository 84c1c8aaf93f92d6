#include "quorvane/platform/posix/ChildProcess.h"

#include "quorvane/platform/posix/Retry.h"
#include "quorvane/platform/posix/SpawnSupport.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr std::int32_t exitCodeOfSignals = 128;

/// The C library's record of what to do between the start of the child and that of its program.
class SpawnPlan {
 public:
  SpawnPlan() {
    note(::posix_spawn_file_actions_init(&actions_));
    note(::posix_spawnattr_init(&attributes_));
  }
  ~SpawnPlan() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;

  void enter(const FilePath& folder) { note(::posix_spawn_file_actions_addchdir_np(&actions_, folder.bytes.c_str())); }

  void connect(int standardOutput, int standardError) {
    note(::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
    note(::posix_spawn_file_actions_adddup2(&actions_, standardOutput, STDOUT_FILENO));
    note(::posix_spawn_file_actions_adddup2(&actions_, standardError, STDERR_FILENO));
  }

  /// To be called last.
  void isolate() {
    short flags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
    note(keepOnlyStandardStreams(actions_, flags));
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    note(::posix_spawnattr_setsigdefault(&attributes_, &all));
    note(::posix_spawnattr_setsigmask(&attributes_, &none));
    note(::posix_spawnattr_setflags(&attributes_, flags));
  }

  Outcome<pid_t, PosixError> start(const std::string& executable, char* const* arguments, char* const* environment) {
    pid_t child = -1;
    if (code_ == 0) code_ = ::posix_spawn(&child, executable.c_str(), &actions_, &attributes_, arguments, environment);
    if (code_ != 0) return failure(PosixError{code_});
    return child;
  }

 private:
  void note(int code) {
    if (code_ == 0) code_ = code;
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  int code_ = 0;
};

/// Texts, and the array of pointers to them that the system wants.
class TextVector {
 public:
  explicit TextVector(std::vector<std::string> texts) : texts_(std::move(texts)) {
    for (std::string& text : texts_) pointers_.push_back(text.data());
    pointers_.push_back(nullptr);
  }

  char* const* data() const { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

bool hasNul(const std::string& text) { return text.contains('\0'); }

bool isWellFormed(const ProcessRequest& request) {
  const bool isFolderFit = !request.workingFolder || !hasNul(request.workingFolder->bytes);
  return isAbsolute(request.executable.bytes) && isFolderFit && std::ranges::none_of(request.arguments, hasNul) &&
         std::ranges::none_of(request.environment, [](const auto& variable) {
           return variable.first.empty() || variable.first.contains('=') || hasNul(variable.first) ||
                  hasNul(variable.second);
         });
}

TextVector argumentsOf(const ProcessRequest& request) {
  std::vector<std::string> texts{request.executable.bytes};
  texts.insert(texts.end(), request.arguments.begin(), request.arguments.end());
  return TextVector(std::move(texts));
}

TextVector environmentOf(const ProcessRequest& request) {
  std::vector<std::string> texts;
  texts.reserve(request.environment.size());
  for (const auto& [name, value] : request.environment) texts.emplace_back(name).append("=").append(value);
  return TextVector(std::move(texts));
}

std::int32_t exitCodeOf(const siginfo_t& end) {
  return end.si_code == CLD_EXITED ? end.si_status : exitCodeOfSignals + end.si_status;
}

}  // namespace

Outcome<ChildProcess, PosixError> ChildProcess::start(const ProcessRequest& request) {
  if (!isWellFormed(request)) return failure(PosixError{EINVAL});
  auto output = makePipe();
  if (!output) return failure(output.error());
  auto error = makePipe();
  if (!error) return failure(error.error());
  SpawnPlan plan;
  if (request.workingFolder) plan.enter(*request.workingFolder);
  plan.connect(output->writeEnd.number(), error->writeEnd.number());
  plan.isolate();
  const auto child = plan.start(request.executable.bytes, argumentsOf(request).data(), environmentOf(request).data());
  if (!child) return failure(child.error());
  restoreDescriptorLimit(*child);
  return ChildProcess(*child, std::move(output->readEnd), std::move(error->readEnd), watchForEnd(*child));
}

ChildProcess::ChildProcess(pid_t identifier, FileDescriptor standardOutput, FileDescriptor standardError,
                           FileDescriptor end)
    : identifier_(identifier),
      standardOutput_(std::move(standardOutput)),
      standardError_(std::move(standardError)),
      end_(std::move(end)) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : identifier_(std::exchange(other.identifier_, -1)),
      standardOutput_(std::move(other.standardOutput_)),
      standardError_(std::move(other.standardError_)),
      end_(std::move(other.end_)),
      hasEnded_(other.hasEnded_),
      exitCode_(other.exitCode_) {}

ChildProcess::~ChildProcess() {
  if (identifier_ > 0) retried([&] { return ::waitpid(identifier_, nullptr, WNOHANG); });
}

bool ChildProcess::hasEnded() {
  if (hasEnded_) return true;
  siginfo_t end{};
  const int result =
      retried([&] { return ::waitid(P_PID, static_cast<id_t>(identifier_), &end, WEXITED | WNOHANG | WNOWAIT); });
  if (result != 0) {
    // This process lets the system collect its children: nothing is left of this one, and its number may be reused.
    hasEnded_ = true;
    identifier_ = -1;
  } else if (end.si_pid != 0) {
    hasEnded_ = true;
    exitCode_ = exitCodeOf(end);
  }
  return hasEnded_;
}

void ChildProcess::terminate() const {
  if (identifier_ <= 0) return;
  ::kill(-identifier_, SIGTERM);
  ::kill(-identifier_, SIGCONT);
}

void ChildProcess::kill() const {
  if (identifier_ > 0) ::kill(-identifier_, SIGKILL);
}

}  // namespace quorvane
