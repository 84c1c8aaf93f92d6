#include "quorvane/app/cli/terminal/Console.h"

#include "quorvane/app/cli/terminal/InterruptSignal.h"
#include "quorvane/base/Json.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace quorvane {

Console::Console(CommandLineStreams streams, const EnvironmentVariables& environment, const ParsedArguments& arguments)
    : streams_(streams), environment_(environment), wantsJson_(arguments.wantsJson) {
  if (const auto* invocation = std::get_if<Invocation>(&arguments.request)) {
    wantsJson_ = invocation->options.json;
    isQuiet_ = invocation->options.isQuiet;
    hasNoColours_ = invocation->options.hasNoColours;
  }
}

const MessageCatalogue& Console::catalogue() {
  std::call_once(catalogueOnce_,
                 [this] { catalogue_ = std::make_unique<const MessageCatalogue>(MessageCatalogue::english()); });
  return *catalogue_;
}

std::string Console::text(const Message& message) { return catalogue().text(message, messageStyle(outputStyle())); }

std::string Console::pathText(const FilePath& path) const {
  return MessageCatalogue::pathText(path, messageStyle(outputStyle()));
}

TextStyle Console::outputStyle() const { return styleOf(streams_.output); }

TextStyle Console::errorStyle() const { return styleOf(streams_.errors); }

TextStyle Console::styleOf(const OutputChannel& channel) const {
  TextStyle style = textStyle(channel, environment_);
  if (hasNoColours_) style.hasColours = false;
  return style;
}

void Console::printLine(const Message& message) { print(text(message) + "\n"); }

std::string Console::errorText(const CommandError& error, const MessageStyle& style) {
  std::string whole = catalogue().text(error.message, style);
  if (error.hint) whole += " " + catalogue().text(*error.hint, style);
  return whole;
}

std::string Console::errorLine(const std::string& text, const std::string& key) {
  const TextStyle style = errorStyle();
  return fmt::format("{}: {} {}\n", toned("quorvane", Tone::bad, style), text,
                     toned(fmt::format("[{}]", key), Tone::faint, style));
}

void Console::tell(const CommandError& error) {
  show(errorLine(errorText(error, messageStyle(errorStyle())), error.message.key));
}

std::string Console::interruptNotice(std::string_view key) {
  return (streams_.errors.isTerminal() ? "\n" : "") + errorLine(catalogue().text(key), std::string(key));
}

void Console::tellItem(const FilePath& path, const Message& reason) {
  const MessageStyle style = messageStyle(errorStyle());
  const std::string text = catalogue().text(reason, style);
  const std::string key = harmlessText(reason.key, style.characters);
  show(errorLine(catalogue().text({"cli.error.ofItem", {{"path", path}, {"text", text}}}, style), key));
}

void Console::report(const CommandError& error) {
  tell(error);
  if (!wantsJson_) return;
  const Json content{{"key", error.message.key}, {"message", documentText(error)}};
  print(printedJson(Json{{"error", content}}));
}

std::optional<std::string> Console::ask(const Message& question) {
  const TextStyle style = errorStyle();
  const QuestionInterrupt interrupt;
  show(toned(catalogue().text(question, messageStyle(style)), Tone::strong, style) + " ");
  auto answer = streams_.input.readLine(interrupt.descriptor());
  if (!answer) show("\n");
  wasInterrupted_ = interrupt.hasCome();
  if (wasInterrupted_) return std::nullopt;
  return answer;
}

ExitCode Console::finish(ExitCode code) {
  const int failure = streams_.output.failure();
  if (failure == 0 || failure == EPIPE || code == ExitCode::hungUp) return code;
  // So writing to a terminal fails that is gone; the signal that tells of it may come later or never.
  if (failure == EIO && streams_.output.isTerminal()) return ExitCode::hungUp;
  wantsJson_ = false;
  report({ExitCode::internalError, {"cli.error.outputFailed", {{"what", systemReason(failure)}}}});
  return ExitCode::internalError;
}

std::string systemReason(int code) { return std::generic_category().message(code); }

}  // namespace quorvane
