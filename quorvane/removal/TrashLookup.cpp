#include "quorvane/removal/TrashLookup.h"

#include <fmt/format.h>

#include <cerrno>

namespace quorvane {

namespace {

constexpr std::size_t mostEntries = 20'000;

}  // namespace

Outcome<RecordedTrash, PosixError> TrashLookup::open(const FilePath& directory,
                                                     const std::optional<CleanupDirectoryAnchor>& recorded) {
  const auto known = opened(directory);
  if (!known) return failure(known.error());
  if (!recorded) return RecordedTrash{known->folder, AnchorMatch::exact};
  const auto match = known->anchor ? matched(*recorded, *known->anchor) : AnchorMatch::none;
  if (match == AnchorMatch::none) return failure(PosixError{ESTALE});
  return RecordedTrash{known->folder, match};
}

Outcome<TrashLookup::Opened, PosixError> TrashLookup::opened(const FilePath& directory) {
  if (const auto known = opened_.find(directory); known != opened_.end()) return known->second;
  auto folder = services_.trash.open(directory);
  if (!folder) return opened_.emplace(directory, failure(folder.error())).first->second;
  std::shared_ptr<TrashFolder> shared = *std::move(folder);
  auto anchor = anchorOf(services_.fileSystem, services_.volumes, shared->descriptor(), directory);
  return opened_.emplace(directory, Opened{std::move(shared), std::move(anchor)}).first->second;
}

std::optional<TrashLookup::Found> TrashLookup::find(const Announced& announced) {
  const auto trash = open(announced.intent.trashDirectory, announced.intent.trashLocation);
  if (!trash) return std::nullopt;
  if (auto leaf = leafAmongExpected(*trash, announced)) return Found{*trash, std::move(leaf)};
  const auto& listed = listing(*trash->folder);
  if (!listed) return std::nullopt;
  for (const Listed& entry : *listed)
    if (isFree(*trash, entry.leaf) && isSameObject(announced.intent.identity, entry.identity, trash->volume))
      return Found{*trash, entry.leaf};
  return Found{*trash, std::nullopt};
}

std::optional<std::string> TrashLookup::leafAmongExpected(const RecordedTrash& trash, const Announced& announced) {
  for (std::string& leaf : trash.folder->leavesFor(announced.name, announced.move)) {
    const auto status = services_.fileSystem.status(trash.folder->descriptor(), leaf.c_str());
    const bool isItem = status && isSameObject(announced.intent.identity, identityOf(*status), trash.volume);
    if (isItem && isFree(trash, leaf)) return std::move(leaf);
  }
  return std::nullopt;
}

bool TrashLookup::isFree(const RecordedTrash& trash, const std::string& leaf) const {
  return !claimed_.contains(joined(trash.folder->directory(), leaf));
}

std::vector<std::shared_ptr<TrashFolder>> TrashLookup::folders() const {
  std::vector<std::shared_ptr<TrashFolder>> folders;
  for (const auto& [directory, known] : opened_)
    if (known) folders.push_back(known->folder);
  return folders;
}

const std::optional<std::vector<TrashLookup::Listed>>& TrashLookup::listing(TrashFolder& folder) {
  const auto status = services_.fileSystem.status(folder.descriptor());
  const FileIdentity identity = status ? identityOf(*status) : FileIdentity{};
  const std::string key = fmt::format("anchor:{}:{}:{}:{}", identity.device, identity.inode, identity.createdSeconds,
                                      identity.createdNanoseconds);
  const auto known = listings_.find(key);
  return known != listings_.end() ? known->second : listings_.emplace(key, list(folder)).first->second;
}

std::optional<std::vector<TrashLookup::Listed>> TrashLookup::list(TrashFolder& folder) {
  auto names = services_.fileSystem.names(folder.descriptor(), mostEntries);
  if (!names) return std::nullopt;
  std::vector<Listed> listed;
  for (std::string& leaf : *names) {
    const auto status = services_.fileSystem.status(folder.descriptor(), leaf.c_str());
    if (!status) return std::nullopt;
    listed.push_back({std::move(leaf), identityOf(*status)});
  }
  return listed;
}

}  // namespace quorvane
