#pragma once

#include "quorvane/app/cli/OutputChannel.h"
#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/core/StorageSnapshot.h"

#include <string>

namespace quorvane {

/// How a volume is used, for people: one bar, and what each part of it stands for.
std::string storagePicture(const StorageSnapshot& storage, const MessageCatalogue& catalogue, const FilePath& home,
                           const TextStyle& style);

}  // namespace quorvane
