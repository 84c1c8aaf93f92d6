#include "quorvane/app/messages/MessageCatalogue.h"

#include "quorvane/app/messages/ByteFormat.h"
#include "quorvane/base/Assert.h"
#include "quorvane/base/Json.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <set>

namespace quorvane {

extern const std::string_view embeddedEnglishMessages;

namespace {

using Texts = std::map<std::string, std::string, std::less<>>;

constexpr std::string_view opening = "{{", closing = "}}";
constexpr std::string_view oneSuffix = "_one", otherSuffix = "_other";

bool isWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isKey(std::string_view key) {
  return !key.empty() && std::ranges::all_of(key, [](char c) { return isWordCharacter(c) || c == '.'; });
}

// Hands over the parts of a text in turn: `plain` the pieces outside of placeholders, `placeholder` the names. False
// where the braces do not match.
template <class Plain, class Placeholder>
bool forEachPart(std::string_view text, Plain plain, Placeholder placeholder) {
  while (true) {
    const std::size_t start = text.find(opening);
    const std::string_view before = text.substr(0, start);
    if (before.contains(closing)) return false;
    plain(before);
    if (start == std::string_view::npos) return true;
    text.remove_prefix(start + opening.size());
    const std::size_t end = text.find(closing);
    if (end == std::string_view::npos) return false;
    const std::string_view name = text.substr(0, end);
    if (name.empty() || !std::ranges::all_of(name, isWordCharacter)) return false;
    placeholder(name);
    text.remove_prefix(end + closing.size());
  }
}

bool hasSoundPlaceholders(std::string_view text) {
  return forEachPart(
      text, [](std::string_view) {}, [](std::string_view) {});
}

bool hasControlCharacter(std::string_view text) {
  return std::ranges::any_of(text, [](char c) { return (c >= '\0' && c < ' ' && c != '\n') || c == '\x7F'; });
}

std::unexpected<CatalogueError> refused(CatalogueFault fault, std::string_view key) {
  return failure(CatalogueError{fault, std::string(key)});
}

Outcome<Json, CatalogueError> flatObject(std::string_view text) {
  std::set<std::string> seen;
  std::optional<std::string> twice;
  const auto watch = [&](int depth, Json::parse_event_t event, Json& parsed) {
    if (event == Json::parse_event_t::key && depth == 1 && !seen.insert(parsed.get<std::string>()).second)
      twice = parsed.get<std::string>();
    return true;
  };
  Json json = Json::parse(text, watch, /*allow_exceptions=*/false);
  if (json.is_discarded() || !json.is_object()) return refused(CatalogueFault::malformed, {});
  if (twice) return refused(CatalogueFault::duplicateKey, *twice);
  return json;
}

// Both forms of a plural have to be there.
std::optional<std::string> halfPlural(const Texts& texts) {
  for (const auto& [key, text] : texts) {
    for (const auto& [mine, others] : {std::pair(oneSuffix, otherSuffix), std::pair(otherSuffix, oneSuffix)}) {
      if (!key.ends_with(mine)) continue;
      if (!texts.contains(key.substr(0, key.size() - mine.size()) + std::string(others))) return key;
    }
  }
  return std::nullopt;
}

const MessageValue* argumentNamed(const Message& message, std::string_view name) {
  const auto found = std::ranges::find(message.arguments, name, &MessageArgument::name);
  return found == message.arguments.end() ? nullptr : &found->value;
}

std::string localDateText(Date date) {
  const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count();
  std::tm local{};
  if (::localtime_r(&seconds, &local) == nullptr) return isoText(date);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                     local.tm_hour, local.tm_min);
}

template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};

}  // namespace

MessageCatalogue MessageCatalogue::english() {
  auto catalogue = parsed(embeddedEnglishMessages);
  require(catalogue.has_value(), "the built-in message catalogue is malformed");
  return *std::move(catalogue);
}

Outcome<MessageCatalogue, CatalogueError> MessageCatalogue::parsed(std::string_view text) {
  const auto json = flatObject(text);
  if (!json) return failure(json.error());
  MessageCatalogue catalogue;
  for (const auto& [key, value] : json->items()) {
    if (!isKey(key)) return refused(CatalogueFault::badKey, key);
    if (!value.is_string()) return refused(CatalogueFault::notText, key);
    const auto& content = value.get_ref<const std::string&>();
    if (hasControlCharacter(content)) return refused(CatalogueFault::malformed, key);
    if (!hasSoundPlaceholders(content)) return refused(CatalogueFault::brokenPlaceholder, key);
    catalogue.texts_.emplace(key, content);
  }
  if (const auto key = halfPlural(catalogue.texts_)) return refused(CatalogueFault::incompletePlural, *key);
  return catalogue;
}

std::string MessageCatalogue::text(std::string_view key) const { return text(Message{std::string(key), {}}); }

std::string MessageCatalogue::text(const Message& message, const MessageStyle& style) const {
  const std::string* raw = templateOf(message);
  if (raw == nullptr) return harmlessText(message.key, style.characters);
  std::string result;
  const auto fill = [&](std::string_view name) {
    const MessageValue* value = argumentNamed(message, name);
    result += value != nullptr ? valueText(*value, style) : fmt::format("{}{}{}", opening, name, closing);
  };
  forEachPart(
      *raw, [&](std::string_view plain) { result += plain; }, fill);
  return result;
}

std::string MessageCatalogue::pathText(const FilePath& path, const MessageStyle& style) {
  if (!style.home || style.home->bytes == "/" || !isAtOrBelow(path, *style.home))
    return harmlessText(path.bytes, style.characters);
  return harmlessText("~" + path.bytes.substr(style.home->bytes.size()), style.characters);
}

const std::string* MessageCatalogue::templateOf(const Message& message) const {
  std::string key = message.key;
  const MessageValue* count = argumentNamed(message, "count");
  if (count != nullptr && std::holds_alternative<std::int64_t>(*count)) {
    const std::string form = key + std::string(std::get<std::int64_t>(*count) == 1 ? oneSuffix : otherSuffix);
    if (texts_.contains(form)) key = form;
  }
  const auto found = texts_.find(key);
  return found == texts_.end() ? nullptr : &found->second;
}

std::string MessageCatalogue::valueText(const MessageValue& value, const MessageStyle& style) const {
  return std::visit(Overloaded{[&](const std::string& plain) { return harmlessText(plain, style.characters); },
                               [](std::int64_t number) { return NumberFormat::text(number); },
                               [&](const FilePath& path) { return pathText(path, style); },
                               [this](const ByteCount& amount) { return ByteFormat::text(*this, amount.bytes); },
                               [](const Date& date) { return localDateText(date); },
                               [this](const MessageKey& nested) { return text(nested.key); },
                               [&](const MessageList& list) { return listText(list, style); }},
                    value);
}

std::string MessageCatalogue::listText(const MessageList& list, const MessageStyle& style) const {
  std::string result;
  for (const std::string& word : list.texts)
    result += (result.empty() ? "" : text("list.separator")) + harmlessText(word, style.characters);
  return result;
}

}  // namespace quorvane
