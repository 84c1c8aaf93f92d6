#include "quorvane/platform/linux/DirectorySizes.h"

#include "quorvane/platform/DurableFile.h"
#include "quorvane/platform/linux/PercentEncoding.h"
#include "quorvane/platform/linux/TrashInfo.h"

#include <charconv>
#include <map>
#include <utility>

namespace quorvane {

namespace {

const std::string fileName = "directorysizes";
constexpr std::size_t longestFile = 4 << 20;

std::optional<std::int64_t> takeNumber(std::string_view& rest) {
  const std::size_t end = rest.find(' ');
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view word = rest.substr(0, end);
  std::int64_t number = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc() || stop != word.data() + word.size()) return std::nullopt;
  rest.remove_prefix(end + 1);
  return number;
}

std::optional<DirectorySize> sizeFromLine(std::string_view line) {
  const auto bytes = takeNumber(line);
  if (!bytes || *bytes < 0) return std::nullopt;
  const auto noteSeconds = takeNumber(line);
  if (!noteSeconds) return std::nullopt;
  auto leaf = percentDecoded(line);
  if (!leaf || !isOneComponent(*leaf)) return std::nullopt;
  return DirectorySize{*std::move(leaf), *bytes, *noteSeconds};
}

/// Nothing when the file is to be left alone.
std::optional<std::string> writtenText(FileSystem& fileSystem, int trash) {
  auto text = readTrusted(fileSystem, trash, fileName, longestFile);
  if (text) return *std::move(text);
  if (text.error().fault != TrustFault::missing) return std::nullopt;
  return std::string();
}

class SizeTable {
 public:
  SizeTable(FileSystem& fileSystem, int info) : fileSystem_(fileSystem), info_(info) {}

  void keep(const DirectorySize& size) {
    if (noteOf(size.leaf)) lines_.insert_or_assign(size.leaf, directorySizeLine(size));
  }

  void add(const TrashFolder::Size& size) {
    const auto note = noteOf(size.leaf);
    if (!note) return;
    lines_.insert_or_assign(size.leaf, directorySizeLine({size.leaf, size.bytes, note->modified.seconds}));
  }

  std::string text() const {
    std::string text;
    for (const auto& [leaf, line] : lines_) text += line;
    return text;
  }

 private:
  Outcome<FileStatus, PosixError> noteOf(const std::string& leaf) {
    return fileSystem_.status(info_, (leaf + std::string(trashInfoSuffix)).c_str());
  }

  FileSystem& fileSystem_;
  int info_;
  std::map<std::string, std::string> lines_;
};

}  // namespace

std::string directorySizeLine(const DirectorySize& size) {
  return std::to_string(size.bytes) + ' ' + std::to_string(size.noteSeconds) + ' ' + percentEncoded(size.leaf) + '\n';
}

std::optional<std::vector<DirectorySize>> directorySizesFromText(std::string_view text) {
  std::vector<DirectorySize> sizes;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) return std::nullopt;
    auto size = sizeFromLine(text.substr(0, end));
    if (!size) return std::nullopt;
    sizes.push_back(*std::move(size));
    text.remove_prefix(end + 1);
  }
  return sizes;
}

void addDirectorySizes(FileSystem& fileSystem, RandomSource& random, int trash, int info,
                       const std::vector<TrashFolder::Size>& sizes) {
  removeAbandonedTemporaries(fileSystem, trash, fileName);
  const auto before = writtenText(fileSystem, trash);
  if (!before) return;
  const auto written = directorySizesFromText(*before);
  if (!written) return;
  SizeTable table(fileSystem, info);
  for (const DirectorySize& size : *written) table.keep(size);
  for (const TrashFolder::Size& size : sizes) table.add(size);
  const std::string text = table.text();
  if (text == *before || text.size() > longestFile) return;
  (void)replaceFile(fileSystem, trash, fileName, text, random.uuid());  // the desktop measures for itself without it
}

}  // namespace quorvane
