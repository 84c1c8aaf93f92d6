#include "quorvane/removal/HistoryStore.h"

#include "quorvane/base/JsonText.h"
#include "quorvane/core/AppPaths.h"
#include "quorvane/removal/HistoryJson.h"
#include "quorvane/removal/Reconciliation.h"
#include "quorvane/removal/Restoration.h"

#include <algorithm>
#include <chrono>
#include <set>

namespace quorvane {

namespace {

std::int64_t pendingIn(const std::vector<CleaningHistoryEntry>& entries) {
  std::int64_t count = 0;
  for (const CleaningHistoryEntry& entry : entries) count += std::ranges::count_if(entry.items, isPending);
  return count;
}

}  // namespace

std::string jsonText(const RecoveryBatchResult& result) { return printedRecord(result); }

HistoryStore::HistoryStore(const MoveServices& services, RandomSource& random, const FilePath& applicationSupport,
                           IrreversibleCheck* irreversible)
    : services_(services),
      random_(random),
      fileURL_(AppPaths::history(applicationSupport)),
      irreversible_(irreversible) {}

Outcome<HistoryView, RecoveryStoreError> HistoryStore::load() {
  auto view = loadUnlocked();
  if (!view || view->pendingCount == 0) return view;
  const auto history = open();
  if (!history && history.error().fault == RecoveryStoreFault::busy) {
    view->isInFlight = true;
    return view;
  }
  if (!history) return failure(history.error());
  const auto& entries = (*history)->document().entries();
  view->entries.assign(entries.begin(), entries.end());
  view->pendingCount = pendingIn(view->entries);
  return view;
}

Outcome<HistoryView, RecoveryStoreError> HistoryStore::loadUnlocked() {
  const auto text = readHistoryFile(services_.fileSystem, fileURL_);
  if (!text) return failure(text.error());
  HistoryView view;
  if (!*text) return view;
  const auto document = HistoryDocument::decode(**text);
  if (!document) return failure(RecoveryStoreError{RecoveryStoreFault::undecodable, fileURL_, {}});
  view.entries.assign(document->entries().begin(), document->entries().end());
  view.pendingCount = pendingIn(view.entries);
  return view;
}

Outcome<std::shared_ptr<OpenHistory>, RecoveryStoreError> HistoryStore::open() {
  auto history = OpenHistory::open(services_.fileSystem, random_, fileURL_, cache_);
  if (!history) return history;
  if (auto settled = Reconciliation(services_, **history, irreversible_).perform(); !settled)
    return failure(settled.error());
  return history;
}

Date HistoryStore::dateOfNewRun(const OpenHistory& history) const {
  Date date = wholeSeconds(services_.clock.now());
  std::set<Date> taken;
  for (const CleaningHistoryEntry& entry : history.document().entries())
    if (entry.date >= date) taken.insert(entry.date);
  while (taken.contains(date)) date += std::chrono::seconds(1);
  return date;
}

Outcome<RestoreReport, RecoveryStoreError> HistoryStore::restore(const std::vector<RecoveryReference>& references,
                                                                 const RestoreOptions& options) {
  auto history = open();
  if (!history) return failure(history.error());
  return Restoration(services_, **history, options).perform(references);
}

}  // namespace quorvane
