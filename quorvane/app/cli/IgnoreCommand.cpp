#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/arguments/Identifiers.h"

namespace quorvane {

namespace {

/// The three commands about ignore rules.
class IgnoreCommand {
 public:
  IgnoreCommand(const CommandContext& context, AppModel& model)
      : context_(context), console_(context.console), model_(model), rules_(model.ignoreRules()) {}

  CommandOutcome list() {
    const auto rules = rules_.load();
    if (!rules) return refused(rules.error());
    if (console_.wantsJson()) {
      console_.print(jsonText(*rules));
    } else if (rules->empty()) {
      console_.printLine({"cli.ignore.none", {}});
    }
    const std::string between = console_.outputStyle().isLaidOut ? "  " : "\t";
    for (const IgnoreRule& rule : *rules)
      if (!console_.wantsJson()) console_.print(uuidText(rule.id) + between + console_.pathText(rule.path) + "\n");
    return ExitCode::done;
  }

  CommandOutcome add() {
    const auto path = pathArgument(context_, model_, context_.invocation.subjects.front());
    if (!path) return failure(path.error());
    const auto rule = rules_.add(*path);
    if (!rule) return refused(rule.error());
    return told(stands(rule->path) ? "cli.ignore.added" : "cli.ignore.addedNothing", rule->path);
  }

  CommandOutcome remove() {
    const std::string& which = context_.invocation.subjects.front();
    const auto id = identifierOf(which);
    if (!id) return failure(id.error());
    if (*id) return removed(rules_.remove(uuidText(**id)));
    const auto path = pathArgument(context_, model_, which);
    if (!path) return failure(path.error());
    auto rule = rules_.remove(path->bytes);
    // A place has one rule, whatever links lead to it, and may have been given by another one when that was made.
    const auto behindLinks = model_.fileSystem().resolved(*path);
    if (!rule && rule.error().fault == IgnoreRuleFault::notFound && behindLinks && *behindLinks != *path)
      rule = rules_.remove(behindLinks->bytes);
    return removed(rule);
  }

 private:
  Outcome<std::optional<Uuid>, CommandError> identifierOf(const std::string& given) {
    if (const auto whole = uuidFromText(given)) return whole;
    const auto rules = rules_.load();
    if (!rules) return failure(commandError(rules.error(), given));
    Identifiers identifiers;
    for (const IgnoreRule& rule : *rules) identifiers.add(rule.id);
    return identifiers.find(given);
  }

  CommandOutcome removed(const Outcome<IgnoreRule, IgnoreRuleError>& rule) {
    if (!rule) return refused(rule.error());
    return told("cli.ignore.removed", rule->path);
  }

  bool stands(const FilePath& path) {
    FileSystem& fileSystem = model_.fileSystem();
    if (path.bytes == "/") return true;
    const auto folder = fileSystem.openStartingFolder(parentOf(path));
    return folder && fileSystem.status(folder->number(), std::string(leafOf(path)).c_str());
  }

  // With JSON all three print the rules that hold now.
  CommandOutcome told(std::string key, const FilePath& path) {
    if (console_.wantsJson()) return list();
    console_.printLine({std::move(key), {{"path", path}}});
    return ExitCode::done;
  }

  CommandOutcome refused(const IgnoreRuleError& error) const {
    const auto& subjects = context_.invocation.subjects;
    return failure(commandError(error, subjects.empty() ? std::string() : subjects.front()));
  }

  const CommandContext& context_;
  Console& console_;
  AppModel& model_;
  IgnoreRuleStore& rules_;
};

CommandOutcome run(const CommandContext& context, CommandOutcome (IgnoreCommand::*action)()) {
  return withModel(context, [&](MainLoop&, AppModel& model) -> CommandOutcome {
    const FilePath& home = model.settings().folders.home;
    if (!model.fileSystem().openStartingFolder(home)) return failure(homeUnreadable(home));
    return (IgnoreCommand(context, model).*action)();
  });
}

}  // namespace

CommandOutcome runIgnoreList(const CommandContext& context) { return run(context, &IgnoreCommand::list); }

CommandOutcome runIgnoreAdd(const CommandContext& context) { return run(context, &IgnoreCommand::add); }

CommandOutcome runIgnoreRemove(const CommandContext& context) { return run(context, &IgnoreCommand::remove); }

}  // namespace quorvane
