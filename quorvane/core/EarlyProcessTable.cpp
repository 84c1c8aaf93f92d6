#include "quorvane/core/EarlyProcessTable.h"

namespace quorvane {

namespace {

constexpr std::chrono::seconds oldestReading{1};

}  // namespace

bool EarlyProcessTable::isYoung() const { return clock_.uptime() - begunAt_ <= oldestReading; }

void EarlyProcessTable::begin() {
  if (reading_.valid() && isYoung()) return;
  reading_ = {};  // waits for one that nobody asked for: the table has one reader at a time
  begunAt_ = clock_.uptime();
  reading_ = std::async([this] { return table_.read(); });
}

Outcome<std::vector<RunningProcess>, PosixError> EarlyProcessTable::read() {
  if (!reading_.valid()) return table_.read();
  auto processes = reading_.get();
  return isYoung() ? std::move(processes) : table_.read();
}

}  // namespace quorvane
