#pragma once

#include "quorvane/app/messages/MessageCatalogue.h"
#include "quorvane/scan/locations/LocationTable.h"

#include <string>

namespace quorvane {

/// The table of the Linux layout for people, as Markdown: what is looked for, by category, how safe it is and why, and
/// how it comes back. Ends with a line break.
std::string rulesDocument(const LocationTable& table, const MessageCatalogue& catalogue);

}  // namespace quorvane
