#pragma once

#include <string>

#include "veldctl/Command.h"

/// The command line: `veldctl COMMAND [WORD...] [OPTION...]`, in any order.
namespace CommandLine {

struct Parsed {
  const Command* command = nullptr;  ///< null when help or the version is asked for in general
  Request request;
  bool wantsHelp = false;
  bool wantsVersion = false;
};

/// Fills `parsed` from main's arguments. Throws Misuse; `parsed.command` is then set if it was recognised.
void parse(int count, char** words, Parsed& parsed);

/// What veldctl can do, a line for each command.
std::string help();

/// What one command takes, its options and an example.
std::string help(const Command& command);

}  // namespace CommandLine
