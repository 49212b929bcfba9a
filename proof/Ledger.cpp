#include "proof/Ledger.h"

#include <algorithm>

#include "proof/Fault.h"
#include "simulator/modem/Modem.h"
#include "simulator/support/Files.h"

namespace {

constexpr char unanswered[] = "was begun and never answered";  // part of a log line of the daemon
constexpr char unobeyed[] = "SMS command in message";          // the same: not obeyed, or perhaps not obeyed

std::string textOf(const Json::Value& value) { return value.isString() ? value.asString() : ""; }

// The first argument of a command, which identifies its request.
std::string argumentOf(const std::string& command) {
  const std::size_t begin = command.find(' ', command.find('#')) + 1;
  return command.substr(begin, command.find(' ', begin) - begin);
}

std::set<std::string> guidsOf(const std::string& line) {
  std::set<std::string> guids;
  for (std::size_t at = 0; (at = line.find_first_of("0123456789", at)) != std::string::npos;) {
    const std::size_t end = std::min(line.find_first_not_of("0123456789", at), line.size());
    guids.insert(line.substr(at, end - at));
    at = end;
  }
  return guids;
}

}  // namespace

bool Ledger::Message::isIn(const std::string& box) const {
  return std::any_of(places.begin(), places.end(),
                     [&](const std::string& place) { return Shelf::boxOf(place) == box; });
}

bool Ledger::Message::isDone() const {
  if (kind == Kind::Outgoing)
    return displaced || (!isIn("sending") && (isIn("sent") || (isIn("failed") && !retries)));
  return whole && std::none_of(parts.begin(), parts.end(),
                               [](const Part& part) { return part.place == Part::OnModem; });
}

unsigned Ledger::enterIncoming(const std::string& text, unsigned kind,
                               const std::vector<std::pair<std::string, std::string>>& parts) {
  const auto number = static_cast<unsigned>(messages_.size());
  Message message{text, "", kind};
  message.first = looks_.size();
  byText_[text] = number;
  for (const auto& [userData, partText] : parts) {
    byPart_[partText] = {number, message.parts.size()};
    message.parts.push_back({userData});
  }
  messages_.push_back(message);
  return number;
}

void Ledger::arrived(unsigned message, std::size_t part) {
  active_.insert(message);
  messages_[message].parts[part].place = Part::OnModem;
}

void Ledger::enterQueued(const std::string& text, const std::string& recipient, bool refused) {
  const auto number = static_cast<unsigned>(messages_.size());
  byText_[text] = number;
  active_.insert(number);
  messages_.push_back({text, recipient, Kind::Outgoing, refused});
  messages_.back().first = looks_.size();
}

void Ledger::accept() {
  for (Message& message : messages_) message.refused = false;
}

void Ledger::observe(const News& news) {
  looks_.push_back(Fault::names(news.faults) + "; " + news.note);
  for (const std::string& line : news.lines) looks_.back() += "\n    log " + line;
  for (const std::string& body : news.posts) ++posts_[textOf(Simulator::jsonOrText(body)["args"][0])];
  for (const unsigned number : active_) messages_[number].met |= news.faults;
  observeModem(news.faults);
  observeShelf(inbox_, news.faults);
  observeShelf(outbox_, news.faults);
  observeLog(news.lines);
  for (auto number = active_.begin(); number != active_.end();) {
    messages_[*number].last = looks_.size();
    number = messages_[*number].isDone() ? active_.erase(number) : std::next(number);
  }
}

void Ledger::observeModem(unsigned faults) {
  std::string listed;
  repeated_ = 0;
  const Simulator::Modem modem(Simulator::Modem::storeFolder);
  for (const char* const box : {"unread", "read"})
    for (const std::string& message : modem.printed(box)) listed += message;
  for (const unsigned number : active_) {
    for (Part& part : messages_[number].parts) {
      if (part.place != Part::OnModem || listed.find("\"" + part.userData + "\"") != std::string::npos)
        continue;
      part.place = Part::Taken;
      part.faults = faults;
      repeated_ += part.filed ? 1 : 0;
      note(static_cast<int>(number), "off the modem: " + part.userData);
    }
  }
}

