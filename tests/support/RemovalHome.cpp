#include "tests/support/RemovalHome.h"

#include "quorvane/base/Assert.h"

#include <algorithm>
#include <filesystem>

namespace quorvane {

namespace {

ApplicationFolders foldersIn(const TempFolder& home) {
  return {.home = home.path(),
          .cache = home.at("cache"),
          .configuration = home.at("config"),
          .data = home.at("data"),
          .state = home.at("state"),
          .applicationSupport = home.at("data/Quorvane"),
          .isConfined = true};
}

std::vector<std::string> namesIn(const FilePath& folder) {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(folder.bytes, missing))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

}  // namespace

RemovalHome::RemovalHome()
    : folders_(foldersIn(temp_)),
      trash_(makeSystemTrash(failing_, random_, folders_)),
      clock_(SystemClock().now()),
      services_{failing_, *volumes_, *trash_, clock_,
                [](std::string_view key) { return "text of " + std::string(key); }} {}

std::unique_ptr<HistoryStore> RemovalHome::newStore() {
  return std::make_unique<HistoryStore>(services_, random_, folders_.applicationSupport);
}

CleanupMoveJournal::Request RemovalHome::request(std::string_view relative) {
  CleanupMoveJournal::Request request;
  request.item.id = random_.uuid();
  request.item.name = leafOf({std::string(relative)});
  request.item.originalPath = at(relative);
  request.item.size = 4096;
  return request;
}

std::vector<CleaningHistoryEntry> RemovalHome::clean(const std::vector<std::string>& relatives) {
  const auto store = newStore();
  const auto history = store->open().value();
  std::vector<CleanupMoveJournal::Request> requests;
  for (const std::string& relative : relatives) requests.push_back(request(relative));
  CleanupMoveJournal journal(services_);
  auto transaction =
      journal.begin(history, std::move(requests), CleaningHistorySource::files, store->dateOfNewRun(*history)).value();
  for (std::size_t i = 0; i < relatives.size(); ++i)
    require(!transaction.perform(i), "a test's own item can be moved to the Trash");
  return transaction.finish().value();
}

std::vector<CleaningHistoryItem> RemovalHome::recorded() {
  std::vector<CleaningHistoryItem> items;
  const auto text = readHistoryFile(*real_, historyFile()).value();
  if (!text) return items;
  const auto document = HistoryDocument::decode(*text).value();
  for (const CleaningHistoryEntry& entry : document.entries()) items.push_back(entry.items.front());
  return items;
}

std::vector<std::string> RemovalHome::trashed() const { return namesIn(at("data/Trash/files")); }

std::vector<std::string> RemovalHome::notes() const { return namesIn(at("data/Trash/info")); }

std::vector<RecoveryReference> referencesTo(const std::vector<CleaningHistoryEntry>& entries) {
  std::vector<RecoveryReference> references;
  for (const CleaningHistoryEntry& entry : entries)
    for (const CleaningHistoryItem& item : entry.items) references.push_back({entry.id, item.id});
  return references;
}

}  // namespace quorvane
