#include "veldctl/MessageTable.h"

#include <iostream>
#include <limits>

#include "storage/MessageStatus.h"
#include "veldctl/Output.h"
#include "veldctl/Times.h"

namespace {
constexpr std::size_t guidWidth = 16, stateWidth = 8, leftWidth = 4, numberWidth = 16;
constexpr std::size_t narrow = 72;  // on a narrower terminal, a message takes two lines
constexpr std::size_t roomy = 100;  // on a narrower terminal, times have no year and no seconds
constexpr std::size_t endless = std::numeric_limits<std::size_t>::max();

// Returns the number of retries left; "-" for a message that was sent or received.
std::string leftOf(const Message& message) {
  const bool mayBeSent = message.status == MessageStatus::Sending || message.status == MessageStatus::Failed;
  return mayBeSent && message.record.isObject() ? std::to_string(message.retries()) : "-";
}
}  // namespace

struct MessageTable::Row {
  std::string guid, time, state, left, number, text;
};

MessageTable::MessageTable(Form form)
    : form_(form), width_(Output::terminalWidth() > 0 ? Output::terminalWidth() : endless) {}

void MessageTable::add(const Message& message) {
  if (form_ == Form::Json)
    std::cout << Output::line(toJson(message)) << '\n';
  else if (form_ == Form::Guids)
    std::cout << Output::printable(message.name) << '\n';
  else
    print(rowOf(message));
}

MessageTable::Row MessageTable::rowOf(const Message& message) const {
  const std::string time = width_ < roomy ? Times::brief(message.time()) : Times::full(message.time());
  const std::string text = message.problem().empty() ? message.text() : "? " + message.problem();
  return {Output::printable(message.name),
          time,
          MessageStatus::text(message.status),
          leftOf(message),
          otherEnd(message),
          Output::printable(text)};
}

void MessageTable::print(const Row& row) {
  const auto printOne = width_ < narrow ? &MessageTable::printTwoLines : &MessageTable::printOneLine;
  const Row header{"GUID", Output::padded("TIME", Output::width(row.time)), "STATE", "LEFT", "FROM/TO",
                   "TEXT"};
  if (!hasHeader_) (this->*printOne)(header);
  hasHeader_ = true;
  (this->*printOne)(row);
}

void MessageTable::printTwoLines(const Row& row) const {
  const std::string first =
      Output::padded(row.guid, guidWidth) + "  " + row.time + "  " + row.state + " " + row.left;
  const std::string second = "  " + row.number + "  " + row.text;
  std::cout << Output::cut(first, width_) << '\n' << Output::cut(second, width_) << '\n';
}

void MessageTable::printOneLine(const Row& row) const {
  const std::string number = width_ == endless ? row.number : Output::cut(row.number, numberWidth);
  const std::string line = Output::padded(row.guid, guidWidth) + "  " + row.time + "  " +
                           Output::padded(row.state, stateWidth) + "  " +
                           Output::padded(row.left, leftWidth) + "  " + Output::padded(number, numberWidth) +
                           "  " + row.text;
  std::cout << Output::cut(line, width_) << '\n';
}

Json::Value toJson(const Message& message) {
  Json::Value row;
  row["folder"] = MessageStatus::text(message.status);
  row["guid"] = message.name;
  row["record"] = message.record;
  row["fault"] = message.problem();
  row["time"] = Times::withZone(message.time());
  return row;
}

std::string otherEnd(const Message& message) {
  const std::string number = Output::printable(message.number());
  if (number.empty()) return "-";
  return (message.isIncoming() ? "from " : "to   ") + number;
}
