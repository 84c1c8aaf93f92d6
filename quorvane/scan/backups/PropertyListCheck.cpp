#include "quorvane/scan/backups/PropertyListCheck.h"

#include "quorvane/base/Date.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane {

namespace {

constexpr std::uint64_t mostValues = 200'000;
constexpr std::uint64_t mostExpandedBytes = std::uint64_t{64} << 20;
constexpr std::uint64_t bytesPerValue = 160;  // what the parser takes for a value beyond its text

/// The offset table and the objects of a binary property list.
class BinaryObjects {
 public:
  explicit BinaryObjects(std::string_view bytes) : bytes_(bytes) {}

  bool areHarmless() { return readTrailer() && expansionOf(root_, deepestPropertyList).has_value(); }

 private:
  static constexpr std::size_t headerSize = 8;
  static constexpr std::size_t trailerSize = 32;

  /// What stands behind an object once all its references are copies. `levels` is 0 until it is known.
  struct Expansion {
    std::uint64_t bytes = 0;
    std::size_t levels = 0;
  };

  struct Object {
    unsigned kind = 0;
    std::uint64_t count = 0;   // of bytes, UTF-16 units or elements, by kind
    std::uint64_t offset = 0;  // of what follows the marker and the count
  };

  std::uint64_t number(std::uint64_t offset, std::uint64_t size) const {
    std::uint64_t value = 0;
    for (const char byte : bytes_.substr(offset, size)) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
  }

  bool readTrailer() {
    if (bytes_.size() < headerSize + trailerSize || !bytes_.starts_with("bplist00")) return false;
    const std::size_t trailer = bytes_.size() - trailerSize;
    offsetSize_ = number(trailer + 6, 1);
    referenceSize_ = number(trailer + 7, 1);
    const std::uint64_t count = number(trailer + 8, 8);
    root_ = number(trailer + 16, 8);
    table_ = number(trailer + 24, 8);
    if (offsetSize_ == 0 || offsetSize_ > 8 || referenceSize_ == 0 || referenceSize_ > 8) return false;
    if (count == 0 || count > mostValues || root_ >= count) return false;
    if (table_ < headerSize || table_ > trailer || count * offsetSize_ > trailer - table_) return false;
    expansions_.resize(count);
    isOpen_.resize(count);
    return true;
  }

  std::optional<Object> objectAt(std::uint64_t index) const {
    std::uint64_t offset = number(table_ + index * offsetSize_, offsetSize_);
    if (offset >= table_) return std::nullopt;
    const auto marker = static_cast<unsigned>(number(offset++, 1));
    Object object{marker >> 4, marker & 0xF, offset};
    const bool isCounted = object.kind >= 0x4 && object.kind != 0x8;
    if (isCounted && object.count == 0xF) {
      if (offset >= table_) return std::nullopt;
      const std::uint64_t exponent = number(offset, 1) & 0xF;
      if (number(offset, 1) >> 4 != 0x1 || exponent > 3 || (std::uint64_t{1} << exponent) > table_ - offset - 1)
        return std::nullopt;
      object.count = number(offset + 1, std::uint64_t{1} << exponent);
      object.offset = offset + 1 + (std::uint64_t{1} << exponent);
    }
    if (isCounted && object.count > table_ - object.offset) return std::nullopt;
    return object;
  }

  bool isNotANumber(const Object& date) const {
    return table_ - date.offset < 8 || std::isnan(std::bit_cast<double>(number(date.offset, 8)));
  }

  static std::uint64_t textBytes(const Object& object) {
    switch (object.kind) {
      case 0x4:
      case 0x5: return object.count;
      case 0x6: return object.count * 4;
      default: return 0;
    }
  }

  static std::uint64_t referencesOf(const Object& object) {
    switch (object.kind) {
      case 0xA:
      case 0xC: return object.count;
      case 0xD: return object.count * 2;
      default: return 0;
    }
  }

  /// Visits each object once; nothing when it may not be given to the parser.
  std::optional<Expansion> expansionOf(std::uint64_t index, std::size_t levelsLeft) {
    if (index >= expansions_.size() || isOpen_[index]) return std::nullopt;
    Expansion& known = expansions_[index];
    if (known.levels == 0) {
      isOpen_[index] = true;
      const auto found = expansionOfNew(index, levelsLeft);
      if (!found) return std::nullopt;
      known = *found;
      isOpen_[index] = false;
    }
    if (known.levels > levelsLeft) return std::nullopt;
    return known;
  }

