#pragma once

#include "quorvane/app/cli/arguments/Arguments.h"
#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/app/cli/terminal/InputChannel.h"
#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/app/messages/MessageCatalogue.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// The channels of a run.
struct CommandLineStreams {
  InputChannel& input;
  OutputChannel& output;
  OutputChannel& errors;
};

/// What one run says, and how: results on the output, everything else beside it.
class Console {
 public:
  Console(CommandLineStreams streams, const EnvironmentVariables& environment, const ParsedArguments& arguments);

  /// Paths in it are shown with "~" from now on. To be called only with the home that a shell means by that.
  void setHome(FilePath home) { home_ = std::move(home); }
  const std::optional<FilePath>& home() const { return home_; }

  bool wantsJson() const { return wantsJson_; }
  bool isQuiet() const { return isQuiet_; }

  /// The texts, read when the first one is asked for. On any thread.
  const MessageCatalogue& catalogue();
  std::string text(const Message& message);
  std::string pathText(const FilePath& path) const;

  TextStyle outputStyle() const;
  TextStyle errorStyle() const;
  OutputChannel& errors() { return streams_.errors; }
  InputChannel& input() { return streams_.input; }
  OutputChannel& output() { return streams_.output; }
  ReportStyle outputReport() { return {catalogue(), home_, outputStyle()}; }
  ReportStyle errorReport() { return {catalogue(), home_, errorStyle()}; }

  /// Writes to the output, as it is.
  void print(std::string_view text) { streams_.output.write(text); }
  void printLine(const Message& message);

  /// "quorvane: TEXT [message.key]" on the error channel, and its JSON document where JSON was asked for.
  void report(const CommandError& error);

  /// What is wrong, and what to do instead, as a JSON document holds it.
  std::string documentText(const CommandError& error) { return errorText(error, MessageStyle{home_}); }

  /// The line with which Ctrl-C ends the run, on a line of its own.
  std::string interruptNotice(std::string_view key);

  /// The same line alone: of what is told in the result as well.
  void tell(const CommandError& error);
  /// "quorvane: PATH: TEXT [message.key]": an item that could not be done.
  void tellItem(const FilePath& path, const Message& reason);

  /// Whether a question can be put to a person.
  bool canAsk() const { return streams_.input.isTerminal() && streams_.errors.isTerminal(); }
  /// Puts a question beside the result and waits for the answer. Nothing when none will come.
  std::optional<std::string> ask(const Message& question);
  /// Whether Ctrl-C came to the last question.
  bool wasInterrupted() const { return wasInterrupted_; }
  /// Writes beside the result, as it is.
  void show(std::string_view text) { streams_.errors.write(text); }

  /// How the run ends: as the command did, unless its result could not be written. That the reader has gone away is not
  /// a failure; that the terminal has, ends the run as its signal would.
  ExitCode finish(ExitCode code);

 private:
  TextStyle styleOf(const OutputChannel& channel) const;
  MessageStyle messageStyle(const TextStyle& style) const { return {home_, style.characters}; }
  std::string errorText(const CommandError& error, const MessageStyle& style);
  std::string errorLine(const std::string& text, const std::string& key);

  CommandLineStreams streams_;
  const EnvironmentVariables& environment_;
  bool wantsJson_;
  bool isQuiet_ = false;
  bool hasNoColours_ = false;
  bool wasInterrupted_ = false;
  std::optional<FilePath> home_;
  std::once_flag catalogueOnce_;
  std::unique_ptr<const MessageCatalogue> catalogue_;
};

/// What the system says of one of its `errno` numbers.
std::string systemReason(int code);

}  // namespace quorvane
