#include "quorvane/platform/FileSystem.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

namespace quorvane {

namespace {

constexpr std::uint16_t privateFolderPermissions = 0700;

/// Opens one more level; the descriptor handed in is the level above.
using Step = Outcome<FileDescriptor, PosixError> (*)(FileSystem&, int folder, const char* name);

Outcome<FileDescriptor, PosixError> openLevel(FileSystem& fileSystem, int folder, const char* name) {
  return fileSystem.openFolder(folder, name);
}

Outcome<FileDescriptor, PosixError> makeLevel(FileSystem& fileSystem, int folder, const char* name) {
  auto existing = fileSystem.openFolder(folder, name);
  if (existing || !existing.error().isMissing()) return existing;
  const auto made = fileSystem.makeFolder(folder, name, privateFolderPermissions);
  if (!made && made.error().code != EEXIST) return failure(made.error());
  if (const auto durable = fileSystem.synchronise(folder); !durable) return failure(durable.error());
  return fileSystem.openFolder(folder, name);
}

/// Empty components are faults here, unlike in `componentsOf`: what is opened is to be spelt exactly as it was
/// reviewed.
std::optional<std::string> takeComponent(std::string_view& rest) {
  const std::size_t slash = rest.find('/');
  std::string component(rest.substr(0, slash));
  rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
  const bool isLast = slash == std::string_view::npos;
  if (component.empty() || component == "." || component == ".." || component.contains('\0')) return std::nullopt;
  if (!isLast && rest.empty()) return std::nullopt;
  return component;
}

Outcome<FileDescriptor, PosixError> descend(FileSystem& fileSystem, int folder, std::string_view relative, Step step) {
  FileDescriptor current;
  do {
    const std::optional<std::string> component = takeComponent(relative);
    if (!component) return failure(PosixError{EINVAL});
    const int above = current.isOpen() ? current.number() : folder;
    auto opened = step(fileSystem, above, component->c_str());
    if (!opened) return opened;
    current = std::move(*opened);
  } while (!relative.empty());
  return current;
}

}  // namespace

void FolderListing::clear() {
  entries_.clear();
  names_.clear();
}

FolderEntry& FolderListing::add(std::string_view name) {
  FolderEntry& entry = entries_.emplace_back();
  entry.nameOffset = static_cast<std::uint32_t>(names_.size());
  entry.nameLength = static_cast<std::uint32_t>(name.size());
  names_.append(name).push_back('\0');
  return entry;
}

Outcome<FileDescriptor, PosixError> openFolderBelow(FileSystem& fileSystem, int folder, std::string_view relative) {
  return descend(fileSystem, folder, relative, openLevel);
}

Outcome<FileDescriptor, PosixError> makeFoldersBelow(FileSystem& fileSystem, int folder, std::string_view relative) {
  return descend(fileSystem, folder, relative, makeLevel);
}

Outcome<void, PosixError> writeWhole(FileSystem& fileSystem, int file, std::span<const std::string_view> pieces) {
  std::string_view begun;  // what is left of a piece that was not written whole
  for (;;) {
    while (begun.empty() && !pieces.empty() && pieces.front().empty()) pieces = pieces.subspan(1);
    if (begun.empty() && pieces.empty()) return {};
    const auto written = fileSystem.write(file, begun.empty() ? pieces : std::span(&begun, 1));
    if (!written) return failure(written.error());
    if (*written == 0) return failure(PosixError{EIO});
    std::size_t count = *written;
    const std::size_t ofBegun = std::min(count, begun.size());
    begun.remove_prefix(ofBegun);
    count -= ofBegun;
    while (count > 0) {
      begun = pieces.front().substr(std::min(count, pieces.front().size()));
      count -= pieces.front().size() - begun.size();
      pieces = pieces.subspan(1);
    }
  }
}

Outcome<std::string, PosixError> readToEnd(FileSystem& fileSystem, int file, std::size_t limit) {
  std::string content;
  std::array<std::byte, 64 * 1024> block;
  for (;;) {
    const auto count = fileSystem.read(file, block);
    if (!count) return failure(count.error());
    if (*count == 0) return content;
    if (*count > limit - content.size()) return failure(PosixError{EFBIG});
    content.append(reinterpret_cast<const char*>(block.data()), *count);
  }
}

}  // namespace quorvane
