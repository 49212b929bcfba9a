#include <iostream>

#include "storage/MessageStatus.h"
#include "veldctl/Commands.h"
#include "veldctl/Each.h"
#include "veldctl/MessageTable.h"
#include "veldctl/Output.h"
#include "veldctl/Times.h"

namespace {
using namespace MessageStatus;

std::string pretty(const Json::Value& record) {
  Json::StreamWriterBuilder writer;
  writer["emitUTF8"] = true;
  writer["indentation"] = "  ";
  return Json::writeString(writer, record);
}

void printLines(const std::string& text) {
  std::string::size_type begin = 0;
  while (begin < text.size()) {
    const auto end = text.find('\n', begin);
    std::cout << Output::printable(text.substr(begin, end - begin)) << '\n';
    if (end == std::string::npos) return;
    begin = end + 1;
  }
}

void print(const Folders& folders, const Message& message) {
  std::cout << "file:    " << Output::printable(folders.path(message.status, message.name)) << '\n';
  std::cout << "time:    " << Times::full(message.time()) << '\n';
  if (!message.number().empty())
    std::cout << (message.isIncoming() ? "from:    " : "to:      ") << Output::printable(message.number())
              << '\n';
  if (!message.problem().empty()) std::cout << "wrong:   " << Output::printable(message.problem()) << '\n';
  std::cout << '\n';
  printLines(message.record.isNull() ? message.content : pretty(message.record));
}

void printAsJson(const Message& message) {
  Json::Value row = toJson(message);
  if (!message.content.empty()) row["content"] = message.content;
  std::cout << Output::line(row) << '\n';
}
}  // namespace

int show(const Request& request) {
  const Lookup found = request.folders.find(request.words[0], {Sending, Failed, Sent, Received});
  if (!found.message) {
    Output::complain(request.words[0] + ": " + (found.error.empty() ? noSuchMessage : found.error));
    return Bad;
  }
  if (request.isJson())
    printAsJson(*found.message);
  else
    print(request.folders, *found.message);
  return found.message->problem().empty() ? Done : Bad;
}
