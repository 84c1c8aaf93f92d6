#include "quorvane/core/ScanCategory.h"

#include <utility>

namespace quorvane {

std::string_view titleKey(ScanCategory category) {
  switch (category) {
    case ScanCategory::applicationCache: return "category.appCache";
    case ScanCategory::browserCache: return "category.browserCache";
    case ScanCategory::developerCache: return "category.developerCache";
    case ScanCategory::aiWorktree: return "category.aiWorktree";
    case ScanCategory::logs: return "category.logs";
    case ScanCategory::installers: return "category.installers";
    case ScanCategory::mailDownload: return "category.mailDownload";
    case ScanCategory::applicationLeftover: return "category.leftovers";
    case ScanCategory::deviceBackup: return "category.deviceBackup";
  }
  std::unreachable();
}

std::string_view symbolName(ScanCategory category) {
  switch (category) {
    case ScanCategory::applicationCache: return "shippingbox";
    case ScanCategory::browserCache: return "safari";
    case ScanCategory::developerCache: return "hammer";
    case ScanCategory::aiWorktree: return "arrow.triangle.branch";
    case ScanCategory::logs: return "doc.text.magnifyingglass";
    case ScanCategory::installers: return "externaldrive.badge.xmark";
    case ScanCategory::mailDownload: return "paperclip";
    case ScanCategory::applicationLeftover: return "app.dashed";
    case ScanCategory::deviceBackup: return "iphone";
  }
  std::unreachable();
}

}  // namespace quorvane
