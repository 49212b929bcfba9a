#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "storage/MessageStore.h"
#include "veldctl/Folders.h"

/// The exit statuses of all commands but `status` and `check`, whose statuses are verdicts.
enum Ending : int {
  Done = 0,     ///< success; the message was sent
  Bad = 1,      ///< something could not be done; the message has failed
  Unknown = 3,  ///< it is not known yet whether the message was sent
  Misused = 64  ///< the command line is wrong
};

/// A command line that cannot be understood. The text names the word and says what would be right.
struct Misuse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// An option. Several commands may share it.
struct Option {
  enum Value { None, Number, OptionalNumber, Text };

  char letter;
  bool isShort;  ///< whether it is also written as "-" and the letter
  const char* name;
  Value value;
  const char* valueName;
  const char* help;
};

/// What the command line asks for.
struct Request {
  Folders folders{messageFolder};
  std::vector<std::string> words;       ///< behind the command
  std::map<char, std::string> options;  ///< the value of each option that was given, by its letter

  bool has(char letter) const { return options.count(letter) > 0; }
  bool isJson() const { return has('j'); }
  std::string text(char letter) const { return has(letter) ? options.at(letter) : ""; }

  /// The value of an option with a number; none when it is not given, or given without its number.
  std::optional<std::uint32_t> number(char letter) const;
};

/// One command of veldctl.
struct Command {
  const char* name;
  const char* arguments;
  const char* options;  ///< the letters of those that it takes
  const char* help;     ///< what it does, in one line
  const char* example;
  std::size_t least, most;  ///< words behind it
  int (*run)(const Request& request);
};

/// Reads a number in decimal digits; none for any other text and above 4294967295.
std::optional<std::uint32_t> readNumber(const std::string& text);
