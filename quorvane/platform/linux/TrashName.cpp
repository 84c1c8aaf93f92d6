#include "quorvane/platform/linux/TrashName.h"

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/platform/linux/TrashInfo.h"

namespace quorvane {

namespace {

constexpr std::size_t longestName = 255 - trashInfoSuffix.size();
constexpr std::size_t longestExtension = 32;

std::string pieceFor(const Uuid& move, unsigned attempt) {
  if (attempt == 1) return {};
  if (attempt <= numberedTrashNames) return '.' + std::to_string(attempt);
  return '.' + uuidText(move) + '-' + std::to_string(attempt - numberedTrashNames);
}

std::string_view cut(std::string_view text, std::size_t length) {
  if (text.size() <= length) return text;
  const auto isInsideCharacter = [&] { return (static_cast<unsigned char>(text[length]) & 0xC0u) == 0x80; };
  if (isValidUtf8(text)) {
    while (length > 0 && isInsideCharacter()) --length;
  }
  return text.substr(0, length);
}

}  // namespace

std::string trashName(std::string_view name, const Uuid& move, unsigned attempt) {
  const std::string_view behindDot = extensionOf(name);
  const bool hasExtension = !behindDot.empty() && behindDot.size() < longestExtension;
  const std::string_view extension = hasExtension ? name.substr(name.size() - behindDot.size() - 1) : "";
  const std::string_view stem = name.substr(0, name.size() - extension.size());
  const std::string piece = pieceFor(move, attempt);
  std::string result(cut(stem, longestName - piece.size() - extension.size()));
  return result.append(piece).append(extension);
}

}  // namespace quorvane
