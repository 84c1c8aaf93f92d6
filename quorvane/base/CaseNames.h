#pragma once

#include "quorvane/base/Assert.h"
#include "quorvane/base/ForEachArgument.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace quorvane {

/// An enumeration whose cases were listed with `QV_CASE_NAMES`.
template <class E>
concept NamedEnumeration = requires(E value) {
  caseNamesOf(value);
};

/// Every case of `E`, in the order of its declaration.
template <NamedEnumeration E>
constexpr auto allCases() {
  constexpr auto names = caseNamesOf(E{});
  std::array<E, names.size()> cases{};
  for (std::size_t i = 0; i < names.size(); ++i) cases[i] = static_cast<E>(i);
  return cases;
}

/// The name of a case as the code spells it, which is also its raw value in JSON.
template <NamedEnumeration E>
constexpr std::string_view caseName(E value) {
  constexpr auto names = caseNamesOf(E{});
  const auto index = static_cast<std::size_t>(value);
  require(index < names.size(), "an enumeration holds none of its cases");
  return names[index];
}

/// The case with exactly this name; nothing for any other text.
template <NamedEnumeration E>
constexpr std::optional<E> caseFromName(std::string_view name) {
  for (const E value : allCases<E>())
    if (caseName(value) == name) return value;
  return std::nullopt;
}

}  // namespace quorvane

#define QV_CASE_NAME(Enumeration, name) std::string_view(#name),
#define QV_CASE_PLACE(Enumeration, name) Enumeration::name,

/// Lists all cases of an enumeration in their order, beside its declaration. A list that is out of order or names a
/// case twice does not compile.
#define QV_CASE_NAMES(Enumeration, ...)                                                            \
  constexpr auto caseNamesOf(Enumeration) {                                                        \
    constexpr std::array cases{QV_FOR_EACH(QV_CASE_PLACE, Enumeration, __VA_ARGS__)};              \
    constexpr bool inOrder = []<std::size_t... i>(std::index_sequence<i...>, const auto& listed) { \
      return ((static_cast<std::size_t>(listed[i]) == i) && ...);                                  \
    }                                                                                              \
    (std::make_index_sequence<cases.size()>(), cases);                                             \
    static_assert(inOrder, "list the cases in the order of their declaration");                    \
    return std::array{QV_FOR_EACH(QV_CASE_NAME, Enumeration, __VA_ARGS__)};                        \
  }
