#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/FileDescriptor.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A folder of a test's own below the system's folder for temporary files. It is removed at the end with all it holds,
/// unreadable folders and trees of any depth included. Ends the test program rather than touch anything else.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  /// Absolute, with all links resolved.
  const FilePath& path() const { return path_; }
  int descriptor() const { return folder_.number(); }
  FilePath at(std::string_view relative) const { return joined(path_, relative); }

  /// Makes a file with this content; missing folders above it are made too.
  void write(std::string_view relative, std::string_view content) const;
  void makeFolders(std::string_view relative) const;
  void makeLink(std::string_view relative, const std::string& target) const;
  /// The content of a file; ends the test program if there is none.
  std::string read(std::string_view relative) const;
  bool holds(std::string_view relative) const;
  /// The names in a folder, sorted; none where there is no folder.
  std::vector<std::string> names(std::string_view relative) const;

 private:
  FilePath path_;
  FileDescriptor folder_;
};

}  // namespace quorvane
