#include "quorvane/base/FilePath.h"

#include "quorvane/base/Hex.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::string_view urlScheme = "file://";

bool standsForItselfInUrl(char c) {
  constexpr std::string_view others = "/-._~!$&'()*+,;=:@";
  const bool isAlphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return isAlphanumeric || others.contains(c);
}

std::optional<char> percentDecoded(std::string_view digits) {
  if (digits.size() < 2) return std::nullopt;
  const int high = hexDigitValue(digits[0]), low = hexDigitValue(digits[1]);
  if (high < 0 || low < 0 || (high == 0 && low == 0)) return std::nullopt;
  return static_cast<char>(high << 4 | low);
}

}  // namespace

FilePath joined(const FilePath& path, std::string_view relative) {
  if (relative.empty()) return path;
  std::string bytes = path.bytes;
  if (!bytes.ends_with('/')) bytes += '/';
  bytes += relative;
  return {std::move(bytes)};
}

std::string_view leafOf(const FilePath& path) {
  const std::string_view bytes = path.bytes;
  const std::size_t slash = bytes.rfind('/');
  if (slash == std::string_view::npos || bytes.size() == 1) return bytes;
  return bytes.substr(slash + 1);
}

FilePath parentOf(const FilePath& path) {
  const std::size_t slash = path.bytes.rfind('/');
  if (slash == std::string::npos || slash == 0) return {"/"};
  return {path.bytes.substr(0, slash)};
}

bool isAbsolute(std::string_view path) { return path.starts_with('/') && !path.contains('\0'); }

bool isOneComponent(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && !name.contains('/') && !name.contains('\0');
}

std::vector<std::string_view> componentsOf(std::string_view path) {
  std::vector<std::string_view> components;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    if (slash != 0) components.push_back(path.substr(0, slash));
    if (slash == std::string_view::npos) break;
    path.remove_prefix(slash + 1);
  }
  return components;
}

std::string_view extensionOf(std::string_view leaf) {
  const std::size_t dot = leaf.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return {};
  return leaf.substr(dot + 1);
}

FilePath standardised(const FilePath& absolute) {
  std::vector<std::string_view> kept;
  for (const std::string_view component : componentsOf(absolute.bytes)) {
    if (component == ".") continue;
    if (component != "..") {
      kept.push_back(component);
    } else if (!kept.empty()) {
      kept.pop_back();
    }
  }
  std::string bytes;
  for (const std::string_view component : kept) (bytes += '/') += component;
  return {bytes.empty() ? "/" : std::move(bytes)};
}

bool isBelow(const FilePath& path, const FilePath& folder) {
  if (folder.bytes == "/") return path.bytes.size() > 1;
  return path.bytes.size() > folder.bytes.size() + 1 && path.bytes.starts_with(folder.bytes) &&
         path.bytes[folder.bytes.size()] == '/';
}

bool isAtOrBelow(const FilePath& path, const FilePath& folder) { return path == folder || isBelow(path, folder); }

bool overlap(const FilePath& one, const FilePath& other) { return isAtOrBelow(one, other) || isBelow(other, one); }

/// Two searches, since other paths can stand between a folder and what lies below it: "/a", "/a-b", "/a/b".
bool holdsAtOrBelow(const std::vector<FilePath>& sorted, const FilePath& folder) {
  if (std::ranges::binary_search(sorted, folder)) return true;
  const FilePath below{folder.bytes == "/" ? folder.bytes : folder.bytes + "/"};
  const auto next = std::ranges::lower_bound(sorted, below);
  return next != sorted.end() && next->bytes.starts_with(below.bytes);
}

std::string_view relativeTo(const FilePath& folder, const FilePath& path) {
  std::string_view rest = std::string_view(path.bytes).substr(folder.bytes.size());
  if (rest.starts_with('/')) rest.remove_prefix(1);
  return rest;
}

std::string fileUrlText(const FilePath& path) {
  std::string text(urlScheme);
  for (const char c : path.bytes) {
    if (standsForItselfInUrl(c)) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'%', upperCaseHexDigits[byte >> 4], upperCaseHexDigits[byte & 0x0Fu]};
    }
  }
  return text;
}

std::optional<FilePath> pathFromFileUrl(std::string_view text) {
  if (!text.starts_with(urlScheme)) return std::nullopt;
  text.remove_prefix(urlScheme.size());
  if (!text.starts_with('/')) return std::nullopt;
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      const std::optional<char> byte = percentDecoded(text.substr(i + 1));
      if (!byte) return std::nullopt;
      bytes += *byte;
      i += 2;
    } else if (text[i] == '\0' || text[i] == '?' || text[i] == '#') {
      return std::nullopt;
    } else {
      bytes += text[i];
    }
  }
  while (bytes.size() > 1 && bytes.ends_with('/')) bytes.pop_back();
  return FilePath{std::move(bytes)};
}

}  // namespace quorvane
