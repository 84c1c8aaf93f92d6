#include "quorvane/base/Assert.h"
#include "quorvane/removal/HistoryDocument.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvane {
namespace {

std::string textOf(const HistoryDocument& document) {
  std::string text;
  for (const std::string_view piece : document.pieces()) text += piece;
  return text;
}

/// A history that was believed is written such that it is believed again and says the same, changed entries included.
void roundTrip(std::string_view text) {
  auto document = HistoryDocument::decode(text);
  if (!document) return;
  const auto again = HistoryDocument::decode(textOf(*document));
  require(again.has_value(), "a history that was written is read back");
  require(again->entries() == document->entries(), "a history keeps its meaning");
  const auto before = document->entries();
  for (const CleaningHistoryEntry& entry : before) {
    require(document->knows(entry.id), "an entry is known by its identifier");
    require(document->find(entry.id) != nullptr, "an entry is found by its identifier");
    document->replace(entry);
  }
  const auto replaced = HistoryDocument::decode(textOf(*document));
  require(replaced && replaced->entries() == before, "an entry that is written anew keeps its meaning");
}

}  // namespace
}  // namespace quorvane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quorvane::roundTrip({reinterpret_cast<const char*>(data), size});
  return 0;
}
