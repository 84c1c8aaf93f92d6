#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace quorvane {

using Sha256Digest = std::array<std::uint8_t, 32>;

/// Computes SHA-256 digests (FIPS 180-4), one after the other. Belongs to one thread.
class Sha256 {
 public:
  Sha256();
  ~Sha256();
  Sha256(const Sha256&) = delete;
  Sha256& operator=(const Sha256&) = delete;

  void add(std::string_view bytes);
  void add(std::span<const std::uint8_t> bytes);

  /// The digest of everything added since the last one.
  Sha256Digest finish();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

/// 64 lower-case hexadecimal digits.
std::string hexText(const Sha256Digest& digest);

}  // namespace quorvane
