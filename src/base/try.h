#pragma once

#include <utility>

#include <tl/expected.hpp>

// Passing failures on. Both return the failure from the function around them.

#define ORLOCAL_JOIN_NAMES(first, second) first##second
#define ORLOCAL_JOIN(first, second) ORLOCAL_JOIN_NAMES(first, second)

/// ORLOCAL_CHECK(status): goes on when it is no failure.
#define ORLOCAL_CHECK(expression)                                                          \
  do {                                                                                     \
    if (auto&& checkedStatus = (expression); !checkedStatus) {                             \
      return tl::unexpected(std::forward<decltype(checkedStatus)>(checkedStatus).error()); \
    }                                                                                      \
  } while (false)

/// ORLOCAL_TRY(auto value, result): takes the value out of a result.
#define ORLOCAL_TRY(declaration, expression) \
  ORLOCAL_TRY_NAMED(ORLOCAL_JOIN(triedResult, __LINE__), declaration, expression)
#define ORLOCAL_TRY_NAMED(name, declaration, expression)     \
  auto name = (expression);                                  \
  if (!name) return tl::unexpected(std::move(name.error())); \
  declaration = std::move(*name)
