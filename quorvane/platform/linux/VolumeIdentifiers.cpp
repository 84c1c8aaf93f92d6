#include "quorvane/platform/linux/VolumeIdentifiers.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::uint32_t fuseType = 0x65735546;

// The magic numbers of statfs(2).
constexpr std::uint32_t networkTypes[] = {
    0x00006969,  // NFS
    0x0000517B,  // SMB
    0xFF534D42,  // CIFS
    0xFE534D42,  // SMB 2 and 3
    0x0000564C,  // NCP
    0x73757245,  // Coda
    0x5346414F,  // AFS
    0x6B414653,  // AFS of the kernel
    0x01021997,  // 9P
    0x00C36400,  // Ceph
    0x0BD00BD0,  // Lustre
    0x47504653,  // GPFS
    0x7461636F,  // OCFS2
    0x01161970,  // GFS2
};

/// The byte of a number that stands at `place`, counted from its most significant end.
constexpr std::uint8_t byteAt(std::uint64_t number, unsigned place, unsigned width) {
  return static_cast<std::uint8_t>(number >> (8 * (width - 1 - place)));
}

}  // namespace

Uuid derivedVolumeUuid(std::uint32_t fileSystemType, std::array<std::int32_t, 2> fileSystemID) {
  constexpr std::uint8_t version = 0x80, variant = 0x80;
  const std::uint64_t identifier =
      std::uint64_t{static_cast<std::uint32_t>(fileSystemID[0])} << 32 | static_cast<std::uint32_t>(fileSystemID[1]);
  Uuid uuid;
  for (unsigned i = 0; i < 4; ++i) uuid.bytes[i] = byteAt(fileSystemType, i, 4);
  uuid.bytes[6] = version;
  uuid.bytes[7] = byteAt(identifier, 0, 8);
  uuid.bytes[8] = variant;
  for (unsigned i = 1; i < 8; ++i) uuid.bytes[8 + i] = byteAt(identifier, i, 8);
  return uuid;
}

bool isLocalFileSystem(std::uint32_t fileSystemType, bool isOnBlockDevice) {
  if (fileSystemType == fuseType) return isOnBlockDevice;
  return std::ranges::find(networkTypes, fileSystemType) == std::end(networkTypes);
}

}  // namespace quorvane