  std::optional<Expansion> expansionOfNew(std::uint64_t index, std::size_t levelsLeft) {
    const auto object = objectAt(index);
    if (levelsLeft == 0 || !object || (object->kind == 0x3 && isNotANumber(*object))) return std::nullopt;
    Expansion sum{bytesPerValue + textBytes(*object), 1};
    const std::uint64_t references = referencesOf(*object);
    if (references > (table_ - object->offset) / referenceSize_) return std::nullopt;
    for (std::uint64_t i = 0; i < references; ++i) {
      const auto below = expansionOf(number(object->offset + i * referenceSize_, referenceSize_), levelsLeft - 1);
      if (!below) return std::nullopt;
      sum.bytes += below->bytes;
      sum.levels = std::max(sum.levels, below->levels + 1);
      if (sum.bytes > mostExpandedBytes) return std::nullopt;
    }
    return sum;
  }

  std::string_view bytes_;
  std::uint64_t offsetSize_ = 0;
  std::uint64_t referenceSize_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t table_ = 0;
  std::vector<Expansion> expansions_;
  std::vector<bool> isOpen_;
};

/// Goes through the tags of an XML property list without building anything.
///
/// The depth it counts is never below the real one, whatever the text does: behind the first comment or other special
/// tag of the body, closing tags could be a pretence and count no more.
class XmlTags {
 public:
  explicit XmlTags(std::string_view text) : rest_(text) {}

  bool areHarmless() {
    if (rest_.contains('\0') || !skipPrologue()) return false;
    while (!rest_.empty())
      if (!takeTag() || !takeText()) return false;
    return true;
  }

 private:
  static constexpr std::uint64_t mostUnescapingSteps = std::uint64_t{1} << 30;

  /// Leaves the first "<plist" and its attributes behind.
  bool skipPrologue() {
    const std::size_t body = rest_.find("<plist");
    if (body == std::string_view::npos) return false;
    for (std::size_t i = rest_.find('<'); i < body; i = rest_.find('<', i + 1))
      if (rest_[i + 1] != '?' && rest_[i + 1] != '!') return false;
    const std::size_t end = rest_.find('>', body);
    if (end == std::string_view::npos) return false;
    rest_.remove_prefix(end + 1);
    return takeText();
  }

  /// The text up to the next tag. Each entity in it makes the parser move all that follows.
  bool takeText() {
    const std::string_view text = rest_.substr(0, rest_.find('<'));
    rest_.remove_prefix(text.size());
    return static_cast<std::uint64_t>(std::ranges::count(text, '&')) * text.size() <= mostUnescapingSteps;
  }

  bool takeTag() {
    if (++tags_ > 2 * mostValues) return false;
    if (rest_.starts_with("<!") || rest_.starts_with("<?")) hasSpecialTags_ = true;
    if (!hasSpecialTags_ && !isPlainTag()) return false;
    if (rest_.starts_with("<date") && !isPlainDate()) return false;
    if (rest_.starts_with("<dict") || rest_.starts_with("<array")) ++depth_;
    if (!hasSpecialTags_ && depth_ > 0 && closesContainer()) --depth_;
    rest_.remove_prefix(1);
    return depth_ <= deepestPropertyList;
  }

  /// Letters alone, with a slash before or behind: no attribute whose quotes could hide a tag.
  bool isPlainTag() const {
    const std::string_view tag = rest_.substr(1, rest_.find('>') - 1);
    if (tag.size() == rest_.size() - 1 || tag.starts_with("plist")) return false;
    return tag.find_first_not_of("abcdefghijklmnopqrstuvwxyz/ \t\r\n") == std::string_view::npos;
  }

  bool closesContainer() const {
    const std::string_view tag = rest_.substr(0, rest_.find('>') + 1);
    return tag == "</dict>" || tag == "</array>" || tag == "<dict/>" || tag == "<array/>";
  }

  bool isPlainDate() const {
    constexpr std::string_view opening = "<date>", closing = "</date>";
    constexpr std::size_t length = std::string_view("2026-11-21T05:04:03Z").size();
    if (!rest_.starts_with(opening) || rest_.size() < opening.size() + length) return false;
    return rest_.substr(opening.size() + length).starts_with(closing) &&
           dateFromIsoText(rest_.substr(opening.size(), length)).has_value();
  }

  std::string_view rest_;
  std::uint64_t tags_ = 0;
  std::size_t depth_ = 0;
  bool hasSpecialTags_ = false;
};

}  // namespace

bool isHarmlessBinaryPropertyList(std::string_view bytes) { return BinaryObjects(bytes).areHarmless(); }

bool isHarmlessXmlPropertyList(std::string_view text) { return XmlTags(text).areHarmless(); }

}  // namespace quorvane
