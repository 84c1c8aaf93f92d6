#pragma once

#include "quorvane/app/cli/CommandLine.h"

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>
#include <vector>

namespace quorvane {

/// A channel that keeps what is written to it.
class KeepingChannel final : public OutputChannel {
 public:
  struct Kind {
    bool isTerminal = false;
    std::size_t columns = 80;
    std::size_t rows = 24;
    int failsWith = 0;
    std::function<void()> firstWritten = nullptr;
  };

  explicit KeepingChannel(Kind kind) : kind_(std::move(kind)) {}

  void write(std::string_view bytes) override {
    if (failure() == 0) text += bytes;
    if (const auto first = std::exchange(kind_.firstWritten, nullptr)) first();
  }
  void giveUpAfter(int) override {}
  int failure() const override { return kind_.failsWith; }
  bool isTerminal() const override { return kind_.isTerminal; }
  int pipe() const override { return nothing; }
  std::size_t columns() const override { return kind_.columns; }
  std::size_t rows() const override { return kind_.rows; }

  std::string text;

 private:
  Kind kind_;
};

/// Answers that were prepared, in their order; then the input is at its end.
class PreparedInput final : public InputChannel {
 public:
  static constexpr const char* ctrlC = "\x03";  ///< a line that stands for the key

  struct Kind {
    bool isTerminal = false;
    std::vector<std::string> lines = {};
    std::string content = {};  ///< for who reads all of it
  };

  explicit PreparedInput(Kind kind) : kind_(std::move(kind)) {}

  bool isTerminal() const override { return kind_.isTerminal; }
  int descriptor() const override { return -1; }
  std::string readKeys() override { return {}; }

  std::optional<std::string> readLine(int) override {
    if (next_ == kind_.lines.size()) return std::nullopt;
    if (kind_.lines[next_] == ctrlC) {
      std::raise(SIGINT);
      return std::nullopt;
    }
    return kind_.lines[next_++];
  }

  Outcome<std::string, PosixError> readAll(std::size_t limit) override {
    if (kind_.content.size() > limit) return failure(PosixError{EFBIG});
    return kind_.content;
  }

 private:
  Kind kind_;
  std::size_t next_ = 0;
};

/// What one run said, and how it ended.
struct CommandLineRun {
  struct Setting {
    EnvironmentVariables variables = {{"HOME", "/nonexistent"}};
    KeepingChannel::Kind output = {};
    KeepingChannel::Kind errors = {};
    std::optional<FilePath> workingFolder = FilePath{"/nonexistent"};
    PreparedInput::Kind input = {};
    std::optional<std::vector<FilePath>> dockerPlaces = std::nullopt;
  };

  explicit CommandLineRun(const std::vector<std::string>& arguments) : CommandLineRun(arguments, Setting()) {}
  CommandLineRun(const std::vector<std::string>& arguments, const Setting& setting) {
    KeepingChannel outputChannel(setting.output), errorChannel(setting.errors);
    PreparedInput inputChannel(setting.input);
    code = runCommandLine(arguments, {inputChannel, outputChannel, errorChannel},
                          {setting.variables, setting.workingFolder, setting.dockerPlaces});
    output = outputChannel.text;
    errors = errorChannel.text;
  }

  int code = -1;
  std::string output;
  std::string errors;
};

}  // namespace quorvane
