#include <iostream>

#include "commands/CommandTable.h"

// Prints the SMS commands for the tests of the documents, one per line: keyword, path and flag.
int main() {
  for (const CommandRow& row : commandRows)
    if (row.keyword != nullptr)
      std::cout << row.keyword << " /api/command/" << row.path << ' ' << row.key << '\n';
}
