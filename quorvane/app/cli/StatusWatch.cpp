#include "quorvane/app/cli/StatusWatch.h"

#include "quorvane/app/model/MainLoop.h"

#include <string>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace

StatusWatch::StatusWatch(Console& console, MainLoop& loop, SystemStatusMonitor& monitor, SystemProcessSortMode sort)
    : console_(console),
      loop_(loop),
      monitor_(monitor),
      sort_(sort),
      screen_(console.input(), console.output(), loop,
              {.changed = [this] { draw(); }, .typed = [this](std::string_view keys) { obey(keys); }}) {}

void StatusWatch::sampled() {
  const bool hasRates = std::exchange(hasSample_, true);
  if (hasRates || monitor_.isPaused()) draw();
}

void StatusWatch::draw() {
  if (!hasSample_) return;
  const StatusHistories histories{monitor_.cpuHistory(), monitor_.memoryHistory(), monitor_.networkHistory()};
  const StatusBoardState state{.sort = sort_,
                               .isPaused = monitor_.isPaused(),
                               .hasKeys = console_.input().isTerminal(),
                               .interval = monitor_.refreshInterval()};
  const std::string board =
      statusBoard(monitor_.snapshot(), histories, state, console_.output().rows(), console_.outputReport());
  screen_.draw(linesOf(board));
  if (console_.output().failure() != 0) loop_.stop();
}

void StatusWatch::obey(std::string_view keys) {
  if (keys.empty()) {
    isLost_ = true;
    return loop_.stop();
  }
  for (const char key : keys_.take(keys)) obeyKey(key);
  draw();
}

void StatusWatch::obeyKey(char key) {
  switch (key) {
    case 'q': loop_.stop(); break;
    case 'r': monitor_.refreshNow(); break;
    case ' ': monitor_.isPaused() ? monitor_.resume() : monitor_.pause(); break;
    case 's': sort_ = otherThan(sort_); break;
    default: break;
  }
}

}  // namespace quorvane
