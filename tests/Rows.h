#pragma once

#include <gmock/gmock.h>

#include <string>
#include <type_traits>

/// Returns `count` copies of `text`.
inline std::string times(std::size_t count, const std::string& text) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

/// A row of a test table: the argument for a function, and the expected result.
template <typename Given, typename Expected>
struct Row {
  const char* name;
  Given given;
  Expected expected;
};

/// Runs a parameterised test suite once for each row of a table. The row's `name` is part of the test's name.
#define INSTANTIATE_ROWS(Suite, rows)                            \
  INSTANTIATE_TEST_SUITE_P(Rows, Suite, testing::ValuesIn(rows), \
                           [](const auto& row) { return std::string(row.param.name); })

/// Defines a test that runs once for each row of a table. GetParam() returns the row.
#define TEST_ROWS(Suite, Name, rows)                                         \
  struct Suite : testing::TestWithParam<std::decay_t<decltype(*(rows))>> {}; \
  INSTANTIATE_ROWS(Suite, rows);                                             \
  TEST_P(Suite, Name)
