#include "quorvane/platform/linux/VolumeIdentifiers.h"

namespace quorvane {

namespace {

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

}  // namespace quorvane
