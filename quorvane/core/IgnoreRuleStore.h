#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/core/IgnoreRule.h"
#include "quorvane/platform/DurableFile.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/RandomSource.h"

#include <string_view>
#include <vector>

namespace quorvane {

/// Why the ignore rules could not be read or changed. The file is left as it is in every case.
enum class IgnoreRuleFault {
  untrustedFolder,  ///< the folder could have been filled by somebody else
  untrusted,        ///< the file could have been written by somebody else
  unreadable,       ///< the system refuses to read it
  undecodable,      ///< it does not hold ignore rules
  busy,             ///< another run of the program is changing it
  notWritten,       ///< the new rules could not be brought to the disk
  notFound,         ///< no rule has this path or identifier
  invalidPath,      ///< empty, relative, with a NUL, or one whose links cannot be resolved
};
QV_CASE_NAMES(IgnoreRuleFault, untrustedFolder, untrusted, unreadable, undecodable, busy, notWritten, notFound,
              invalidPath)

struct IgnoreRuleError {
  IgnoreRuleFault fault;
  FilePath file;      ///< the rules' file, or the folder that is not trusted
  PosixError reason;  ///< the system's own, where it gave one

  bool operator==(const IgnoreRuleError&) const = default;
};

/// "ignore.error." and the name of the case.
std::string messageKey(IgnoreRuleFault fault);

/// The ignore rules, kept in "ignored-paths.json" in the application-support folder.
///
/// Every change reads the file anew under the lock "ignored-paths.json.lock" beside it, and replaces it as a whole. All
/// calls wait for the disk, none for another process. Reading makes nothing; the first `add` makes the folder, with
/// permissions 0700. A file that cannot be read, trusted or decoded makes every call fail and stays untouched; so does
/// the old file when the new one cannot be written, or would hold more than 4 MiB.
class IgnoreRuleStore {
 public:
  IgnoreRuleStore(FileSystem& fileSystem, RandomSource& random, const FilePath& applicationSupport);

  /// All rules in the order they were made; none when the file is missing.
  Outcome<std::vector<IgnoreRule>, IgnoreRuleError> load();

  /// Adds a rule for an absolute path, which need not exist. A path that already has a rule of its own gets that one
  /// back.
  Outcome<IgnoreRule, IgnoreRuleError> add(const FilePath& path, std::optional<std::string> application = std::nullopt);

  /// Takes the rule away whose identifier, path or canonical path this text is, and returns it.
  Outcome<IgnoreRule, IgnoreRuleError> remove(std::string_view pathOrIdentifier);

 private:
  std::unexpected<IgnoreRuleError> refused(IgnoreRuleFault fault, PosixError reason = {}) const;
  std::unexpected<IgnoreRuleError> refusedFolder(IgnoreRuleFault fault, PosixError reason) const;
  Outcome<FileDescriptor, IgnoreRuleError> locked(int folder);
  Outcome<std::vector<IgnoreRule>, IgnoreRuleError> read(int folder);
  Outcome<void, IgnoreRuleError> write(int folder, const std::vector<IgnoreRule>& rules);

  FileSystem& fileSystem_;
  RandomSource& random_;
  FilePath fileURL_;
};

}  // namespace quorvane
