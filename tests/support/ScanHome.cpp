#include "tests/support/ScanHome.h"

#include "quorvane/base/Assert.h"
#include "quorvane/core/AppPaths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane {

namespace {

void setModification(const std::filesystem::path& path, Date date) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(date.time_since_epoch());
  const timespec time{seconds.count(), (date.time_since_epoch() - seconds).count()};
  const timespec times[2] = {time, time};
  require(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0, "a test cannot set a time");
}

ApplicationFolders foldersIn(const FilePath& home) {
  FolderRequest request;
  request.home = home;
  request.applicationName = AppPaths::folderName;
  const auto folders = applicationFolders(request);
  require(folders.has_value(), "a test has no folders");
  return *folders;
}

template <class List, class Project>
const auto& onlyOneAt(const List& list, const FilePath& path, Project pathOf) {
  const auto isThere = [&](const auto& element) { return pathOf(element) == path; };
  require(std::ranges::count_if(list, isThere) == 1, ("not exactly one: " + path.bytes).c_str());
  return *std::ranges::find_if(list, isThere);
}

}  // namespace

ScanHome::ScanHome(HomeLayout layout) {
  settings.folders = foldersIn(folder.path());
  settings.layout = layout;
  ignoreStore = std::make_unique<IgnoreRuleStore>(fileSystem, random, settings.folders.applicationSupport);
}

void ScanHome::age(std::string_view relative, std::chrono::seconds age) const {
  const std::filesystem::path root(at(relative).bytes);
  std::vector<std::filesystem::path> paths{root};
  if (!std::filesystem::is_symlink(root) && std::filesystem::is_directory(root))
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) paths.push_back(entry.path());
  for (const auto& path : paths) setModification(path, clock.now() - age);
}

ScanResult ScanHome::scan(ScanRequest request) {
  ScanPauseControl control;
  auto result = scanner().scan(request, control, {});
  require(result.has_value(), "a scan in a test failed");
  return *std::move(result);
}

void ScanHome::expectVerdicts(std::initializer_list<Made> all, std::chrono::seconds age) {
  std::map<std::string, std::string> expected;
  for (const Made& each : all) {
    std::string file = each.path;
    const std::size_t end = std::min(file.find('|'), file.size());
    if (!each.verdict.empty()) expected[file.substr(0, end)] = each.verdict;
    file.erase(end, 1);
    each.target ? folder.makeLink(file, each.target) : write(file, each.content);
  }
  this->age("", age);
  EXPECT_EQ(verdicts(), expected);
}

std::map<std::string, std::string> ScanHome::verdicts() {
  std::map<std::string, std::string> found;
  const ScanResult result = scan();
  for (const ScanItem& item : result.items)
    found[std::string(relativeTo(folder.path(), item.url.path))] = verdictOf(item);
  return found;
}

ScanServices ScanHome::services() {
  return {fileSystem, *volumes, processes, runner, clock, random, walker, *ignoreStore};
}

const ScanItem& itemAt(const ScanResult& result, const FilePath& path) {
  return onlyOneAt(result.items, path, [](const ScanItem& item) { return item.url.path; });
}

bool hasItemAt(const ScanResult& result, const FilePath& path) {
  return std::ranges::any_of(result.items, [&](const ScanItem& item) { return item.url.path == path; });
}

std::string verdictOf(const ScanItem& item) {
  return std::string(caseName(item.safety)) + " " + item.reasonKey + (item.isSelected ? " selected" : "");
}

const ScanCoverageEntry& coverageAt(const ScanResult& result, const FilePath& path) {
  return onlyOneAt(result.coverage->entries, path, [](const ScanCoverageEntry& entry) { return entry.path; });
}

}  // namespace quorvane
