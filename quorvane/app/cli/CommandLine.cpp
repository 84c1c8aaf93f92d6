#include "quorvane/app/cli/CommandLine.h"

#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/HelpText.h"
#include "quorvane/app/cli/Version.h"
#include "quorvane/app/cli/terminal/InterruptSignal.h"
#include "quorvane/base/Assert.h"

#include <fmt/format.h>

#include <exception>
#include <utility>

namespace quorvane {

namespace {

/// What to say of a command that was stopped before or behind its work.
std::string_view stoppedKey(CommandName command) {
  switch (command) {
    case CommandName::overview:
    case CommandName::scan:
    case CommandName::history:
    case CommandName::historyShow:
    case CommandName::docker:
    case CommandName::dockerList:
    case CommandName::ignore:
    case CommandName::ignoreList:
    case CommandName::status: return "scan.error.cancelled";
    case CommandName::clean:
    case CommandName::trash:
    case CommandName::dockerClean:
    case CommandName::dockerRetry:
    case CommandName::restore:
    case CommandName::undo: return "cli.stopped.seeHistory";
    case CommandName::ignoreAdd:
    case CommandName::ignoreRemove: return "cli.stopped.seeIgnored";
  }
  std::unreachable();
}

/// Answers one request.
class RequestRunner {
 public:
  RequestRunner(Console& console, const CommandLineEnvironment& environment)
      : console_(console), environment_(environment) {}

  CommandOutcome operator()(const VersionRequest&) {
    console_.print(fmt::format("quorvane {}\n", programVersion()));
    return ExitCode::done;
  }

  CommandOutcome operator()(const HelpRequest& request) {
    console_.print(helpText(descriptionOf(request.command), console_.catalogue(), console_.outputStyle()));
    return ExitCode::done;
  }

  CommandOutcome operator()(const CommandError& mistake) { return failure(mistake); }

  CommandOutcome operator()(const Invocation& invocation) {
    const CommandContext context{console_, invocation, environment_};
    const InterruptNotice notice(console_.interruptNotice(stoppedKey(invocation.command)));
    switch (invocation.command) {
      case CommandName::overview: return runOverview(context);
      case CommandName::scan: return runScan(context);
      case CommandName::clean: return runClean(context);
      case CommandName::trash: return runTrash(context);
      case CommandName::history: return runHistory(context);
      case CommandName::historyShow: return runHistoryShow(context);
      case CommandName::restore:
      case CommandName::undo: return runRestore(context);
      case CommandName::docker:
      case CommandName::dockerList: return runDockerList(context);
      case CommandName::dockerClean: return runDockerClean(context);
      case CommandName::dockerRetry: return runDockerRetry(context);
      case CommandName::ignoreList: return runIgnoreList(context);
      case CommandName::ignoreAdd: return runIgnoreAdd(context);
      case CommandName::ignoreRemove: return runIgnoreRemove(context);
      case CommandName::status: return runStatus(context);
      case CommandName::ignore: break;
    }
    abortOnBrokenInvariant("a command that only leads to others is refused before", std::source_location::current());
  }

 private:
  Console& console_;
  const CommandLineEnvironment& environment_;
};

CommandOutcome answered(const Request& request, RequestRunner& runner) {
  try {
    return std::visit(runner, request);
  } catch (const std::exception& unexpected) {  // of a library, or out of memory
    return failure(
        CommandError{ExitCode::internalError, {"cli.error.internal", {{"what", std::string(unexpected.what())}}}});
  }
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, CommandLineStreams streams,
                   const CommandLineEnvironment& environment) {
  const ParsedArguments parsed = parseArguments(arguments);
  Console console(streams, environment.variables, parsed);
  RequestRunner runner(console, environment);
  const CommandOutcome outcome = answered(parsed.request, runner);
  if (!outcome) console.report(outcome.error());
  return static_cast<int>(console.finish(outcome ? *outcome : outcome.error().code));
}

}  // namespace quorvane
