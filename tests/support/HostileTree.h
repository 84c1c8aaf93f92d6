#pragma once

#include "tests/support/TempFolder.h"

#include <cstdint>
#include <map>
#include <string>

namespace quorvane {

/// Makes a tree of everything that a file system permits: names with line breaks, control characters, bytes that are no
/// UTF-8 and 255 bytes; links to a folder outside, to nothing and in circles; hard links; a pipe, a socket and a file
/// of 1 TiB that is all hole. `hostileTreeEntries` entries, the root included.
void makeHostileTree(const TempFolder& folder, const std::string& root);
constexpr std::int64_t hostileTreeEntries = 16;

/// Makes a chain of folders, which may be far longer than any path may be, with one more folder aside now and then.
void makeDeepTree(const TempFolder& folder, const std::string& root, int depth);

/// What there is to tell of everything at and below a path, but when it was read or renamed: kind and permissions,
/// owner, inode and its links, size, time, extended attributes, where a link leads, and how the content begins. By the
/// path below, "" for the root itself.
using TreeListing = std::map<std::string, std::string>;
TreeListing listingOf(const FilePath& root);

}  // namespace quorvane
