#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/base/FilePath.h"

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quorvane {

/// An amount of storage.
struct ByteCount {
  std::int64_t bytes = 0;

  auto operator<=>(const ByteCount&) const = default;
};

/// The key of a text that is to be put inside another one.
struct MessageKey {
  std::string key;

  bool operator==(const MessageKey&) const = default;
};

/// Several words, each shown as a text is.
struct MessageList {
  std::vector<std::string> texts;

  bool operator==(const MessageList&) const = default;
};

/// What a placeholder of a text stands for; the message catalogue decides how each type is shown.
using MessageValue = std::variant<std::string, std::int64_t, FilePath, ByteCount, Date, MessageKey, MessageList>;

struct MessageArgument {
  std::string name;
  MessageValue value;

  bool operator==(const MessageArgument&) const = default;
};

/// Something to be told to a person, before it has words: a key of the message catalogue and what goes into its
/// placeholders. An integer named "count" chooses the plural form.
struct Message {
  std::string key;
  std::vector<MessageArgument> arguments;

  bool operator==(const Message&) const = default;
};

}  // namespace quorvane