void Ledger::observeShelf(Shelf& shelf, unsigned faults) {
  const Shelf::Changes changes = shelf.look();
  std::map<std::string, File> gone;
  for (const std::string& place : changes.gone) {
    File& file = gone[place] = files_[place];
    files_.erase(place);
    if (file.message < 0) continue;
    Message& message = note(file.message, "no longer in " + place);
    message.places.erase(place);
    message.gone = faults;
  }
  std::size_t merged = 0;  // number of parts; each save may displace a message
  for (const std::string& place : changes.came) merged += appear(place, faults);
  const std::set<std::string> displaced = changes.displaced(merged + waiting(&shelf == &inbox_));
  for (const auto& [place, file] : gone) {
    if (displaced.count(Shelf::nameOf(place)) == 0) continue;
    if (file.message < 0)
      strays_.push_back(stray(place, file));
    else if (Message& message = messages_[static_cast<unsigned>(file.message)]; message.places.empty())
      message.displaced = true;
  }
}

// The number of messages that were taken off the modem, or out of the outbox, and are not filed.
std::size_t Ledger::waiting(bool incoming) const {
  std::size_t count = incoming ? repeated_ : 0;
  for (const unsigned number : active_) {
    const Message& message = messages_[number];
    if (!incoming && message.kind == Kind::Outgoing && message.places.empty()) ++count;
    for (const Part& part : message.parts)
      if (incoming && part.place == Part::Taken && !part.filed && (part.faults & Fault::CutListing) == 0)
        ++count;
  }
  return count;
}

// Determines which message a file holds, whole or in parts.
Ledger::File Ledger::read(const std::string& content) const {
  File file;
  Json::Value record;
  file.content = content;
  if (!Simulator::readJson(content, record) || !record.isObject()) return file;
  file.retries = record["retries"].isUInt() && record["retries"].asUInt() > 0;
  const auto found = byText_.find(textOf(record["message"]));
  if (found != byText_.end()) {
    file.message = static_cast<int>(found->second);
    file.whole = true;
    return file;
  }
  for (const Json::Value& part : record["parts"]) {
    if (part.isNull()) continue;
    const auto known = byPart_.find(textOf(part));
    const int message = known == byPart_.end() ? -1 : static_cast<int>(known->second.first);
    if (message < 0 || (!file.parts.empty() && message != file.message)) {
      file.message = -1;
      return file;
    }
    file.message = message;
    file.parts.insert(known->second.second);
  }
  return file;
}

// Returns the number of parts of a concatenated message that were not filed before.
std::size_t Ledger::appear(const std::string& place, unsigned faults) {
  File& file = files_[place] = read(Simulator::readFile(Shelf::pathOf(place)));
  file.faults = faults;
  if (file.message < 0) return 0;
  Message& message = note(file.message, "in " + place);
  message.places.insert(place);
  message.displaced = false;
  message.names.insert(Shelf::nameOf(place));
  message.whole = message.whole || file.whole;
  message.retries = file.retries;
  std::size_t fresh = 0;
  for (std::size_t i = 0; i < message.parts.size(); ++i) {
    const bool filed = file.whole || file.parts.count(i) != 0;
    if (filed && !message.parts[i].filed) ++fresh;
    message.parts[i].filed = message.parts[i].filed || filed;
  }
  return message.parts.size() > 1 ? fresh : 0;
}

void Ledger::observeLog(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) {
    const unsigned fault = line.find(unanswered) != std::string::npos ? Fault::Unanswered
                           : line.find(unobeyed) != std::string::npos ? Fault::Unobeyed
                                                                      : Fault::None;
    if (fault == Fault::None) continue;
    for (const std::string& guid : guidsOf(line)) said_[guid] |= fault;
  }
}

unsigned Ledger::metBy(const Message& message) const {
  unsigned faults = message.met;
  for (const std::string& name : message.names)
    if (const auto said = said_.find(name); said != said_.end()) faults |= said->second;
  return faults;
}

Ledger::Message& Ledger::note(int message, const std::string& event) {
  Message& noted = messages_[static_cast<unsigned>(message)];
  noted.last = looks_.size();
  noted.history += "  look " + std::to_string(looks_.size()) + ": " + event + "\n";
  return noted;
}

void Ledger::died() {
  for (const unsigned number : active_) {
    Message& message = messages_[number];
    message.met |= Fault::Killed;
    for (const Part& part : message.parts)
      if (part.place == Part::OnModem) message.met |= Fault::Listed;
  }
}

void Ledger::met(unsigned faults, const std::string* within) {
  for (Message& message : messages_)
    if (within == nullptr || within->find(message.text) != std::string::npos) message.met |= faults;
}

