#include "quorvane/app/manual/CompletedWords.h"
#include "quorvane/app/manual/Completions.h"

#include <fmt/format.h>

#include <utility>

namespace quorvane {

namespace {

// Walks over the words before the cursor: which command they lead to, and whether the cursor stands at an option's
// value.
constexpr std::string_view start = R"(# bash completion for quorvane

_quorvane()
{
    local current=${COMP_WORDS[COMP_CWORD]} command='' option='' prefix='' ended='' word choices
    local -i i=1
    COMPREPLY=()
    while ((i < COMP_CWORD)); do
        word=${COMP_WORDS[i]}
        i+=1
        case $ended$word in
            --) ended=: ;;
            @VALUE_OPTIONS@)
                [[ ${COMP_WORDS[i]} == '=' ]] && i+=1
                i+=1
                ((i > COMP_CWORD)) && option=$word
                ;;
            -* | :*) ;;
            *)
                case "$command $word" in
                    @COMMANDS@) command="${command:+$command }$word" ;;
                esac
                ;;
        esac
    done
    [[ $current == '=' && $option ]] && current=''
    if [[ ! $ended$option && $current == --*=* ]]; then
        option=${current%%=*}
        prefix=$option=
        current=${current#*=}
    fi

)";

constexpr std::string_view end = R"(    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$current")
    COMPREPLY=("${COMPREPLY[@]/#/$prefix}")
}
complete -F _quorvane quorvane
)";

// What readline completes where none of the choices match.
std::string_view fallback(ValueKind kind) {
  switch (kind) {
    case ValueKind::file:
    case ValueKind::path:
    case ValueKind::selector: return "compopt -o default";
    case ValueKind::folder: return "compopt -o dirnames";
    case ValueKind::anything:
    case ValueKind::category:
    case ValueKind::layout:
    case ValueKind::conflictPolicy:
    case ValueKind::sortMode: return "";
  }
  std::unreachable();
}

std::string completing(std::string_view pattern, const std::string& choices, ValueKind kind, std::string_view indent) {
  std::string body;
  if (!choices.empty()) body += fmt::format(" choices='{}'", choices);
  if (!fallback(kind).empty()) body += fmt::format("{} {}", body.empty() ? "" : ";", fallback(kind));
  return body.empty() ? "" : fmt::format("{}{}){} ;;\n", indent, pattern, body);
}

std::string commandPatterns() {
  std::string patterns;
  for (const CommandDescription* command : namedCommands()) {
    const bool isBelow = command->words.contains(' ');
    patterns += fmt::format("{}'{}{}'", patterns.empty() ? "" : " | ", isBelow ? "" : " ", command->words);
  }
  return patterns;
}

std::string valuesCase() {
  std::string text = "    if [[ $option ]]; then\n        case $option in\n";
  for (const OptionDescription& option : optionsWithValues())
    text += completing(option.name, choiceWords(option.kind), option.kind, "            ");
  return text + "        esac\n";
}

std::string optionsCase() {
  std::string text = fmt::format("    elif [[ ! $ended && $current == -* ]]; then\n        choices='{}'\n",
                                 joinedNames(globalOptionDescriptions(), " "));
  text += "        case $command in\n";
  for (const CommandDescription* command : namedCommands())
    if (!command->options.empty())
      text += fmt::format("            '{}') choices+=' {}' ;;\n", command->words, joinedNames(command->options, " "));
  return text + "        esac\n";
}

std::string subjectsCase() {
  std::string text = "    else\n        case $command in\n";
  for (const CommandDescription& command : commandDescriptions()) {
    std::string words;
    for (const CommandDescription* below : commandsBelow(command))
      words += fmt::format("{}{}", words.empty() ? "" : " ", lastWordOf(*below));
    const ValueKind kind = command.arguments.empty() ? ValueKind::anything : command.arguments.front().kind;
    text += completing(fmt::format("'{}'", command.words), words, kind, "            ");
  }
  return text + "        esac\n    fi\n";
}

}  // namespace

std::string bashCompletion() {
  std::string text = filledIn(start, joinedNames(optionsWithValues(), " | "), commandPatterns());
  text += valuesCase() + optionsCase() + subjectsCase();
  return text.append(end);
}

}  // namespace quorvane
