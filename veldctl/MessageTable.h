#pragma once

#include <string>

#include "veldctl/Message.h"

/// Messages on standard output. Programs get one object a line, people a table that fits their terminal: one
/// line for each message, or two when the terminal is narrow; the text is cut. Without a terminal nothing is
/// cut.
class MessageTable {
 public:
  enum class Form { Table, Json, Guids };

  explicit MessageTable(Form form);

  void add(const Message& message);

 private:
  struct Row;

  void print(const Row& row);
  void printTwoLines(const Row& row) const;
  void printOneLine(const Row& row) const;
  [[nodiscard]] Row rowOf(const Message& message) const;

  const Form form_;
  const std::size_t width_;  ///< of the terminal; as wide as can be without one
  bool hasHeader_ = false;
};

/// The members of a message for programs: folder, guid, record, fault, time.
Json::Value toJson(const Message& message);

/// "from NUMBER" or "to NUMBER", printable.
std::string otherEnd(const Message& message);
