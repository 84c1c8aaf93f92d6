#pragma once

#include "quorvane/platform/ApplicationFolders.h"
#include "quorvane/platform/Clock.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/GitPrograms.h"
#include "quorvane/platform/ProcessRunner.h"
#include "quorvane/platform/ProcessTable.h"
#include "quorvane/platform/RandomSource.h"
#include "quorvane/platform/SystemCounters.h"
#include "quorvane/platform/SystemProcesses.h"
#include "quorvane/platform/SystemSensors.h"
#include "quorvane/platform/Trash.h"
#include "quorvane/platform/Volumes.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

// Each operating system's folder gives these its own implementation.

namespace quorvane {

std::unique_ptr<FileSystem> makeSystemFileSystem();
std::unique_ptr<Volumes> makeSystemVolumes();
std::unique_ptr<ProcessTable> makeSystemProcessTable();
/// The Trash of whom the folders belong to. For folders that are confined to a home, only Trash folders inside of it.
std::unique_ptr<Trash> makeSystemTrash(FileSystem& fileSystem, RandomSource& random, const ApplicationFolders& folders);
std::unique_ptr<SystemCounters> makeSystemCounters();
std::unique_ptr<SystemSensors> makeSystemSensors();
std::unique_ptr<SystemProcesses> makeSystemProcesses(const Clock& clock, ProcessRunner& runner);
GitPrograms systemGitPrograms();
/// Where this system's packages put the Docker client.
std::vector<FilePath> systemDockerPlaces();
/// Of the user whose rights this process has.
std::uint32_t systemUser();

/// "linux" or "macos".
std::string_view systemName();

/// Lets this process hold as many descriptors at once as the system permits; children are started with the old limit.
void raiseDescriptorLimit();

/// Keeps freed memory for what is needed next, in one pool for all threads, as suits a process that works for moments
/// and ends. To be called before there are threads.
void keepFreedMemory();

}  // namespace quorvane
