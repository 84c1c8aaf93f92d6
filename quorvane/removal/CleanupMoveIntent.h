#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/core/AdministratorMoveTerminalState.h"
#include "quorvane/core/FileIdentity.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

/// Pins the Trash folder that a move went into.
struct CleanupDirectoryAnchor {
  FilePath originalPath;  ///< standardised
  FileIdentity identity;
  std::int32_t fileSystemID0 = 0;  ///< the two words of the volume's file-system ID
  std::int32_t fileSystemID1 = 0;
  std::string volumeUUID;
  std::uint32_t ownerUID = 0;

  bool operator==(const CleanupDirectoryAnchor&) const = default;
};
QV_JSON_FIELDS(CleanupDirectoryAnchor, originalPath, identity, fileSystemID0, fileSystemID1, volumeUUID, ownerUID)

/// What a move is about to do, written down before it is done.
struct CleanupMoveIntent {
  FileIdentity identity;                                ///< of the item, taken immediately before
  FilePath trashDirectory;                              ///< links resolved
  std::optional<CleanupDirectoryAnchor> trashLocation;  ///< absent when it could not be taken
  std::optional<bool> externalMoveRequested;            ///< the administrator mover was asked to do it
  std::optional<AdministratorMoveTerminalState> externalMoveTerminalState;

  bool operator==(const CleanupMoveIntent&) const = default;
};
QV_JSON_FIELDS(CleanupMoveIntent, identity, trashDirectory, trashLocation, externalMoveRequested,
               externalMoveTerminalState)

}  // namespace quorvane
