#pragma once

#include "quorvane/app/messages/HarmlessText.h"
#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Message.h"
#include "quorvane/base/Outcome.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

/// Why a catalogue was refused.
enum class CatalogueFault {
  malformed,          ///< not a JSON object, or with control characters in a text
  notText,            ///< a value is something else than a text
  duplicateKey,       ///< a key stands there twice
  badKey,             ///< a key holds something else than letters, digits, dots and underscores
  brokenPlaceholder,  ///< "{{" without a name and "}}" behind it, or "}}" alone
  incompletePlural,   ///< one of the two plural forms is missing
};
QV_CASE_NAMES(CatalogueFault, malformed, notText, duplicateKey, badKey, brokenPlaceholder, incompletePlural)

struct CatalogueError {
  CatalogueFault fault;
  std::string key;  ///< where, as far as that is known

  bool operator==(const CatalogueError&) const = default;
};

/// How the values inside a text are shown.
struct MessageStyle {
  std::optional<FilePath> home;  ///< given, paths in it begin with "~"
  CharacterSet characters = CharacterSet::unicode;
};

/// All texts for people, by key.
///
/// Flat keys with dots in them, named placeholders "{{name}}", and plural forms "key_one" and "key_other" that the
/// argument "count" chooses between (the layout of i18next 4, key separator off). A catalogue never changes, so any
/// thread may use it.
class MessageCatalogue {
 public:
  /// The texts that come with the program.
  static MessageCatalogue english();

  static Outcome<MessageCatalogue, CatalogueError> parsed(std::string_view json);

  /// The text with its values in their places: whole numbers with thousands separated, amounts of storage by
  /// `ByteFormat`, dates in local time, texts and paths made harmless. A key that is not there is its own text; a
  /// placeholder without a value stays as it is.
  std::string text(const Message& message, const MessageStyle& style = {}) const;
  std::string text(std::string_view key) const;

  /// As a text holds it: harmless, with "~" for the home where the style asks for it.
  static std::string pathText(const FilePath& path, const MessageStyle& style);

  /// Every key with its raw text.
  const std::map<std::string, std::string, std::less<>>& texts() const { return texts_; }

 private:
  const std::string* templateOf(const Message& message) const;
  std::string valueText(const MessageValue& value, const MessageStyle& style) const;
  std::string listText(const MessageList& list, const MessageStyle& style) const;

  std::map<std::string, std::string, std::less<>> texts_;
};

}  // namespace quorvane
