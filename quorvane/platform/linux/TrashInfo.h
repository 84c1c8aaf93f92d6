#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/Uuid.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// What the name of an item's note adds to the name of the item.
inline constexpr std::string_view trashInfoSuffix = ".trashinfo";

/// The text of a note in the Trash as FreeDesktop.org describes it (version 1.0), with a line of our own that others
/// pass over. `path` is absolute, or relative to the top folder of the volume; `deletedAt` is told in local time.
std::string trashInfoText(std::string_view path, Date deletedAt, const Uuid& move);

/// What we want to know of a note, whoever wrote it.
struct TrashInfo {
  std::string path{};          ///< decoded, never empty; absolute or relative
  std::optional<Uuid> move{};  ///< in notes of this program

  bool operator==(const TrashInfo&) const = default;
};

/// Reads a note; nothing when it was not completed: without its heading, or without a whole line that tells the path.
std::optional<TrashInfo> trashInfoFromText(std::string_view text);

}  // namespace quorvane
