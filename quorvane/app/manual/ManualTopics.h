#pragma once

#include "quorvane/app/cli/arguments/Arguments.h"

#include <span>
#include <string_view>

// What the manual says beyond the help, as keys of the message catalogue.

namespace quorvane {

/// Something that a person finds under its name.
struct ManualTopic {
  std::string_view name;
  std::string_view key;
};

/// The paragraphs about a command that has a page of its own; empty for the others.
std::string_view aboutKey(CommandName command);

std::span<const ManualTopic> exitStatusTopics();
std::span<const ManualTopic> environmentTopics();
std::span<const ManualTopic> fileTopics();

}  // namespace quorvane
