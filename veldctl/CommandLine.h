#pragma once

#include <string>

#include "veldctl/Command.h"

/// Reads the command line `veldctl COMMAND [ARGUMENT...] [OPTION...]`. Options may stand anywhere.
namespace CommandLine {
struct Parsed {
  const Command* command = nullptr;  ///< null if the user asks for the general help or for the version
  Request request;
  bool wantsHelp = false;
  bool wantsVersion = false;
};

/// Fills `parsed` from the arguments of main(). Throws Misuse if the command line is wrong. Sets
/// `parsed.command` even then, if the command is known.
void parse(int count, char** words, Parsed& parsed);

/// Returns the general help, with one line for each command.
std::string help();

/// Returns the help of one command: its arguments, its options and an example.
std::string help(const Command& command);
}  // namespace CommandLine
