#pragma once

#include "quorvane/app/messages/MessageCatalogue.h"

#include <string>
#include <vector>

namespace quorvane {

struct ManualEdition {
  std::string version;
  std::string date;  ///< of the release, "2026-11-21"
};

/// A file of the manual, by its name in its folder.
struct ManualFile {
  std::string name;
  std::string text;
};

/// quorvane(1), and one page for each command; a command below another one is on that one's page.
std::vector<ManualFile> manualPages(const MessageCatalogue& catalogue, const ManualEdition& edition);

}  // namespace quorvane
