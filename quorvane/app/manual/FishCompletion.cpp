#include "quorvane/app/manual/BriefText.h"
#include "quorvane/app/manual/CompletedWords.h"
#include "quorvane/app/manual/Completions.h"

#include <fmt/format.h>

#include <utility>

namespace quorvane {

namespace {

// Walks over the words before the cursor: whether they lead to exactly this command.
constexpr std::string_view start = R"(# fish completion for quorvane

function __quorvane_at
    set -l words (commandline -opc)
    set -l path
    set -l skips 0
    for word in $words[2..-1]
        if test $skips = 1
            set skips 0
            continue
        end
        switch $word
            case --
                break
            case @VALUE_OPTIONS@
                set skips 1
            case '-*'
            case '*'
                if contains -- (string join ' ' $path $word) @COMMANDS@
                    set -a path $word
                end
        end
    end
    test "$path" = "$argv"
end

complete -c quorvane -f
)";

std::string fishQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

// What follows an option or an argument of this kind.
std::string valuesOf(ValueKind kind) {
  switch (kind) {
    case ValueKind::anything: return "";
    case ValueKind::file:
    case ValueKind::path: return " -F";
    case ValueKind::folder: return " -a '(__fish_complete_directories)'";
    case ValueKind::category:
    case ValueKind::layout:
    case ValueKind::conflictPolicy:
    case ValueKind::sortMode: return fmt::format(" -a '{}'", choiceWords(kind));
    case ValueKind::selector: return fmt::format(" -F -a '{}'", choiceWords(kind));
  }
  std::unreachable();
}

std::string commandList() {
  std::string list;
  for (const CommandDescription* command : namedCommands())
    list += fmt::format("{}{}", list.empty() ? "" : " ", fishQuoted(command->words));
  return list;
}

std::string conditionFor(std::string_view words) { return " -n " + fishQuoted(fmt::format("__quorvane_at {}", words)); }

class FishWriter {
 public:
  explicit FishWriter(const MessageCatalogue& catalogue) : catalogue_(catalogue) {}

  std::string write() && {
    text_ = filledIn(start, joinedNames(optionsWithValues(), " "), commandList());
    for (const OptionDescription& each : globalOptionDescriptions()) option(each, "");
    for (const CommandDescription& command : commandDescriptions()) {
      const std::string condition = conditionFor(command.words);
      for (const CommandDescription* below : commandsBelow(command))
        line(fmt::format("{} -a {}", condition, lastWordOf(*below)), {std::string(below->key), {}});
      for (const OptionDescription& each : command.options) option(each, condition);
      for (const OptionDescription& subject : command.arguments)
        if (subject.kind != ValueKind::anything) line(condition + valuesOf(subject.kind), meaningOf(subject));
    }
    return std::move(text_);
  }

 private:
  void option(const OptionDescription& option, const std::string& condition) {
    const bool isFlag = option.value.empty();
    const std::string values = isFlag ? "" : (valuesOf(option.kind).contains(" -F") ? " -r" : " -x");
    line(fmt::format("{} -l {}{}{}", condition, option.name.substr(2), values, isFlag ? "" : valuesOf(option.kind)),
         meaningOf(option));
  }

  void line(const std::string& what, const Message& meaning) {
    text_ += fmt::format("complete -c quorvane{} -d {}\n", what, fishQuoted(briefText(catalogue_, meaning)));
  }

  const MessageCatalogue& catalogue_;
  std::string text_;
};

}  // namespace

std::string fishCompletion(const MessageCatalogue& catalogue) { return FishWriter(catalogue).write(); }

}  // namespace quorvane
