#pragma once

#include <gmock/gmock.h>

#include <string>
#include <type_traits>

/// A long text for a row.
inline std::string times(std::size_t count, const std::string& text) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

/// A row of a table that compares one value with what a function makes of another.
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
