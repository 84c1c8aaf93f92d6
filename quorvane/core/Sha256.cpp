#include "quorvane/core/Sha256.h"

#include "quorvane/base/Assert.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace quorvane {

namespace {

/// The library's own digest: no file of the system may put another in its place, and none has to be read at each start.
EVP_MD* fetchedAlgorithm() {
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
  return EVP_MD_fetch(nullptr, "SHA256", nullptr);
}

}  // namespace

struct Sha256::Context {
  // Fetched once: looking the algorithm up again for every digest costs more than a small digest itself.
  EVP_MD* algorithm = fetchedAlgorithm();
  EVP_MD_CTX* state = EVP_MD_CTX_new();

  void begin() {
    require(algorithm && state && EVP_DigestInit_ex2(state, algorithm, nullptr) == 1, "SHA-256 is not to be had");
  }
};

Sha256::Sha256() : context_(std::make_unique<Context>()) { context_->begin(); }

Sha256::~Sha256() {
  EVP_MD_CTX_free(context_->state);
  EVP_MD_free(context_->algorithm);
}

void Sha256::add(std::string_view bytes) {
  require(EVP_DigestUpdate(context_->state, bytes.data(), bytes.size()) == 1, "SHA-256 failed");
}

void Sha256::add(std::span<const std::uint8_t> bytes) {
  require(EVP_DigestUpdate(context_->state, bytes.data(), bytes.size()) == 1, "SHA-256 failed");
}

Sha256Digest Sha256::finish() {
  Sha256Digest digest{};
  require(EVP_DigestFinal_ex(context_->state, digest.data(), nullptr) == 1, "SHA-256 failed");
  context_->begin();
  return digest;
}

std::string hexText(const Sha256Digest& digest) {
  constexpr std::string_view hex = "0123456789abcdef";
  std::string text;
  text.reserve(2 * digest.size());
  for (const std::uint8_t byte : digest) text += {hex[byte >> 4], hex[byte & 0x0Fu]};
  return text;
}

}  // namespace quorvane
