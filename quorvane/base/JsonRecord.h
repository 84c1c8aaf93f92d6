#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/ForEachArgument.h"
#include "quorvane/base/Outcome.h"

#include <string>
#include <string_view>
#include <tuple>

namespace quorvane {

/// Why a JSON text was refused.
enum class JsonFault {
  malformed,    ///< not JSON, or more than one value
  tooLarge,     ///< longer than a text of this program can be
  missing,      ///< a member is not there
  mistyped,     ///< a value is of another type, or its text has another form
  unknownCase,  ///< an enumeration's text names none of its cases
  outOfRange,   ///< a number does not fit
};
QV_CASE_NAMES(JsonFault, malformed, tooLarge, missing, mistyped, unknownCase, outOfRange)

struct JsonError {
  JsonFault fault;
  std::string path;  ///< where, from the outermost value: "items.3.safety"; empty for the value itself

  bool operator==(const JsonError&) const = default;
};

/// A record's member together with its JSON key.
template <class Record, class Member>
struct JsonField {
  std::string_view name;
  Member Record::*member;
};

template <class Record, class Member>
constexpr JsonField<Record, Member> jsonField(std::string_view name, Member Record::*member) {
  return {name, member};
}

}  // namespace quorvane

#define QV_JSON_FIELD(Record, name) std::tuple(::quorvane::jsonField(#name, &Record::name)),

/// The one list of a record's JSON members, beside its declaration: keys are the field names; an empty optional is left
/// out, every other member has to be there, members not listed are passed over.
#define QV_JSON_FIELDS(Record, ...)                                                        \
  constexpr auto jsonFieldsOf(const Record*) {                                             \
    return std::tuple_cat(QV_FOR_EACH(QV_JSON_FIELD, Record, __VA_ARGS__) std::tuple<>()); \
  }
