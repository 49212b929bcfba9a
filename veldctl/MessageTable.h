#pragma once

#include <string>

#include "veldctl/Message.h"

/// Prints messages on standard output: as guids, as one JSON object per line, or as a table. On a terminal
/// the table cuts long texts. On a narrow terminal each message takes two lines.
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
  const std::size_t width_;  ///< of the terminal; unlimited if standard output is not a terminal
  bool hasHeader_ = false;
};

/// Returns the message as a JSON object: folder, guid, record, fault, time.
Json::Value toJson(const Message& message);

/// Returns "from NUMBER" or "to NUMBER" as printable text; "-" without a number.
std::string otherEnd(const Message& message);
