#include <iostream>

#include "commands/CommandTable.h"

// Prints each SMS command for the tests of the documents: keyword, path and flag, a command a line.
int main() {
  for (const CommandRow& row : commandRows)
    if (row.keyword != nullptr)
      std::cout << row.keyword << " /api/command/" << row.path << ' ' << row.key << '\n';
}
