#pragma once

#include "quorvane/platform/PosixError.h"
#include "quorvane/platform/posix/Retry.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include <sys/syscall.h>
#include <unistd.h>

namespace quorvane {

inline constexpr std::size_t directoryBlockSize = 128 * 1024;

/// One block for each thread that lists folders, kept until the thread ends.
inline std::byte* directoryBlock() {
  thread_local const std::unique_ptr<std::byte[]> block(new std::byte[directoryBlockSize]);
  return block.get();
}

/// Calls `visit(name, kind)` for the records of one block, "." and ".." left out, until it answers false; whether it
/// never did. `kind` is a DT_ number, the name ends with a NUL.
template <class Visit>
bool visitDirectoryRecords(const std::byte* block, std::size_t size, Visit& visit) {
  // Where getdents64 puts the parts of a record; the C library declares none.
  constexpr std::size_t lengthOffset = 16, kindOffset = 18, nameOffset = 19;
  for (std::size_t at = 0; at < size;) {
    const std::byte* const record = block + at;
    std::uint16_t length = 0;
    std::memcpy(&length, record + lengthOffset, sizeof length);
    at += length;
    const char* const name = reinterpret_cast<const char*>(record + nameOffset);
    const bool isFolderItself = name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
    if (!isFolderItself && !visit(name, std::to_integer<unsigned char>(record[kindOffset]))) return false;
  }
  return true;
}

/// Visits the records of an open folder, from its beginning, until the visitor answers false. The visitor must not list
/// another folder: the block of its thread is in use.
template <class Visit>
Outcome<void, PosixError> visitDirectory(int folder, Visit visit) {
  std::byte* const block = directoryBlock();
  if (::lseek(folder, 0, SEEK_SET) != 0) return failure(lastPosixError());
  for (;;) {
    const long size = retried([&] { return ::syscall(SYS_getdents64, folder, block, directoryBlockSize); });
    if (size < 0) return failure(lastPosixError());
    if (size == 0) return {};
    if (!visitDirectoryRecords(block, static_cast<std::size_t>(size), visit)) return {};
  }
}

}  // namespace quorvane
