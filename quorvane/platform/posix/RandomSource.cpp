#include "quorvane/platform/RandomSource.h"

#include "quorvane/base/Assert.h"

#include <algorithm>
#include <array>

#include <sys/random.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr std::size_t mostBytesACall = 256;  // what getentropy gives at once

}  // namespace

Uuid RandomSource::uuid() {
  std::array<std::uint8_t, 16> random{};
  fill(std::as_writable_bytes(std::span(random)));
  return Uuid::fromRandom(random);
}

void SystemRandomSource::fill(std::span<std::byte> bytes) {
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), mostBytesACall);
    require(::getentropy(bytes.data(), count) == 0, "the system gives no random bytes");
    bytes = bytes.subspan(count);
  }
}

}  // namespace quorvane
