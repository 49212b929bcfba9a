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

/// The exit statuses of all commands except `status` and `check`, which return a Verdict.
enum ExitStatus : int {
  Done = 0,     ///< success; or the message was sent
  Bad = 1,      ///< failure; or the message has failed
  Unknown = 3,  ///< the outcome of the message is not known yet
  Misused = 64  ///< the command line is wrong
};

/// An error in the command line. The text names the wrong word and the correct form.
struct Misuse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// An option. Several commands may share it.
struct Option {
  enum Value { None, Number, OptionalNumber, Text };

  char letter;
  bool isShort;  ///< whether it also has the form "-LETTER"
  const char* name;
  Value value;
  const char* valueName;
  const char* help;
};

/// The arguments and options of a command.
struct Request {
  Folders folders{messageFolder};
  std::vector<std::string> words;       ///< the arguments
  std::map<char, std::string> options;  ///< the value of each given option, by its letter

  bool has(char letter) const { return options.count(letter) > 0; }
  bool isJson() const { return has('j'); }
  std::string text(char letter) const { return has(letter) ? options.at(letter) : ""; }

  /// Returns the value of a number option; nullopt if the option or its value is missing.
  std::optional<std::uint32_t> number(char letter) const;
};

/// One command of veldctl.
struct Command {
  const char* name;
  const char* arguments;
  const char* options;  ///< the letters of its options
  const char* help;     ///< one line
  const char* example;
  std::size_t least, most;  ///< number of arguments
  int (*run)(const Request& request);
};

/// Reads a decimal number; nullopt for any other text, and above 4294967295.
std::optional<std::uint32_t> readNumber(const std::string& text);
