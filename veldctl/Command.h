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
  Done = 0,     ///< the command succeeded; after a wait for a message: the message was sent
  Bad = 1,      ///< the command failed; after a wait for a message: the message has failed
  Unknown = 3,  ///< after a wait for a message: the message was not sent and has not failed
  Misused = 64  ///< the command line is wrong
};

/// An error in the command line. The text names the wrong word and the correct form.
struct Misuse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// An option of the command line. Several commands may accept the same option.
struct Option {
  enum Value { None, Number, OptionalNumber, Text };

  char letter;   ///< identifies the option
  bool isShort;  ///< true if the user may also write "-LETTER"
  const char* name;
  Value value;
  const char* valueName;
  const char* help;
};

/// The arguments and options that the user gave to a command.
struct Request {
  Folders folders{messageFolder};
  std::vector<std::string> words;       ///< the arguments
  std::map<char, std::string> options;  ///< the value of each given option, by the option's letter

  bool has(char letter) const { return options.count(letter) > 0; }
  bool isJson() const { return has('j'); }
  std::string text(char letter) const { return has(letter) ? options.at(letter) : ""; }

  /// Returns the value of a number option; nullopt if the option or its value is missing.
  std::optional<std::uint32_t> number(char letter) const;
};

struct Command {
  const char* name;
  const char* arguments;
  const char* options;  ///< the letters of the options that the command accepts
  const char* help;     ///< one line
  const char* example;
  std::size_t least, most;  ///< the least and the greatest number of arguments
  int (*run)(const Request& request);
};

/// Reads a decimal number of at most 4294967295. Returns nullopt for any other text.
std::optional<std::uint32_t> readNumber(const std::string& text);
