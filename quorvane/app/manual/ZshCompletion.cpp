#include "quorvane/app/manual/BriefText.h"
#include "quorvane/app/manual/CompletedWords.h"
#include "quorvane/app/manual/Completions.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

// What _arguments takes to complete a value; a colon that is no separator there has a backslash.
std::string actionOf(ValueKind kind) {
  switch (kind) {
    case ValueKind::anything: return " ";
    case ValueKind::file:
    case ValueKind::path: return "_files";
    case ValueKind::folder: return "_files -/";
    case ValueKind::category:
    case ValueKind::layout:
    case ValueKind::conflictPolicy:
    case ValueKind::sortMode: return fmt::format("({})", choiceWords(kind));
    case ValueKind::selector:
      return fmt::format("{{_alternative \"words\\:word\\:({})\" \"files\\:path\\:_files\"}}", choiceWords(kind));
  }
  std::unreachable();
}

std::string withEscaped(std::string_view text, std::string_view special) {
  std::string escaped;
  for (const char c : text) {
    if (special.contains(c)) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

class ZshWriter {
 public:
  explicit ZshWriter(const MessageCatalogue& catalogue) : catalogue_(catalogue) {}

  std::string write() && {
    text_ = "#compdef quorvane\n\n";
    for (const CommandDescription& command : commandDescriptions()) function(command);
    text_ += "_quorvane \"$@\"\n";
    return std::move(text_);
  }

 private:
  static std::string nameOf(const CommandDescription& command) {
    std::string name = fullName(command);
    std::ranges::replace(name, ' ', '_');
    return "_" + name;
  }

  void function(const CommandDescription& command) {
    const auto below = commandsBelow(command);
    text_ += nameOf(command) + "() {\n";
    text_ += "  local curcontext=$curcontext context state state_descr\n";
    text_ += "  local -a line commands\n  typeset -A opt_args\n";
    text_ += "  _arguments -C";
    for (const auto options : {globalOptionDescriptions(), command.options})
      for (const OptionDescription& option : options) argument(specOf(option));
    for (const OptionDescription& subject : command.arguments)
      argument(fmt::format("{}:{}:{}", subject.repeats ? "*" : "1", subject.name, actionOf(subject.kind)));
    if (!below.empty()) {
      argument("(-)1: :->command");
      argument("(-)*:: :->rest");
    }
    text_ += below.empty() ? "\n" : " && return\n";
    if (!below.empty()) leadTo(below);
    text_ += "}\n\n";
  }

  void leadTo(const std::vector<const CommandDescription*>& below) {
    text_ += "  case $state in\n    command)\n      commands=(\n";
    for (const CommandDescription* command : below) {
      const std::string text = briefText(catalogue_, {std::string(command->key), {}});
      text_ += fmt::format("        {}\n",
                           shellQuoted(fmt::format("{}:{}", lastWordOf(*command), withEscaped(text, "\\:"))));
    }
    text_ += "      )\n      _describe command commands\n      ;;\n    rest)\n      case $line[1] in\n";
    for (const CommandDescription* command : below)
      text_ += fmt::format("        {}) {} ;;\n", lastWordOf(*command), nameOf(*command));
    text_ += "      esac\n      ;;\n  esac\n";
  }

  std::string specOf(const OptionDescription& option) const {
    const std::string text = withEscaped(briefText(catalogue_, meaningOf(option)), "\\[]:");
    if (option.value.empty()) return fmt::format("{}[{}]", option.name, text);
    return fmt::format("{}{}=[{}]:{}:{}", option.repeats ? "*" : "", option.name, text, option.value,
                       actionOf(option.kind));
  }

  void argument(const std::string& spec) { text_ += " \\\n    " + shellQuoted(spec); }

  const MessageCatalogue& catalogue_;
  std::string text_;
};

}  // namespace

std::string zshCompletion(const MessageCatalogue& catalogue) { return ZshWriter(catalogue).write(); }

}  // namespace quorvane
