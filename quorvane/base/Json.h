#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/Date.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/JsonRecord.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/base/Uuid.h"

#include <nlohmann/json.hpp>

#include <array>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// The codec behind the records' `jsonText` and `...FromJson`. Include it only in the .cpp file of a record.

namespace quorvane {

using Json = nlohmann::json;

template <class T>
Json toJson(const T& value);

template <class T>
[[nodiscard]] Outcome<T, JsonError> fromJson(const Json& json);

/// Pretty-printed with sorted keys and a final line break.
std::string printedJson(const Json& json);

/// Reads a whole text of at most 64 MiB; refuses anything behind the value.
[[nodiscard]] Outcome<Json, JsonError> parsedJson(std::string_view text);

namespace json {

template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};

inline std::unexpected<JsonError> mistyped() { return failure(JsonError{JsonFault::mistyped, {}}); }

/// The same fault, seen from one level further out.
JsonError below(std::string_view step, const JsonError& inner);

template <std::integral T>
Outcome<T, JsonError> integerFromJson(const Json& json) {
  if (!json.is_number_integer()) return mistyped();
  if (json.is_number_unsigned()) {
    const auto value = json.get<std::uint64_t>();
    if (!std::in_range<T>(value)) return failure(JsonError{JsonFault::outOfRange, {}});
    return static_cast<T>(value);
  }
  const auto value = json.get<std::int64_t>();
  if (!std::in_range<T>(value)) return failure(JsonError{JsonFault::outOfRange, {}});
  return static_cast<T>(value);
}

template <class T, class Read>
Outcome<T, JsonError> textFromJson(const Json& json, Read read) {
  if (!json.is_string()) return mistyped();
  std::optional<T> value = read(json.get_ref<const std::string&>());
  if (!value) return mistyped();
  return *std::move(value);
}

/// A plain absolute path, or a `file://` URL for one that is not valid UTF-8.
std::optional<FilePath> pathFromText(std::string_view text);

template <class T>
Outcome<T, JsonError> listFromJson(const Json& json) {
  if (!json.is_array()) return mistyped();
  T list;
  list.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    auto element = fromJson<typename T::value_type>(json[i]);
    if (!element) return failure(below(std::to_string(i), element.error()));
    list.push_back(*std::move(element));
  }
  return list;
}

/// Fills one member of a record; a missing optional stays empty, `null` is refused like any other wrong type.
template <class Record, class Member>
bool readField(const Json& json, Record& record, const JsonField<Record, Member>& field,
               std::optional<JsonError>& fault) {
  const auto found = json.find(field.name);
  if (found == json.end()) {
    if constexpr (IsOptional<Member>::value) return true;
    fault = JsonError{JsonFault::missing, std::string(field.name)};
    return false;
  }
  const auto keep = [&](auto outcome) {
    if (!outcome) {
      fault = below(field.name, outcome.error());
      return false;
    }
    record.*field.member = *std::move(outcome);
    return true;
  };
  if constexpr (IsOptional<Member>::value) {
    return keep(fromJson<typename Member::value_type>(*found));
  } else {
    return keep(fromJson<Member>(*found));
  }
}

template <class Record>
Outcome<Record, JsonError> recordFromJson(const Json& json) {
  if (!json.is_object()) return mistyped();
  Record record{};
  std::optional<JsonError> fault;
  std::apply([&](const auto&... field) { (void)(readField(json, record, field, fault) && ...); },
             jsonFieldsOf(static_cast<const Record*>(nullptr)));
  if (fault) return failure(*std::move(fault));
  return record;
}

template <class Record>
Json recordToJson(const Record& record) {
  Json json = Json::object();
  const auto write = [&](const auto& field) {
    const auto& value = record.*field.member;
    if constexpr (IsOptional<std::decay_t<decltype(value)>>::value) {
      if (value) json[std::string(field.name)] = toJson(*value);
    } else {
      json[std::string(field.name)] = toJson(value);
    }
  };
  std::apply([&](const auto&... field) { (write(field), ...); }, jsonFieldsOf(&record));
  return json;
}

}  // namespace json

template <class T>
Json toJson(const T& value) {
  if constexpr (std::same_as<T, bool> || std::integral<T> || std::floating_point<T>) {
    return value;
  } else if constexpr (std::same_as<T, std::string>) {
    return withReplacedInvalidUtf8(value);
  } else if constexpr (std::same_as<T, FilePath>) {
    return isValidUtf8(value.bytes) ? value.bytes : fileUrlText(value);
  } else if constexpr (std::same_as<T, FileUrl>) {
    return fileUrlText(value.path);
  } else if constexpr (std::same_as<T, Uuid>) {
    return uuidText(value);
  } else if constexpr (std::same_as<T, Date>) {
    return isoText(value);
  } else if constexpr (NamedEnumeration<T>) {
    return std::string(caseName(value));
  } else if constexpr (json::IsList<T>::value) {
    Json list = Json::array();
    for (const auto& element : value) list.push_back(toJson(element));
    return list;
  } else {
    return json::recordToJson(value);
  }
}

template <class T>
Outcome<T, JsonError> fromJson(const Json& json) {
  if constexpr (std::same_as<T, bool>) {
    if (!json.is_boolean()) return json::mistyped();
    return json.get<bool>();
  } else if constexpr (std::integral<T>) {
    return json::integerFromJson<T>(json);
  } else if constexpr (std::floating_point<T>) {
    if (!json.is_number()) return json::mistyped();
    return json.get<T>();
  } else if constexpr (std::same_as<T, std::string>) {
    return json::textFromJson<T>(json, [](const std::string& text) { return std::optional(text); });
  } else if constexpr (std::same_as<T, FilePath>) {
    return json::textFromJson<T>(json, json::pathFromText);
  } else if constexpr (std::same_as<T, FileUrl>) {
    return json::textFromJson<T>(json, [](const std::string& text) -> std::optional<FileUrl> {
      auto path = pathFromFileUrl(text);
      if (!path) return std::nullopt;
      return FileUrl{*std::move(path)};
    });
  } else if constexpr (std::same_as<T, Uuid>) {
    return json::textFromJson<T>(json, uuidFromText);
  } else if constexpr (std::same_as<T, Date>) {
    return json::textFromJson<T>(json, dateFromIsoText);
  } else if constexpr (NamedEnumeration<T>) {
    if (!json.is_string()) return json::mistyped();
    const auto value = caseFromName<T>(json.get_ref<const std::string&>());
    if (!value) return failure(JsonError{JsonFault::unknownCase, {}});
    return *value;
  } else if constexpr (json::IsList<T>::value) {
    return json::listFromJson<T>(json);
  } else {
    return json::recordFromJson<T>(json);
  }
}

/// Reads a record out of a whole JSON text.
template <class T>
[[nodiscard]] Outcome<T, JsonError> recordFromText(std::string_view text) {
  const auto json = parsedJson(text);
  if (!json) return failure(json.error());
  return fromJson<T>(*json);
}

}  // namespace quorvane