std::vector<Ledger::Finding> Ledger::settle(const std::vector<Json::Value>& sent) const {
  std::vector<Finding> findings;
  std::map<unsigned, std::size_t> sendings;
  for (const Json::Value& one : sent) {
    const auto found = byText_.find(one["text"].asString());
    if (found == byText_.end() || messages_[found->second].number != one["recipient"].asString())
      findings.push_back({"stray: sent " + Simulator::toLine(one), nullptr, -1});
    else
      ++sendings[found->second];
  }
  for (unsigned number = 0; number < messages_.size(); ++number) {
    if (messages_[number].kind == Kind::Outgoing)
      judgeOutgoing(findings, number, sendings[number]);
    else
      judgeIncoming(findings, number, postsOf(messages_[number].text));
  }
  findings.insert(findings.end(), strays_.begin(), strays_.end());
  for (const auto& [place, file] : files_)
    if (file.message < 0) findings.push_back(stray(place, file));
  return findings;
}

// When the tool dies, the daemon files the printed part of a message as a whole message.
Ledger::Finding Ledger::stray(const std::string& place, const File& file) {
  return {"stray: " + place + ": " + file.content, windowOf(Harm::Lost, file.faults), -1};
}

std::size_t Ledger::postsOf(const std::string& text) const {
  const auto found = posts_.find(argumentOf(text));
  return found == posts_.end() ? 0 : found->second;
}

void Ledger::find(std::vector<Finding>& findings, Harm harm, unsigned number, const std::string& detail,
                  unsigned met) const {
  const Message& message = messages_[number];
  const std::string said = detail.empty() ? "" : ", " + detail;
  findings.push_back(
      {nameOf(harm) + (": " + message.text) + said, windowOf(harm, met), static_cast<int>(number)});
}

void Ledger::judgeIncoming(std::vector<Finding>& findings, unsigned number, std::size_t posts) const {
  const Message& message = messages_[number];
  const unsigned met = metBy(message);
  bool filed = message.whole;
  for (const Part& part : message.parts) {
    filed = filed || part.filed;
    if (part.place != Part::Taken) find(findings, Harm::Lost, number, "still on the modem", Fault::None);
    if (part.place == Part::Taken && !part.filed)
      find(findings, Harm::Lost, number, part.userData, part.faults | (met & Fault::Damaged));
  }
  if (filed && message.places.empty() && !message.displaced)
    find(findings, Harm::Lost, number, "filed and gone", message.gone | (met & Fault::Damaged));
  if (filed && !message.whole) find(findings, Harm::Apart, number, "", met);
  if (message.names.size() > 1) find(findings, Harm::Twice, number, "", met);
  if (message.kind == Kind::Command && message.whole && posts == 0)
    find(findings, Harm::Unobeyed, number, "", met);
  if (posts > (message.kind == Kind::Command ? std::max<std::size_t>(1, message.names.size()) : 0))
    find(findings, Harm::Twice, number, "posted " + std::to_string(posts) + " times",
         message.kind == Kind::Command ? met : Fault::None);
}

void Ledger::judgeOutgoing(std::vector<Finding>& findings, unsigned number, std::size_t sendings) const {
  const Message& message = messages_[number];
  const unsigned met = metBy(message);
  const std::string times = "sent " + std::to_string(sendings) + " times";
  if (message.places.empty() && !message.displaced)
    find(findings, Harm::Lost, number, times, met & Fault::Damaged);
  if (message.places.size() > 1) find(findings, Harm::Twice, number, times, met & Fault::Damaged);
  if (sendings > 1) find(findings, Harm::SentAgain, number, times, met);
  if (message.refused && sendings > 0)
    find(findings, Harm::Unsent, number, "was refused, " + times, Fault::None);
  if (message.isIn("sending")) find(findings, Harm::Unsent, number, "still in sending", Fault::None);
  if (message.isIn("failed") && !message.refused)
    find(findings, Harm::Unsent, number, "filed as failed, " + times, met);
  if (message.isIn("sent") && sendings == 0) find(findings, Harm::Unsent, number, "filed as sent", met);
}

void Ledger::tell(std::ostream& out, unsigned message) const {
  const Message& told = messages_[message];
  out << told.text << "\n  met: " << Fault::names(metBy(told)) << "\n" << told.history;
  const std::size_t first = told.first > 0 ? told.first - 1 : 0;
  for (std::size_t look = first; look < std::min(told.last + 1, looks_.size()); ++look)
    out << "  look " << look + 1 << ": " << looks_[look] << "\n";
  out << "\n";
}

unsigned Ledger::exposedTo(const Window& window) const {
  return static_cast<unsigned>(std::count_if(messages_.begin(), messages_.end(), [&](const Message& message) {
    return (message.kind & window.kinds) != 0 && (metBy(message) & window.fault) != 0;
  }));
}
