#include "quorvane/app/cli/arguments/ReadInvocation.h"

#include "quorvane/app/cli/arguments/NearestWord.h"
#include "quorvane/app/cli/arguments/ScannedCategories.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace quorvane {

namespace {

template <class Number>
std::optional<Number> numberIn(const std::string& text) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

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
          &InvocationReader::readRestore, &InvocationReader::readDocker, &InvocationReader::readStatus})
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

  std::optional<CommandError> readLimit() { return readCount("--limit", asked_.limit); }

  std::optional<CommandError> readCount(const std::string& option, std::optional<std::int64_t>& count) {
    const auto given = text(option);
    if (!given) return std::nullopt;
    count = numberIn<std::int64_t>(*given);
    if (count && *count >= 1) return std::nullopt;
    return wrongUsage({"cli.error.noCount", {{"option", option}, {"given", *given}}}, seeHelp(command_));
  }

  // A number of samples or a time between them says that there are to be several.
  std::optional<CommandError> readStatus() {
    asked_.status.isWatched = flag("--watch") || text("--interval") || text("--count");
    if (auto mistake = readCount("--count", asked_.status.count)) return mistake;
    if (auto mistake = readInterval()) return mistake;
    const auto given = text("--sort");
    if (!given) return std::nullopt;
    const auto mode = caseFromName<SystemProcessSortMode>(*given);
    if (!mode)
      return wrongUsage({"cli.error.unknownSortMode", {{"given", *given}}},
                        hintFor(*given, choicesOf(ValueKind::sortMode)));
    asked_.status.sort = *mode;
    return std::nullopt;
  }

  std::optional<CommandError> readInterval() {
    constexpr double least = 0.1, most = 86'400;
    const auto given = text("--interval");
    if (!given) return std::nullopt;
    const double seconds = numberIn<double>(*given).value_or(0);
    const bool isPossible = seconds >= least && seconds <= most;
    if (!isPossible) return wrongUsage({"cli.error.noInterval", {{"given", *given}}}, seeHelp(command_));
    asked_.status.interval = std::chrono::milliseconds(std::lround(seconds * 1000));
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
