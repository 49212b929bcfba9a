#include <algorithm>
#include <iostream>

#include "daemon/StartUp.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Api.h"
#include "veldctl/Commands.h"
#include "veldctl/Outcome.h"
#include "veldctl/Output.h"
#include "veldctl/Processes.h"
#include "veldctl/Queue.h"
#include "veldctl/ShortMessage.h"

namespace {
namespace Key = MessageRecord::Key;
using namespace MessageStatus;

// Reads at most one byte more than the longest text from standard input. Removes a line feed at the end.
std::string readText() {
  std::string text(ShortMessage::mostBytes + 2, '\0');
  std::cin.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::cin.gcount()));
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

std::string faultOf(const std::string& number, const ShortMessage::Encoding& encoding) {
  if (!ShortMessage::isNumber(number)) return "'" + number + "': " + ShortMessage::numberRule;
  return encoding.fault;
}

void warnOfEncoding(const ShortMessage::Encoding& encoding) {
  if (!encoding.outside.empty()) Output::complain("not in the GSM alphabet: " + encoding.outside);
  if (encoding.messages > 1)
    Output::complain("the text needs " + std::to_string(encoding.messages) + " messages");
}

// At the limit, the daemon discards the oldest messages of the outbox, even if they were not sent yet.
void warnOfLimit(const Folders& folders, std::size_t limit) {
  if (limit == 0) return Output::complain("\"sentLimit\" is 0: the message is neither kept nor retried");
  const auto outbox = folders.names({Sending, Sent, Failed}).files;
  const std::size_t surplus = outbox.size() - std::min(outbox.size(), limit);
  const auto waiting = std::count_if(outbox.begin(), outbox.begin() + static_cast<std::ptrdiff_t>(surplus),
                                     [](const FileName& file) { return file.status == Sending; });
  if (waiting > 0)
    Output::complain("\"sentLimit\" is reached: the daemon may discard " + std::to_string(waiting) +
                     " of the waiting messages before it sends them");
}

void warnOfGateway(const Folders& folders) {
  const Json::Value settings = askForSettings().settings;
  const Json::Value& limit = MessageRecord::member(settings, SettingsKey::sentLimit);
  if (limit.isUInt()) warnOfLimit(folders, limit.asUInt());
  if (!isDaemonRunning()) Output::complain("the daemon does not run: the message waits");
}

void printGuid(const std::string& guid, bool isJson) {
  Json::Value row;
  row["guid"] = guid;
  std::cout << (isJson ? Output::line(row) : guid) << std::endl;
}
}  // namespace

int send(const Request& request) {
  const std::string& number = request.words[0];
  const std::string text = request.words[1] == "-" ? readText() : request.words[1];
  const ShortMessage::Encoding encoding = ShortMessage::encodingOf(text);
  const std::string fault = faultOf(number, encoding);
  if (!fault.empty()) {
    Output::complain(fault);
    return Bad;
  }
  warnOfEncoding(encoding);
  Json::Value record;
  record[Key::Recipient] = number;
  record[Key::Message] = text;
  if (const auto retries = request.number('r')) record[Key::Retries] = *retries;
  const std::streamoff logged = endOfSendLog();
  const std::string guid = Queue(request.folders).add(record);
  const bool waits = request.has('w');
  if (!waits || !request.isJson()) printGuid(guid, request.isJson());
  warnOfGateway(request.folders);
  if (!waits) return Done;
  const unsigned seconds = request.number('w').value_or(waitSeconds);
  return printOutcome(awaitOutcome(request.folders, guid, seconds, logged), request.isJson());
}
