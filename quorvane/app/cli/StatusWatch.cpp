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

/// What was typed, without the keys that send several bytes: arrows and the like, and those with Alt.
std::string plainKeys(std::string_view typed) {
  constexpr char escape = '\x1b';
  std::string keys;
  while (!typed.empty()) {
    const char first = typed.front();
    typed.remove_prefix(1);
    if (first != escape) {
      keys += first;
      continue;
    }
    const bool isSequence = typed.starts_with('[') || typed.starts_with('O');
    if (!typed.empty()) typed.remove_prefix(1);
    while (isSequence && !typed.empty() && (typed.front() < '@' || typed.front() > '~')) typed.remove_prefix(1);
    if (isSequence && !typed.empty()) typed.remove_prefix(1);
  }
  return keys;
}

}  // namespace

StatusWatch::StatusWatch(Console& console, MainLoop& loop, SystemStatusMonitor& monitor, SystemProcessSortMode sort)
    : console_(console),
      loop_(loop),
      monitor_(monitor),
      state_{.sort = sort, .hasKeys = console.input().isTerminal(), .interval = monitor.refreshInterval()},
      screen_(console.input(), console.output(), loop,
              {.changed = [this] { draw(); }, .typed = [this](std::string_view keys) { obey(keys); }}) {}

void StatusWatch::sampled() {
  const bool hasRates = std::exchange(hasSample_, true);
  if (hasRates || state_.isPaused) draw();
}

void StatusWatch::draw() {
  if (!hasSample_) return;
  const StatusHistories histories{monitor_.cpuHistory(), monitor_.memoryHistory(), monitor_.networkHistory()};
  const std::string board =
      statusBoard(monitor_.snapshot(), histories, state_, console_.output().rows(), console_.outputReport());
  screen_.draw(linesOf(board));
  if (console_.output().failure() != 0) loop_.stop();
}

void StatusWatch::obey(std::string_view keys) {
  if (keys.empty()) {
    isLost_ = true;
    return loop_.stop();
  }
  for (const char key : plainKeys(keys)) obeyKey(key);
  draw();
}

void StatusWatch::obeyKey(char key) {
  switch (key) {
    case 'q': loop_.stop(); break;
    case 'r': monitor_.refreshNow(); break;
    case ' ':
      state_.isPaused = !state_.isPaused;
      state_.isPaused ? monitor_.pause() : monitor_.resume();
      break;
    case 's':
      state_.sort =
          state_.sort == SystemProcessSortMode::cpu ? SystemProcessSortMode::memory : SystemProcessSortMode::cpu;
      break;
    default: break;
  }
}

}  // namespace quorvane
