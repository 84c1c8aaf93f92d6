#pragma once

#include "quorvane/base/CaseNames.h"

#include <string_view>

namespace quorvane {

/// What kind of thing a found item is. The order is the one of display and grouping.
enum class ScanCategory {
  applicationCache,
  browserCache,
  developerCache,
  aiWorktree,
  logs,
  installers,
  mailDownload,
  applicationLeftover,
  deviceBackup,
};
QV_CASE_NAMES(ScanCategory, applicationCache, browserCache, developerCache, aiWorktree, logs, installers, mailDownload,
              applicationLeftover, deviceBackup)

/// The message key of the category's title; two of them do not follow the name of their case.
std::string_view titleKey(ScanCategory category);

/// The name of the symbol that stands for the category in a desktop.
std::string_view symbolName(ScanCategory category);

}  // namespace quorvane
