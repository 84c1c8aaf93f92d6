#pragma once

#include "quorvane/core/IgnoreRuleStore.h"
#include "quorvane/core/TreeWalker.h"
#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/scan/DiskScanner.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TempFolder.h"

#include <chrono>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A process table that holds what the test puts in.
class MadeProcessTable final : public ProcessTable {
 public:
  Outcome<std::vector<RunningProcess>, PosixError> processes = std::vector<RunningProcess>{};
  int readings = 0;

  Outcome<std::vector<RunningProcess>, PosixError> read() override {
    ++readings;
    return processes;
  }
};

/// A home of a test's own with everything a scanner works with: the real file system (which can be made to fail), real
/// commands, a clock that stands at `now`, and a process table without processes.
class ScanHome {
 public:
  explicit ScanHome(HomeLayout layout);

  /// Makes a file of this content; everything made or changed later than a call of `age` is young.
  void write(std::string_view relative, std::string_view content = "content") { folder.write(relative, content); }

  /// Sets the modification time of a tree, the root included, to this long before `now`.
  void age(std::string_view relative, std::chrono::seconds age) const;

  /// The result of a scan that has to succeed.
  ScanResult scan(ScanRequest request = {});

  /// Scans; every item's verdict (`verdictOf`) by its path below the home.
  std::map<std::string, std::string> verdicts();

  /// A file to make, and the verdict on the item that comes of it; none without a verdict. What follows "|" lies in
  /// the item: ".cache/thumbnails|/large/a.png".
  struct Made {
    std::string path;
    std::string verdict = {};
    std::string_view content = "content";
    const char* target = nullptr;  ///< of a link that is made instead
  };

  /// Makes all that, of this age, and expects these verdicts and no others.
  void expectVerdicts(std::initializer_list<Made> all, std::chrono::seconds age);

  DiskScanner scanner() { return {services(), settings}; }
  ScanServices services();

  FilePath at(std::string_view relative) const { return folder.at(relative); }

  TempFolder folder;
  std::unique_ptr<FileSystem> realFileSystem = makeSystemFileSystem();
  FailingFileSystem fileSystem{*realFileSystem};
  std::unique_ptr<Volumes> volumes = makeSystemVolumes();
  MadeProcessTable processes;
  SafeProcessRunner runner;
  ManualClock clock{wholeSeconds(SystemClock().now())};
  SystemRandomSource random;
  TreeWalker walker{fileSystem};
  ScanSettings settings;
  std::unique_ptr<IgnoreRuleStore> ignoreStore;
};

/// The item at this place; ends the test program when there is none, or more than one.
const ScanItem& itemAt(const ScanResult& result, const FilePath& path);
bool hasItemAt(const ScanResult& result, const FilePath& path);

/// "safe reason.buildArtifact selected", for tables of expectations.
std::string verdictOf(const ScanItem& item);

/// The entry of the ledger for this path; ends the test program when there is none, or more than one.
const ScanCoverageEntry& coverageAt(const ScanResult& result, const FilePath& path);

}  // namespace quorvane
