#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/core/ScanCategory.h"
#include "quorvane/platform/ApplicationFolders.h"
#include "quorvane/platform/GitPrograms.h"

#include <string>
#include <vector>

namespace quorvane {

/// Which table of locations describes a home.
enum class HomeLayout { linux, macos };
QV_CASE_NAMES(HomeLayout, linux, macos)

/// Whose home is scanned, and how it is laid out.
struct ScanSettings {
  ApplicationFolders folders;
  HomeLayout layout = HomeLayout::linux;
  std::vector<FilePath> applicationRoots;  ///< folders of installed applications, for the storage summary
  GitPrograms gitPrograms;
};

/// What one scan is to look for.
struct ScanRequest {
  std::vector<ScanCategory> categories;  ///< none means all

  bool asksFor(ScanCategory category) const;
};

}  // namespace quorvane
