#pragma once

#include <gtest/gtest.h>

/// Runs a parameterised suite over a table, each row under its `name`.
#define INSTANTIATE_ROWS(Suite, rows)                            \
  INSTANTIATE_TEST_SUITE_P(Rows, Suite, testing::ValuesIn(rows), \
                           [](const auto& row) { return std::string(row.param.name); })
