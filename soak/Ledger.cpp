#include "soak/Ledger.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>

#include "simulator/gateway/MessageFolders.h"
#include "simulator/modem/Modem.h"
#include "simulator/support/Files.h"
#include "soak/Fault.h"
#include "soak/LossWindows.h"

namespace {

using Simulator::MessageFolders;

std::set<unsigned> tokensIn(const std::string& text) {
  std::set<unsigned> numbers;
  for (std::size_t at = text.find('='); at != std::string::npos; at = text.find('=', at + 1)) {
    std::size_t end = at + 1;
    while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end])) != 0) ++end;
    if (end > at + 1 && end < text.size() && text[end] == '=')
      numbers.insert(static_cast<unsigned>(std::stoul(text.substr(at + 1, end - at - 1))));
  }
  return numbers;
}

// Changes whenever the file is written or replaced; empty when there is none.
std::string versionOf(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return "";
  return std::to_string(status.st_ino) + "/" + std::to_string(status.st_size) + "/" +
         std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
}

}  // namespace

void Ledger::enterPart(unsigned number, Kind kind, unsigned first, unsigned count) {
  Incoming& message = incoming_[number];
  message.kind = kind;
  message.first = first;
  message.arrived = static_cast<unsigned>(faults_.size());
  partsOf_[first] = count;
  firstArrival_.emplace(first, message.arrived);
  onModem_.insert(number);
}

void Ledger::enterQueued(unsigned number, const std::string& guid, bool isRefused) {
  Outgoing& message = outgoing_[number];
  message.guid = guid;
  message.isRefused = isRefused;
  message.queued = static_cast<unsigned>(faults_.size());
  message.box = "sending";
  active_.insert(number);
}

void Ledger::observe(unsigned faults) {
  faults_.push_back(faults);
  observeModem();
  observeInbox();
  observeOutbox();
}

void Ledger::observeModem() {
  std::string listed;
  const Simulator::Modem modem(Simulator::Modem::storeFolder);
  for (const char* const box : {"unread", "read"})
    for (const std::string& message : modem.printed(box)) listed += message;
  const std::set<unsigned> there = tokensIn(listed);
  for (auto number = onModem_.begin(); number != onModem_.end();) {
    if (there.count(*number) == 0) {
      incoming_[*number].taken = static_cast<unsigned>(faults_.size()) - 1;
      number = onModem_.erase(number);
    } else {
      ++number;
    }
  }
}

void Ledger::observeInbox() {
  const std::string folder = MessageFolders::pathOf("received") + "/";
  std::map<std::string, std::string> versions;
  for (const std::string& name : Simulator::listFolder(folder)) {
    const std::string path = folder + name;
    const std::string version = versions[name] = versionOf(path);
    if (versions_[name] == version) continue;
    Json::Value record;
    const bool isRecord = Simulator::readJson(Simulator::readFile(path), record) && record.isObject();
    observeRecord(name, isRecord ? tokensIn(record["message"].asString()) : std::set<unsigned>());
  }
  versions_ = versions;
}

void Ledger::observeRecord(const std::string& guid, const std::set<unsigned>& tokens) {
  const unsigned pass = static_cast<unsigned>(faults_.size()) - 1;
  for (const unsigned number : contents_[guid])
    if (tokens.count(number) == 0 && incoming_[number].guids.size() == 1)
      incoming_[number].overwritten = pass;
  contents_[guid] = tokens;
  std::map<unsigned, unsigned> partsFound;
  for (const unsigned number : tokens) {
    Incoming& message = incoming_[number];
    message.guids.insert(guid);
    message.filed = pass;
    if (++partsFound[message.first] == partsOf_[message.first]) joined_.insert(message.first);
  }
}

