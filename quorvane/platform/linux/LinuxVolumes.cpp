#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/platform/linux/MountInfo.h"
#include "quorvane/platform/linux/VolumeIdentifiers.h"
#include "quorvane/platform/posix/Retry.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <optional>

#include <linux/ioctl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

namespace quorvane {

namespace {

constexpr std::size_t longestMountInfo = 64 << 20;

/// What FS_IOC_GETFSUUID fills in; the headers of older systems declare neither.
struct FileSystemUuid {
  std::uint8_t length;
  std::uint8_t bytes[16];
};
constexpr unsigned long getFileSystemUuid = _IOR(0x15, 0, FileSystemUuid);

std::optional<Uuid> uuidFromFileSystem(int descriptor) {
  FileSystemUuid told{};
  Uuid uuid;
  if (::ioctl(descriptor, getFileSystemUuid, &told) != 0 || told.length != uuid.bytes.size()) return std::nullopt;
  std::ranges::copy(told.bytes, uuid.bytes.begin());
  if (uuid == Uuid{}) return std::nullopt;  // a file system that has none answers with zeros
  return uuid;
}

/// The UUID under which the system lists the block device of a file system.
std::optional<Uuid> uuidFromDeviceList(FileSystem& fileSystem, dev_t device) {
  const auto folder = fileSystem.openStartingFolder({"/dev/disk/by-uuid"});
  FolderListing listing;
  if (!folder || !fileSystem.list(folder->number(), listing)) return std::nullopt;
  for (const FolderEntry& entry : listing.entries()) {
    struct stat status {};
    const std::string name(listing.nameOf(entry));
    if (::fstatat(folder->number(), name.c_str(), &status, 0) != 0) continue;
    if (S_ISBLK(status.st_mode) && status.st_rdev == device) return uuidFromText(name);
  }
  return std::nullopt;
}

std::int64_t bytesOf(std::uint64_t blocks, std::uint64_t blockSize) {
  std::int64_t bytes = 0;
  if (__builtin_mul_overflow(blocks, blockSize, &bytes)) return std::numeric_limits<std::int64_t>::max();
  return bytes;
}

class LinuxVolumes final : public Volumes {
 public:
  Outcome<VolumeIdentity, PosixError> identity(int descriptor) override {
    struct statfs volume {};
    struct stat raw {};
    if (retried([&] { return ::fstatfs(descriptor, &volume); }) != 0 || ::fstat(descriptor, &raw) != 0)
      return failure(lastPosixError());
    std::optional<Uuid> uuid = uuidFromFileSystem(descriptor);
    if (!uuid) uuid = uuidFromDeviceList(*fileSystem_, raw.st_dev);

    const std::array<std::int32_t, 2> fileSystemID = {volume.f_fsid.__val[0], volume.f_fsid.__val[1]};
    if (!uuid) uuid = derivedVolumeUuid(static_cast<std::uint32_t>(volume.f_type), fileSystemID);
    return VolumeIdentity{fileSystemID, *uuid};
  }

  Outcome<VolumeCapacity, PosixError> capacity(const FilePath& path) override {
    struct statvfs volume {};
    if (retried([&] { return ::statvfs(path.bytes.c_str(), &volume); }) != 0) return failure(lastPosixError());
    const std::int64_t total = bytesOf(volume.f_blocks, volume.f_frsize);
    return VolumeCapacity{total, std::min(total, bytesOf(volume.f_bavail, volume.f_frsize))};
  }

  Outcome<std::vector<FilePath>, PosixError> mountPoints() override {
    const auto folder = fileSystem_->openStartingFolder({"/proc/self"});
    if (!folder) return failure(folder.error());
    const auto file = fileSystem_->openFile(folder->number(), "mountinfo");
    if (!file) return failure(file.error());
    const auto text = readToEnd(*fileSystem_, file->number(), longestMountInfo);
    if (!text) return failure(text.error());
    auto points = mountPointsFromMountInfo(*text);
    if (!points) return failure(PosixError{EBADMSG});
    return std::move(*points);
  }

 private:
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

}  // namespace

std::unique_ptr<Volumes> makeSystemVolumes() { return std::make_unique<LinuxVolumes>(); }

}  // namespace quorvane
