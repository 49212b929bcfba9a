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

/// A row that gives a function one value and compares its result with the expected one.
template <typename Given, typename Expected>
struct Row {
  const char* name;
  Given given;
  Expected expected;
};

/// Runs a parameterised suite over a table, each row under its `name`.
#define INSTANTIATE_ROWS(Suite, rows)                            \
  INSTANTIATE_TEST_SUITE_P(Rows, Suite, testing::ValuesIn(rows), \
                           [](const auto& row) { return std::string(row.param.name); })

/// A test that runs once for each row of a table. It reads its row with GetParam().
#define TEST_ROWS(Suite, Name, rows)                                         \
  struct Suite : testing::TestWithParam<std::decay_t<decltype(*(rows))>> {}; \
  INSTANTIATE_ROWS(Suite, rows);                                             \
  TEST_P(Suite, Name)