void Ledger::observeOutbox() {
  const unsigned pass = static_cast<unsigned>(faults_.size()) - 1;
  for (auto number = active_.begin(); number != active_.end();) {
    Outgoing& message = outgoing_[*number];
    Json::Value record;
    message.box.clear();
    for (const char* const box : {"sending", "sent", "failed"}) {
      const std::string text = Simulator::readFile(MessageFolders::pathOf(box) + "/" + message.guid);
      if (Simulator::readJson(text, record) && record.isObject()) message.box = box;
    }
    const bool isForGood =
        message.box == "sent" || (message.box == "failed" && record["retries"].asUInt() == 0);
    // What is nowhere may still be filed: the daemon's journal knows it.
    if (!isForGood && !message.box.empty())
      message.done = 0;
    else if (message.done == 0)
      message.done = pass;
    number = isForGood ? active_.erase(number) : std::next(number);
  }
}

std::size_t Ledger::lost() const {
  const auto isLost = [](const auto& entry) { return entry.second.taken != 0 && entry.second.guids.empty(); };
  const auto isGone = [](const auto& entry) { return entry.second.box.empty(); };
  return static_cast<std::size_t>(std::count_if(incoming_.begin(), incoming_.end(), isLost) +
                                  std::count_if(outgoing_.begin(), outgoing_.end(), isGone));
}

unsigned Ledger::faultsIn(unsigned first, unsigned last) const {
  unsigned all = 0;
  for (unsigned pass = first; pass <= last && pass < faults_.size(); ++pass) all |= faults_[pass];
  return all;
}

bool Ledger::settle(std::ostream& report, const std::vector<Json::Value>& sent,
                    const std::vector<std::string>& bodies) const {
  std::map<unsigned, unsigned> sendings, requests;
  for (const Json::Value& message : sent)
    for (const unsigned number : tokensIn(message["text"].asString())) ++sendings[number];
  for (const std::string& body : bodies)
    for (const unsigned number : tokensIn(body)) ++requests[number];

  std::map<unsigned, unsigned> lastOf;  // the pass in which a part was seen last, by the first part
  for (const auto& [number, message] : incoming_)
    lastOf[message.first] = std::max({lastOf[message.first], message.taken, message.filed});

  LossWindows windows(report);
  for (const auto& [number, message] : incoming_) {
    const std::string name = "incoming " + token(number);
    const unsigned last = std::max({message.taken, message.filed, message.overwritten});
    const unsigned faults = faultsIn(message.arrived, last);
    windows.expose(LossWindows::Incoming, faults);
    if (message.taken == 0) windows.fault(name + " is still on the modem");
    if (message.guids.empty()) windows.lose(LossWindows::Incoming, name, faults_[message.taken]);
    if (message.overwritten != 0) windows.lose(LossWindows::Incoming, name, faults_[message.overwritten]);
    // A part that came twice waits twice, and takes in the parts that follow twice.
    if (message.guids.size() > 1)
      windows.repeat(LossWindows::Incoming, name, faultsIn(firstArrival_.at(message.first), last));
    if (message.first == number && message.filed != 0 && joined_.count(number) == 0)
      windows.leaveApart(name, faultsIn(firstArrival_.at(number), lastOf[number]));
    const unsigned asked = requests[number];
    if (message.kind != Kind::Command && asked > 0) windows.fault(name + " of a stranger caused a request");
    if (message.kind == Kind::Command && message.filed != 0) {
      windows.expose(LossWindows::Command, faults);
      if (asked == 0) windows.lose(LossWindows::Command, name + ", a command,", faults);
    }
    if (asked > std::max<std::size_t>(1, message.guids.size()))
      windows.repeat(LossWindows::Incoming, name, faults);
  }
  for (const auto& [number, message] : outgoing_) {
    const std::string name = "outgoing " + token(number);
    const unsigned faults = faultsIn(message.queued, message.done);
    windows.expose(LossWindows::Outgoing, faults);
    if (message.done == 0) windows.fault(name + " is still in " + message.box);
    const unsigned sendingsOfIt = sendings[number];
    if (message.box.empty()) windows.lose(LossWindows::Outgoing, name, faults_[message.done]);
    if (message.box == "sent" && sendingsOfIt == 0) windows.lose(LossWindows::Outgoing, name, faults);
    if (message.isRefused && sendingsOfIt > 0) windows.fault(name + " was sent to a number that is refused");
    if (sendingsOfIt > 1) windows.repeat(LossWindows::Outgoing, name, faults);
  }
  return windows.settle();
}
