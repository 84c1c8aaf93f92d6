#pragma once

#include "quorvane/base/Json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <limits>
#include <numeric>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

// Records written straight as text, for where many are written. Include it only in .cpp files, like Json.h.

namespace quorvane {

/// Appends exactly what `toJson(value).dump(2)` gives, without building the document in memory. Every line break is
/// followed by the blanks of so many levels more: the text then stands well within a document around it.
template <class T>
void appendJson(std::string& out, const T& value, std::size_t level = 0);

/// The text of a file or an answer that holds just this record: pretty-printed with sorted keys and a final line break.
template <class T>
std::string printedRecord(const T& value) {
  std::string text;
  appendJson(text, value);
  return text += '\n';
}

namespace json {

/// A record written member by member, rather than by a `toJson` of its own.
template <class T>
concept ListedRecord = requires(const T* record) {
  jsonFieldsOf(record);
};

/// In quotes, with whatever is not UTF-8 replaced.
void appendText(std::string& out, std::string_view text);

void appendPath(std::string& out, const FilePath& path);

/// A whole document, moved in by the level.
void appendDocument(std::string& out, const Json& json, std::size_t level);

/// The brackets around elements or members, and what goes between those.
class Enclosure {
 public:
  Enclosure(std::string& out, std::size_t level, char opening);

  /// To be called before each element.
  void next();

  void close(char closing);

 private:
  void breakLine(std::size_t level);

  std::string& out_;
  std::size_t level_;
  bool isEmpty_ = true;
};

template <class Record>
inline constexpr auto fieldsOf = jsonFieldsOf(static_cast<const Record*>(nullptr));

/// The places of the record's fields in the order of their names.
template <class Record>
inline constexpr auto sortedPlaces = [] {
  constexpr auto names = std::apply([](const auto&... field) { return std::array{field.name...}; }, fieldsOf<Record>);
  std::array<std::size_t, names.size()> places{};
  std::iota(places.begin(), places.end(), std::size_t{0});
  std::ranges::sort(places, {}, [&](std::size_t place) { return names[place]; });
  return places;
}();

template <class T>
void appendMember(std::string& out, Enclosure& members, std::string_view name, const T& value, std::size_t level) {
  members.next();
  ((out += '"') += name) += "\": ";
  appendJson(out, value, level);
}

template <class Record>
void appendRecord(std::string& out, const Record& record, std::size_t level) {
  Enclosure members(out, level, '{');
  const auto append = [&](const auto& field) {
    const auto& value = record.*field.member;
    if constexpr (IsOptional<std::decay_t<decltype(value)>>::value) {
      if (value) appendMember(out, members, field.name, *value, level + 1);
    } else {
      appendMember(out, members, field.name, value, level + 1);
    }
  };
  [&]<std::size_t... i>(std::index_sequence<i...>) {
    (append(std::get<sortedPlaces<Record>[i]>(fieldsOf<Record>)), ...);
  }
  (std::make_index_sequence<sortedPlaces<Record>.size()>());
  members.close('}');
}

template <class List>
void appendList(std::string& out, const List& list, std::size_t level) {
  Enclosure elements(out, level, '[');
  for (const auto& element : list) {
    elements.next();
    appendJson(out, element, level + 1);
  }
  elements.close(']');
}

template <std::integral T>
void appendInteger(std::string& out, T value) {
  std::array<char, std::numeric_limits<T>::digits10 + 2> digits{};
  out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
}

}  // namespace json

template <class T>
void appendJson(std::string& out, const T& value, std::size_t level) {
  if constexpr (std::same_as<T, bool>) {
    out += value ? "true" : "false";
  } else if constexpr (std::integral<T>) {
    json::appendInteger(out, value);
  } else if constexpr (std::same_as<T, std::string>) {
    json::appendText(out, value);
  } else if constexpr (std::derived_from<T, FilePath>) {
    json::appendPath(out, value);
  } else if constexpr (std::same_as<T, FileUrl>) {
    json::appendText(out, fileUrlText(value.path));
  } else if constexpr (std::same_as<T, Uuid>) {
    json::appendText(out, uuidText(value));
  } else if constexpr (std::same_as<T, Date>) {
    json::appendText(out, isoText(value));
  } else if constexpr (NamedEnumeration<T>) {
    json::appendText(out, caseName(value));
  } else if constexpr (json::IsList<T>::value) {
    json::appendList(out, value, level);
  } else if constexpr (json::ListedRecord<T>) {
    json::appendRecord(out, value, level);
  } else {
    json::appendDocument(out, toJson(value), level);
  }
}

}  // namespace quorvane
