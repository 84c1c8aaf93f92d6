#include "quorvane/app/cli/arguments/ReadInvocation.h"

#include "quorvane/app/cli/arguments/NearestWord.h"
#include "quorvane/app/cli/arguments/ScannedCategories.h"

#include <algorithm>
#include <charconv>

namespace quorvane {

namespace {

class InvocationReader {
 public:
  InvocationReader(const CommandDescription& command, const OptionValues& values, const Words& subjects)
      : command_(command), values_(values) {
    asked_.command = command.command;
    asked_.subjects = subjects;
  }

  Request read() {
    readGlobal();
    readRemoval();
    for (const auto reader :
         {&InvocationReader::readLayout, &InvocationReader::readCategories, &InvocationReader::readLimit,
          &InvocationReader::readRestore, &InvocationReader::readDocker})
      if (auto mistake = (this->*reader)()) return *std::move(mistake);
    return std::move(asked_);
  }

 private:
  bool flag(std::string_view name) const { return values_.flags.at(name); }
  const Words& texts(std::string_view name) const { return values_.texts.at(name); }

  std::optional<std::string> text(std::string_view name) const {
    const Words& given = texts(name);
    return given.empty() ? std::nullopt : std::optional(given.back());
  }

  void readGlobal() {
    asked_.options.json = flag("--json");
    asked_.options.isQuiet = flag("--quiet");
    asked_.options.hasNoColours = flag("--no-color");
    asked_.options.home = text("--home");
    asked_.options.dataDirectory = text("--data-dir");
  }

  void readRemoval() {
    asked_.removal = {.from = text("--from"),
                      .select = texts("--select"),
                      .unselect = texts("--unselect"),
                      .isConfirmed = flag("--yes"),
                      .isRehearsal = flag("--dry-run")};
    asked_.docker = {.takesSafe = flag("--safe"), .prunesBuildCache = flag("--prune-build-cache")};
  }

  std::optional<CommandError> readLayout() {
    const auto given = text("--layout");
    const Words choices = choicesOf(ValueKind::layout);
    if (!given || *given == choices.front()) return std::nullopt;  // that of the running system
    asked_.options.layout = caseFromName<HomeLayout>(*given);
    if (asked_.options.layout) return std::nullopt;
    return wrongUsage({"cli.error.unknownLayout", {{"given", *given}}}, hintFor(*given, choices));
  }

  std::optional<CommandError> readCategories() {
    const std::vector<ScanCategory> known = scannedCategories();
    for (const std::string& name : texts("--category")) {
      const auto category = std::ranges::find(known, name, [](ScanCategory each) { return caseName(each); });
      if (category == known.end())
        return wrongUsage({"cli.error.unknownCategory", {{"given", name}}},
                          hintFor(name, choicesOf(ValueKind::category)));
      if (std::ranges::find(asked_.categories, *category) == asked_.categories.end())
        asked_.categories.push_back(*category);
    }
    return std::nullopt;
  }

  std::optional<CommandError> readLimit() {
    const auto given = text("--limit");
    if (!given) return std::nullopt;
    std::int64_t number = 0;
    const char* end = given->data() + given->size();
    const auto [rest, error] = std::from_chars(given->data(), end, number);
    if (error != std::errc() || rest != end || number < 1)
      return wrongUsage({"cli.error.noCount", {{"option", std::string("--limit")}, {"given", *given}}},
                        seeHelp(command_));
    asked_.limit = number;
    return std::nullopt;
  }

  std::optional<CommandError> readRestore() {
    if (const auto given = text("--on-conflict")) {
      const Words names = choicesOf(ValueKind::conflictPolicy);
      const auto found = std::ranges::find(names, *given);
      if (found == names.end())
        return wrongUsage({"cli.error.unknownConflictPolicy", {{"given", *given}}}, hintFor(*given, names));
      asked_.restore.onConflict = static_cast<RestoreConflictPolicy>(found - names.begin());
    }
    if (command_.command == CommandName::undo) asked_.restore.choice = RestoreChoice::lastRun;
    return command_.command == CommandName::restore ? readRestoreChoice() : std::nullopt;
  }

  std::optional<CommandError> readDocker() {
    if (command_.command != CommandName::dockerClean) return std::nullopt;
    if (!asked_.removal.select.empty() || asked_.docker != DockerArguments()) return std::nullopt;
    return wrongUsage({"cli.error.dockerNothingNamed", {}}, seeHelp(command_));
  }

  std::optional<CommandError> readRestoreChoice() {
    const bool isLast = flag("--last"), isAll = flag("--all"), isNamed = !asked_.subjects.empty();
    if (isLast + isAll + isNamed != 1)
      return wrongUsage({isLast + isAll + isNamed == 0 ? "cli.error.nothingToRestore" : "cli.error.restoreEither", {}},
                        seeHelp(command_));
    asked_.restore.choice = isLast ? RestoreChoice::lastRun : isAll ? RestoreChoice::everything : RestoreChoice::named;
    return std::nullopt;
  }

  const CommandDescription& command_;
  const OptionValues& values_;
  Invocation asked_;
};

}  // namespace

Request invocationOf(const CommandDescription& command, const OptionValues& values, const Words& subjects) {
  return InvocationReader(command, values, subjects).read();
}

CommandError wrongUsage(Message message, std::optional<Message> hint) {
  return {ExitCode::wrongUsage, std::move(message), std::move(hint)};
}

Message seeHelp(const CommandDescription& command) { return {"cli.hint.seeHelp", {{"command", fullName(command)}}}; }

Message choiceOf(const Words& choices) { return {"cli.hint.choices", {{"choices", MessageList{choices}}}}; }

Message hintFor(std::string_view given, const Words& choices) {
  if (const auto word = nearestWord(given, choices)) return {"cli.hint.didYouMean", {{"word", *word}}};
  return choiceOf(choices);
}

}  // namespace quorvane
