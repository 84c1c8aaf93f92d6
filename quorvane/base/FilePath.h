#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// A path as the file system has it: bytes without NUL, in no particular encoding.
///
/// In JSON a path is its plain text; one that is not valid UTF-8 is a `file://` URL instead. The two cannot be confused
/// since a plain absolute path starts with "/".
struct FilePath {
  std::string bytes;

  auto operator<=>(const FilePath&) const = default;
};

/// A location. The same bytes as a path; in JSON always a `file://` URL, percent-encoded, without a trailing slash.
struct FileUrl {
  FilePath path;

  auto operator<=>(const FileUrl&) const = default;
};

/// `path` + "/" + `relative`, with exactly one slash between; `path` itself when `relative` is empty.
FilePath joined(const FilePath& path, std::string_view relative);

/// The last component; "/" for the root.
std::string_view leafOf(const FilePath& path);

/// The path without its last component; the root for the root and for a path of one component.
FilePath parentOf(const FilePath& path);

/// Whether it can be a path from the root: begins with a slash and has no NUL.
bool isAbsolute(std::string_view path);

/// Whether it can be a name in a folder: not empty, neither "." nor "..", without a slash and without a NUL.
bool isOneComponent(std::string_view name);

/// The components between the slashes; empty ones are passed over.
std::vector<std::string_view> componentsOf(std::string_view path);

/// The part of the leaf behind its last dot, as it is; empty without one, or when the dot is first or last.
std::string_view extensionOf(std::string_view leaf);

/// The absolute path without empty and "." components and without a trailing slash, each ".." taken together with the
/// component before it. Looks at no disk: links stay what they are.
FilePath standardised(const FilePath& absolute);

/// Whether `path` lies strictly below `folder`, compared by whole components. Both standardised.
bool isBelow(const FilePath& path, const FilePath& folder);

/// Whether `path` is `folder` or lies below it. Both standardised.
bool isAtOrBelow(const FilePath& path, const FilePath& folder);

/// Whether one of two standardised paths is the other, or lies below it.
bool overlap(const FilePath& one, const FilePath& other);

/// Whether sorted paths hold one at or below `folder`. All standardised; takes a few comparisons.
bool holdsAtOrBelow(const std::vector<FilePath>& sorted, const FilePath& folder);

/// What lies between `folder` and a path at or below it, without slashes at its ends.
std::string_view relativeTo(const FilePath& folder, const FilePath& path);

/// "file://" and the path with every byte percent-encoded that a URL path does not hold as it is (RFC 3986).
std::string fileUrlText(const FilePath& path);

/// Reads a `file://` URL without host, query or fragment, and without the slashes at its end; nothing for other text, a
/// relative path, or a NUL.
std::optional<FilePath> pathFromFileUrl(std::string_view text);

}  // namespace quorvane
