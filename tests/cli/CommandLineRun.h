#pragma once

#include "quorvane/app/cli/CommandLine.h"

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
    int failsWith = 0;
    std::function<void()> firstWritten = nullptr;
  };

  explicit KeepingChannel(Kind kind) : kind_(std::move(kind)) {}

  void write(std::string_view bytes) override {
    if (failure() == 0) text += bytes;
    if (const auto first = std::exchange(kind_.firstWritten, nullptr)) first();
  }
  int failure() const override { return kind_.failsWith; }
  bool isTerminal() const override { return kind_.isTerminal; }
  std::size_t columns() const override { return kind_.columns; }

  std::string text;

 private:
  Kind kind_;
};

/// What one run said, and how it ended.
struct CommandLineRun {
  struct Setting {
    EnvironmentVariables variables = {{"HOME", "/nonexistent"}};
    KeepingChannel::Kind output = {};
    KeepingChannel::Kind errors = {};
    std::optional<FilePath> workingFolder = FilePath{"/nonexistent"};
  };

  explicit CommandLineRun(const std::vector<std::string>& arguments) : CommandLineRun(arguments, Setting()) {}
  CommandLineRun(const std::vector<std::string>& arguments, const Setting& setting) {
    KeepingChannel outputChannel(setting.output), errorChannel(setting.errors);
    code = runCommandLine(arguments, {outputChannel, errorChannel}, {setting.variables, setting.workingFolder});
    output = outputChannel.text;
    errors = errorChannel.text;
  }

  int code = -1;
  std::string output;
  std::string errors;
};

}  // namespace quorvane
