#include "tests/support/CleaningHome.h"

#include "quorvane/base/Assert.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/removal/HistoryDocument.h"
#include "quorvane/removal/HistoryJournalFile.h"

#include <filesystem>

namespace quorvane {

CleaningHome::CleaningHome(HomeLayout layout)
    : ScanHome(layout),
      trash(makeSystemTrash(fileSystem, random, settings.folders)),
      moves{fileSystem, madeVolumes, *trash, clock, [](std::string_view key) { return "text of " + std::string(key); }},
      history(moves, random, settings.folders.applicationSupport),
      remover({moves, processes, walker, *ignoreStore, history, random}, settings.folders.home,
              settings.folders.applicationSupport) {}

RemovalRequest CleaningHome::request(std::string_view relative) {
  const FilePath path = at(relative);
  RemovalRequest request{.id = random.uuid(), .name = std::string(leafOf(path)), .path = path, .snapshot = {}};
  const auto place = placeOf(*realFileSystem, path);
  if (!place) return request;
  const auto outcomes = walker.measure({{place->folder->number(), place->name}}, {});
  if (!outcomes.front()) return request;
  request.size = outcomes.front()->allocatedBytes;
  request.snapshot = snapshotOf(*outcomes.front(), path);
  return request;
}

std::vector<RemovalRequest> CleaningHome::requests(const std::vector<std::string>& relatives) {
  std::vector<RemovalRequest> all;
  for (const std::string& relative : relatives) all.push_back(request(relative));
  return all;
}

void CleaningHome::endWalkerThreads() {
  std::destroy_at(&walker);
  std::construct_at(&walker, fileSystem);
}

RemovalReport CleaningHome::remove(const std::vector<RemovalRequest>& requests, const RemovalOptions& options,
                                   const RemovalChecks& checks) {
  auto report = remover.remove(requests, checks, options);
  require(report.has_value(), "a removal in a test was refused as a whole");
  return *std::move(report);
}

std::vector<CleaningHistoryEntry> CleaningHome::recorded() {
  const FilePath file = joined(settings.folders.applicationSupport, "history.json");
  const auto text = readHistoryFile(*realFileSystem, file).value();
  if (!text) return {};
  const auto document = HistoryDocument::decode(*text).value();
  return {document.entries().begin(), document.entries().end()};
}

std::set<std::string> CleaningHome::everything() const {
  std::set<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path().bytes))
    paths.insert(std::string(relativeTo(folder.path(), {entry.path().string()})));
  return paths;
}

bool CleaningHome::hasEntry(std::string_view relative) const {
  return std::filesystem::exists(std::filesystem::symlink_status(at(relative).bytes));
}

std::string textOf(const RemovalRefusal& refusal) {
  return refusal.reasonKey + " " + std::string(caseName(refusal.category));
}

std::map<std::string, std::string> fates(const CleaningHome& home, const std::vector<RemovalRequest>& requests,
                                         const RemovalReport& report) {
  std::map<std::string, std::string> all;
  const auto nameOf = [&](const FilePath& path) {
    return isBelow(path, home.folder.path()) ? std::string(relativeTo(home.folder.path(), path)) : path.bytes;
  };
  for (const CleaningHistoryEntry& entry : report.entries)
    if (entry.itemCount == 1) all[nameOf(entry.items.front().originalPath)] = "moved";
  for (const std::size_t index : report.wouldMove) all[nameOf(requests[index].path)] = "would move";
  for (const RemovalFailure& failure : report.failures)
    all[nameOf(requests[failure.index].path)] = textOf(failure.refusal);
  return all;
}

}  // namespace quorvane
