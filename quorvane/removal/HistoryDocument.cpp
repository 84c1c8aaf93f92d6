#include "quorvane/removal/HistoryDocument.h"

#include "quorvane/base/Assert.h"
#include "quorvane/base/JsonText.h"
#include "quorvane/removal/HistoryJson.h"

#include <algorithm>
#include <iterator>
#include <ranges>

namespace quorvane {

namespace {

constexpr std::string_view opening = "[\n  ", separator = ",\n  ", closing = "\n]\n", none = "[]\n";

/// The text of an entry as it stands in the array, one level in and with another behind it.
std::string encoded(const CleaningHistoryEntry& entry) {
  constexpr std::size_t usualLength = 1500;
  std::string text;
  text.reserve(usualLength);
  appendJson(text, entry, 1);
  return text += separator;
}

/// Takes the elements of an array one by one out of its text, without reading them: each has to prove itself what it is
/// to the parser. What stands around and between them is checked here.
class ElementSplitter {
 public:
  explicit ElementSplitter(std::string_view text) : rest_(text) {}

  /// Whether the text is an array; to be called first.
  bool enter() {
    skipBlanks();
    if (!take('[')) return false;
    skipBlanks();
    isAtEnd_ = take(']');
    return true;
  }

  /// The text of the next element; nothing behind the last one, or where the array is cut off.
  std::optional<std::string_view> next() {
    if (isAtEnd_) return std::nullopt;
    const std::size_t length = lengthOfElement();
    const bool isCutOff = length == rest_.size() || rest_[length] == '}';
    if (isCutOff) return std::nullopt;
    std::string_view element = rest_.substr(0, length);
    isAtEnd_ = rest_[length] == ']';
    rest_.remove_prefix(length + 1);
    skipBlanks();
    while (!element.empty() && isBlank(element.back())) element.remove_suffix(1);
    return element;
  }

  /// Whether the array ended, and the text with it.
  bool isComplete() {
    skipBlanks();
    return isAtEnd_ && rest_.empty();
  }

 private:
  static bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }

  void skipBlanks() {
    while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
  }

  bool take(char wanted) {
    if (!rest_.starts_with(wanted)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// Up to the comma or bracket that ends the element; all that is left when there is none.
  std::size_t lengthOfElement() const {
    std::size_t depth = 0;
    for (std::size_t i = 0; i < rest_.size(); ++i) {
      switch (rest_[i]) {
        case '"': i = endOfString(i); break;
        case '{':
        case '[': ++depth; break;
        case ',':
          if (depth == 0) return i;
          break;
        case ']':
        case '}':
          if (depth == 0) return i;
          --depth;
          break;
        default: break;
      }
    }
    return rest_.size();
  }

  std::size_t endOfString(std::size_t start) const {
    std::size_t end = rest_.find_first_of("\"\\", start + 1);
    while (end < rest_.size() && rest_[end] == '\\') end = rest_.find_first_of("\"\\", end + 2);
    return std::min(end, rest_.size());
  }

  std::string_view rest_;
  bool isAtEnd_ = false;
};

}  // namespace

Outcome<HistoryDocument, JsonError> HistoryDocument::decode(std::string_view text) {
  HistoryDocument document;
  ElementSplitter splitter(text);
  if (!splitter.enter()) return failure(JsonError{JsonFault::malformed, {}});
  while (const auto element = splitter.next()) {
    auto entry = recordFromText<CleaningHistoryEntry>(*element);
    const std::string place = std::to_string(document.entries_.size());
    if (!entry) return failure(json::below(place, entry.error()));
    const auto serial = static_cast<std::int64_t>(document.entries_.size());
    if (!document.takeIdentifiers(*entry, serial)) return failure(JsonError{JsonFault::malformed, place});
    document.serials_.push_back(serial);
    document.entries_.push_back(*std::move(entry));
    std::string& kept = document.texts_.emplace_back();
    kept.reserve(element->size() + separator.size());
    kept.append(*element).append(separator);
  }
  if (!splitter.isComplete()) return failure(JsonError{JsonFault::malformed, {}});
  return document;
}

/// Whether no identifier of the entry names anything else; only a receipt and its item share one.
bool HistoryDocument::takeIdentifiers(const CleaningHistoryEntry& entry, std::int64_t serial) {
  const bool isItsOwn = entry.items.size() == 1 && entry.items.front().id == entry.id;
  if (!serialOf_.emplace(entry.id, serial).second) return false;
  return isItsOwn || std::ranges::all_of(entry.items, [&](const CleaningHistoryItem& item) {
           return serialOf_.emplace(item.id, serial).second;
         });
}

const CleaningHistoryEntry* HistoryDocument::find(const Uuid& entryOrItem) const {
  return knows(entryOrItem) ? &entries_[placeHolding(entryOrItem)] : nullptr;
}

bool HistoryDocument::holdsEntry(const Uuid& entry) const {
  const CleaningHistoryEntry* const found = find(entry);
  return found != nullptr && found->id == entry;
}

void HistoryDocument::insertFront(std::vector<CleaningHistoryEntry> entries) {
  for (CleaningHistoryEntry& entry : std::views::reverse(entries)) {
    serials_.push_front(serials_.empty() ? 0 : serials_.front() - 1);
    takeIdentifiers(entry, serials_.front());
    texts_.push_front(encoded(entry));
    entries_.push_front(std::move(entry));
  }
}

void HistoryDocument::replace(CleaningHistoryEntry entry) {
  const std::size_t place = placeOf(entry.id);  // an entry keeps its items, and so their identifiers
  texts_[place] = encoded(entry);
  entries_[place] = std::move(entry);
}

void HistoryDocument::erase(const Uuid& entry) {
  const std::size_t place = placeOf(entry);
  for (const CleaningHistoryItem& item : entries_[place].items) serialOf_.erase(item.id);
  serialOf_.erase(entry);
  const auto offset = static_cast<std::ptrdiff_t>(place);
  serials_.erase(serials_.begin() + offset);
  texts_.erase(texts_.begin() + offset);
  entries_.erase(entries_.begin() + offset);
}

std::size_t HistoryDocument::placeHolding(const Uuid& entryOrItem) const {
  const auto serial = std::ranges::lower_bound(serials_, serialOf_.at(entryOrItem));
  return static_cast<std::size_t>(serial - serials_.begin());
}

std::size_t HistoryDocument::placeOf(const Uuid& entry) const {
  require(holdsEntry(entry), "an entry that is changed is in the history");
  return placeHolding(entry);
}

std::vector<std::string_view> HistoryDocument::pieces() const {
  if (texts_.empty()) return {none};
  std::vector<std::string_view> pieces;
  pieces.reserve(texts_.size() + 2);
  pieces.push_back(opening);
  pieces.insert(pieces.end(), texts_.begin(), texts_.end());
  pieces.back().remove_suffix(separator.size());
  pieces.push_back(closing);
  return pieces;
}

}  // namespace quorvane
