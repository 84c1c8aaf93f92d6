// What the history costs, measured in one process: HistoryBenchmark FOLDER, an empty folder on the disk to measure.
//
// One journalled move beside two bare durable replaces of a file of the history's size, which is what it cannot do
// without; and reading a long history for the first time beside the JSON library's bare parse of its text. The two of a
// pair take turns; what counts is the median of their ratios. Ends with 1 when a bound was missed, with 2 when
// something could not be done.

#include "quorvane/base/Json.h"
#include "quorvane/platform/DurableFile.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/removal/HistoryStore.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace quorvane;

namespace {

constexpr int moveRounds = 21, readRounds = 9;
constexpr double mostForMove = 1.3, mostForRead = 1.5;

[[noreturn]] void giveUp(std::string_view what) {
  fmt::print(stderr, "HistoryBenchmark: {}\n", what);
  std::exit(2);
}

/// What an operation came to, which nothing can be measured without.
template <class T, class E>
T need(Outcome<T, E> outcome, std::string_view what) {
  if (!outcome) giveUp(what);
  return std::move(outcome).value();
}

double millisecondsOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double median(std::vector<double> values) {
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2));
  return values[values.size() / 2];
}

class Bench {
 public:
  explicit Bench(const FilePath& home) : home_(home) {}

  bool measureMoves(int entryCount);
  bool measureFirstRead(int entryCount);

 private:
  void writeHistory(int entryCount);
  CleaningHistoryEntry exampleEntry();
  CleanupMoveJournal::Request newItem();
  void move(const CleanupMoveJournal::Request& request);
  FilePath historyFile() const { return joined(home_, "support/history.json"); }

  FilePath home_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
  std::unique_ptr<Volumes> volumes_ = makeSystemVolumes();
  SystemRandomSource random_;
  SystemClock clock_;
  std::unique_ptr<Trash> trash_ = makeSystemTrash(*fileSystem_, random_,
                                                  {.home = home_,
                                                   .cache = home_,
                                                   .configuration = home_,
                                                   .data = home_,
                                                   .state = home_,
                                                   .applicationSupport = home_});
  MoveServices services_{*fileSystem_, *volumes_, *trash_, clock_,
                         [](std::string_view key) { return std::string(key); }};
  HistoryStore store_{services_, random_, joined(home_, "support")};
  FileDescriptor folder_ = need(fileSystem_->openStartingFolder(home_), "the folder cannot be opened");
  int itemCount_ = 0;
};

CleaningHistoryEntry Bench::exampleEntry() {
  CleaningHistoryEntry entry;
  entry.id = random_.uuid();
  entry.date = dateFromTimestamp(1'790'000'000 + itemCount_++ / 40, 0);
  entry.itemCount = 1;
  entry.reclaimedBytes = 48'213'504;
  entry.isCleanupReceipt = true;
  CleaningHistoryItem item;
  item.id = entry.id;
  item.name = fmt::format("item-{}", itemCount_);
  item.originalPath = joined(home_, ".cache/application/" + item.name);
  item.trashedPath = joined(home_, "Trash/files/" + item.name);
  item.size = entry.reclaimedBytes;
  item.outcome = CleaningHistoryItemOutcome::movedToTrash;
  item.trashIdentity = FileIdentity{2049, 7'340'033, 040000, 1'780'000'000, 123'456'789};
  item.trashLocation =
      CleanupDirectoryAnchor{joined(home_, "Trash/files"), *item.trashIdentity, -1, 77, uuidText(random_.uuid()), 1000};
  entry.items = {std::move(item)};
  return entry;
}

void Bench::writeHistory(int entryCount) {
  HistoryCache cache;
  const auto history = need(OpenHistory::open(*fileSystem_, random_, historyFile(), cache), "the history is refused");
  OpenHistory::Change change;
  for (const CleaningHistoryEntry& entry : history->document().entries()) change.erased.push_back(entry.id);
  for (int i = 0; i < entryCount; ++i) change.inserted.push_back(exampleEntry());
  need(history->write(std::move(change)), "the history cannot be written");
}

CleanupMoveJournal::Request Bench::newItem() {
  CleanupMoveJournal::Request request;
  request.item.id = random_.uuid();
  request.item.name = "moved-" + uuidText(request.item.id);
  request.item.originalPath = joined(home_, request.item.name);
  const auto file = need(fileSystem_->createFile(folder_.number(), request.item.name.c_str()), "no item can be made");
  request.proven = need(fileSystem_->status(file.number()), "an item cannot be looked at");
  return request;
}

void Bench::move(const CleanupMoveJournal::Request& request) {
  const auto history = need(store_.open(), "the history cannot be opened");
  auto transaction =
      need(CleanupMoveJournal(services_).begin(history, {request}, CleaningHistorySource::files, clock_.now()),
           "the move cannot be announced");
  if (transaction.perform(0)) giveUp("an item cannot be moved");
  (void)need(transaction.finish(), "the receipt cannot be written");
}

bool Bench::measureMoves(int entryCount) {
  writeHistory(entryCount);
  move(newItem());  // reads the history once, and makes the Trash
  std::vector<double> moves, replaces, ratios;
  for (int round = 0; round < moveRounds; ++round) {
    const auto text = need(readHistoryFile(*fileSystem_, historyFile()), "the history cannot be read");
    const auto request = newItem();
    moves.push_back(millisecondsOf([&] { move(request); }));
    replaces.push_back(millisecondsOf([&] {
      for (int i = 0; i < 2; ++i)
        need(replaceFile(*fileSystem_, folder_.number(), "bare", *text, random_.uuid()), "a file cannot be replaced");
    }));
    ratios.push_back(moves.back() / replaces.back());
  }
  const double ratio = median(ratios);
  fmt::print("one journalled move, {} entries: {:.2f} ms; two bare replaces {:.2f} ms: {:.2f} (at most {}){}\n",
             entryCount, median(moves), median(replaces), ratio, mostForMove, ratio > mostForMove ? " MISSED" : "");
  return ratio <= mostForMove;
}

bool Bench::measureFirstRead(int entryCount) {
  writeHistory(entryCount);
  const auto text = need(readHistoryFile(*fileSystem_, historyFile()), "the history cannot be read");
  std::vector<double> reads, parses, ratios;
  for (int round = 0; round < readRounds; ++round) {
    reads.push_back(millisecondsOf([&] {
      HistoryStore store(services_, random_, joined(home_, "support"));
      (void)need(store.open(), "the history cannot be opened");
    }));
    parses.push_back(millisecondsOf([&] {
      if (Json::parse(*text, nullptr, false).is_discarded()) giveUp("the history is no JSON");
    }));
    ratios.push_back(reads.back() / parses.back());
  }
  const double ratio = median(ratios);
  fmt::print("first read, {} entries, {:.1f} MiB: {:.1f} ms; bare parse {:.1f} ms: {:.2f} (at most {}){}\n", entryCount,
             static_cast<double>(text->size()) / (1 << 20), median(reads), median(parses), ratio, mostForRead,
             ratio > mostForRead ? " MISSED" : "");
  return ratio <= mostForRead;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) giveUp("usage: HistoryBenchmark FOLDER");
  Bench bench(standardised({arguments[1]}));
  bool isWithin = true;
  for (const int entries : {10, 1000, 10'000}) isWithin = bench.measureMoves(entries) && isWithin;
  isWithin = bench.measureFirstRead(10'000) && isWithin;
  return isWithin ? 0 : 1;
}
