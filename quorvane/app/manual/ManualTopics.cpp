#include "quorvane/app/manual/ManualTopics.h"

#include <array>
#include <utility>

namespace quorvane {

namespace {

constexpr std::array exitStatus{
    ManualTopic{"0", "manual.exit.done"},          ManualTopic{"1", "manual.exit.someNotDone"},
    ManualTopic{"2", "manual.exit.wrongUsage"},    ManualTopic{"3", "manual.exit.refused"},
    ManualTopic{"4", "manual.exit.internalError"}, ManualTopic{"129, 130, 143", "manual.exit.cancelled"},
};

constexpr std::array environment{
    ManualTopic{"HOME", "manual.environment.home"},
    ManualTopic{"XDG_CACHE_HOME, XDG_CONFIG_HOME, XDG_DATA_HOME, XDG_STATE_HOME", "manual.environment.folders"},
    ManualTopic{"NO_COLOR", "manual.environment.noColor"},
    ManualTopic{"TERM", "manual.environment.term"},
    ManualTopic{"LC_ALL, LC_CTYPE, LANG", "manual.environment.locale"},
    ManualTopic{"TZ", "manual.environment.timeZone"},
};

constexpr std::array files{
    ManualTopic{"~/.local/share/Quorvane/history.json", "manual.file.history"},
    ManualTopic{"~/.local/share/Quorvane/ignored-paths.json", "manual.file.ignoredPaths"},
    ManualTopic{"~/.local/share/Trash, .Trash-UID", "manual.file.trash"},
};

}  // namespace

std::string_view aboutKey(CommandName command) {
  switch (command) {
    case CommandName::overview: return "manual.about.root";
    case CommandName::scan: return "manual.about.scan";
    case CommandName::clean: return "manual.about.clean";
    case CommandName::trash: return "manual.about.trash";
    case CommandName::history: return "manual.about.history";
    case CommandName::restore: return "manual.about.restore";
    case CommandName::undo: return "manual.about.undo";
    case CommandName::ignore: return "manual.about.ignore";
    case CommandName::docker: return "manual.about.docker";
    case CommandName::status: return "manual.about.status";
    case CommandName::dockerList:
    case CommandName::dockerClean:
    case CommandName::dockerRetry:
    case CommandName::historyShow:
    case CommandName::ignoreList:
    case CommandName::ignoreAdd:
    case CommandName::ignoreRemove: return "";
  }
  std::unreachable();
}

std::span<const ManualTopic> exitStatusTopics() { return exitStatus; }
std::span<const ManualTopic> environmentTopics() { return environment; }
std::span<const ManualTopic> fileTopics() { return files; }

}  // namespace quorvane
