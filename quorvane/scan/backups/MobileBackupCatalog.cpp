#include "quorvane/scan/backups/MobileBackupCatalog.h"

#include "quorvane/scan/backups/PropertyList.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

namespace quorvane {

namespace {

constexpr std::chrono::seconds recentPeriod{86'400};
constexpr std::size_t longestText = 1024;  // more is no name of a device

constexpr auto latestKey = "backup.reason.latest";
constexpr auto recentKey = "backup.reason.recent";
constexpr auto olderKey = "backup.reason.older";
constexpr auto unknownKey = "backup.reason.unknown";

/// One of a backup's property lists.
struct PartFile {
  std::optional<PropertyList> list;
  std::optional<Date> modifiedAt;  ///< of the regular file, readable or not
  bool isDamaged = false;          ///< something stands there that could not be read
};

/// A backup together with what only the catalogue needs to know of it.
struct Candidate {
  MobileBackupRecord record;
  bool isReadable = false;
};

Outcome<std::string, PosixError> readRegularFile(FileSystem& fileSystem, int folder, PartFile& part, const char* name) {
  const auto file = fileSystem.openFile(folder, name);
  if (!file) return failure(file.error());
  const auto status = fileSystem.status(file->number());
  if (!status) return failure(status.error());
  if (!status->isRegularFile()) return failure(PosixError{EINVAL});
  part.modifiedAt = wholeSeconds(status->modified.date());
  return readToEnd(fileSystem, file->number(), PropertyList::mostBytes);
}

PartFile readPart(FileSystem& fileSystem, int folder, const char* name) {
  PartFile part;
  const auto bytes = readRegularFile(fileSystem, folder, part, name);
  if (!bytes) {
    part.isDamaged = !bytes.error().isMissing();
    return part;
  }
  auto list = PropertyList::parse(*bytes);
  if (list)
    part.list = std::move(*list);
  else
    part.isDamaged = true;
  return part;
}

std::optional<std::string> firstText(const PartFile& part, std::initializer_list<const char*> keys) {
  if (!part.list) return std::nullopt;
  for (const char* key : keys) {
    auto text = part.list->text(key);
    if (text && !text->empty() && text->size() <= longestText) return text;
  }
  return std::nullopt;
}

std::optional<Date> dateOf(const PartFile& part, const char* key) {
  const auto date = part.list ? part.list->date(key) : std::nullopt;
  if (!date) return std::nullopt;
  return wholeSeconds(*date);
}

std::optional<bool> booleanOf(const PartFile& part, const char* key) {
  return part.list ? part.list->boolean(key) : std::nullopt;
}

template <class T>
std::optional<T> firstOf(std::optional<T> first, std::optional<T> second) {
  return first ? first : second;
}

bool isRegularFile(FileSystem& fileSystem, int folder, const char* name) {
  const auto status = fileSystem.status(folder, name);
  return status && status->isRegularFile();
}

Candidate readBackup(FileSystem& fileSystem, int folder, FilePath url) {
  const PartFile info = readPart(fileSystem, folder, "Info.plist");
  const PartFile status = readPart(fileSystem, folder, "Status.plist");
  const PartFile manifest = readPart(fileSystem, folder, "Manifest.plist");
  const bool hasDatabase =
      isRegularFile(fileSystem, folder, "Manifest.db") || isRegularFile(fileSystem, folder, "Manifest.mbdb");

  MobileBackupMetadata metadata;
  metadata.deviceName = firstText(info, {"Device Name", "Display Name"});
  metadata.deviceIdentifier = firstText(info, {"Target Identifier", "Unique Identifier"});
  metadata.productVersion = firstText(info, {"Product Version"});
  metadata.backupDate = firstOf(dateOf(info, "Last Backup Date"), dateOf(status, "Date"));
  metadata.isEncrypted = firstOf(booleanOf(manifest, "IsEncrypted"), booleanOf(status, "IsEncrypted"));
  metadata.isComplete = firstText(status, {"SnapshotState"}) == "finished" && manifest.list && hasDatabase;
  metadata.metadataModifiedAt = std::max({info.modifiedAt, status.modifiedAt, manifest.modifiedAt});
  const bool isReadable = !info.isDamaged && !status.isDamaged && !manifest.isDamaged;
  return {{std::move(url), std::move(metadata), {}}, isReadable};
}

/// Counted in seconds: dates lie further apart than nanoseconds can count.
std::chrono::seconds ageOf(Date date, Date now) {
  return std::chrono::floor<std::chrono::seconds>(now).time_since_epoch() -
         std::chrono::floor<std::chrono::seconds>(date).time_since_epoch();
}

/// The newest dates of one device's backups.
struct NewestDates {
  std::optional<Date> any;
  std::optional<Date> proven;  ///< of a complete backup that can be believed to have happened
};

bool isProven(const MobileBackupMetadata& metadata, Date now) {
  return metadata.isComplete && metadata.backupDate && *metadata.backupDate <= now;
}

std::map<std::string, NewestDates> newestByDevice(const std::vector<Candidate>& candidates, Date now) {
  std::map<std::string, NewestDates> newest;
  for (const Candidate& candidate : candidates) {
    const MobileBackupMetadata& metadata = candidate.record.metadata;
    if (!metadata.deviceIdentifier || !candidate.isReadable) continue;
    NewestDates& dates = newest[*metadata.deviceIdentifier];
    dates.any = std::max(dates.any, metadata.backupDate);
    if (isProven(metadata, now)) dates.proven = std::max(dates.proven, metadata.backupDate);
  }
  return newest;
}

const char* reasonOf(const Candidate& candidate, const std::map<std::string, NewestDates>& newest, Date now) {
  const MobileBackupMetadata& metadata = candidate.record.metadata;
  if (!metadata.backupDate || !candidate.isReadable) return unknownKey;
  if (!metadata.deviceIdentifier) return latestKey;
  const NewestDates& dates = newest.at(*metadata.deviceIdentifier);
  if (metadata.backupDate == dates.any) return latestKey;
  if (isProven(metadata, now) && metadata.backupDate == dates.proven) return latestKey;
  return ageOf(*metadata.backupDate, now) < recentPeriod ? recentKey : olderKey;
}

Outcome<std::vector<std::string>, PosixError> foldersIn(FileSystem& fileSystem, int folder) {
  FolderListing listing;
  if (const auto listed = fileSystem.list(folder, listing); !listed) return failure(listed.error());
  std::vector<std::string> names;
  for (const FolderEntry& entry : listing.entries())
    if (entry.isFolder) names.emplace_back(listing.nameOf(entry));
  std::ranges::sort(names);
  return names;
}

}  // namespace

ItemVerdict verdictOf(const MobileBackupRecord& record, Date now) {
  if (record.reasonKey != olderKey) return {SafetyLevel::blocked, record.reasonKey};
  const auto& date = record.metadata.backupDate;
  if (!date || ageOf(*date, now) < recentPeriod) return {SafetyLevel::blocked, recentKey};
  return {SafetyLevel::review, olderKey};
}

Outcome<std::vector<MobileBackupRecord>, PosixError> MobileBackupCatalog::records(const MobileBackupFolder& folder) {
  const auto names = foldersIn(fileSystem_, folder.descriptor);
  if (!names) return failure(names.error());
  std::vector<Candidate> candidates;
  for (const std::string& name : *names) {
    const auto backup = fileSystem_.openFolder(folder.descriptor, name.c_str());
    const FilePath url = joined(folder.url, name);
    candidates.push_back(backup ? readBackup(fileSystem_, backup->number(), url) : Candidate{{url, {}, {}}, false});
  }
  const Date now = clock_.now();
  const auto newest = newestByDevice(candidates, now);
  std::vector<MobileBackupRecord> records;
  for (Candidate& candidate : candidates) {
    candidate.record.reasonKey = reasonOf(candidate, newest, now);
    records.push_back(std::move(candidate.record));
  }
  return records;
}

}  // namespace quorvane
