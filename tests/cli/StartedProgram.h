#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane {

/// The built program, in a process of its own with nobody to ask: its channels lead nowhere, unless its errors are kept
/// in a file.
class StartedProgram {
 public:
  explicit StartedProgram(std::vector<std::string> arguments, const std::string& errorFile = "/dev/null") {
    arguments.insert(arguments.begin(), QUORVANE_PROGRAM);
    child_ = ::fork();
    if (child_ != 0) return;
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const int nothing = ::open("/dev/null", O_RDWR);
    const int errors = ::open(errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(nothing, 0);
    ::dup2(nothing, 1);
    ::dup2(errors, 2);
    // What started the tests may ignore them.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
    ::execv(QUORVANE_PROGRAM, pointers.data());
    ::_exit(127);
  }

  void send(int signal) const { ::kill(child_, signal); }

  /// Its exit status, or 1000 and the signal that killed it. Called once.
  int wait() const {
    int status = 0;
    EXPECT_EQ(::waitpid(child_, &status, 0), child_);
    return WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
  }

 private:
  pid_t child_ = -1;
};

}  // namespace quorvane
