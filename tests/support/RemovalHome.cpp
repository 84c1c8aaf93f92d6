#include "tests/support/RemovalHome.h"

#include "quorvane/base/Assert.h"

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
  if (const auto place = placeOf(*real_, request.item.originalPath))
    if (const auto status = real_->status(place->folder->number(), place->name.c_str())) request.proven = *status;
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

std::vector<std::string> RemovalHome::trashed() const { return temp_.names("data/Trash/files"); }

std::vector<std::string> RemovalHome::notes() const { return temp_.names("data/Trash/info"); }

std::vector<RecoveryReference> referencesTo(const std::vector<CleaningHistoryEntry>& entries) {
  std::vector<RecoveryReference> references;
  for (const CleaningHistoryEntry& entry : entries)
    for (const CleaningHistoryItem& item : entry.items) references.push_back({entry.id, item.id});
  return references;
}

}  // namespace quorvane
