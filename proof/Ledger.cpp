#include "proof/Ledger.h"

#include <sys/stat.h>

#include <algorithm>
#include <regex>

#include "simulator/gateway/MessageFolders.h"
#include "simulator/modem/Modem.h"
#include "simulator/support/Files.h"

namespace {
std::string textOf(const Json::Value& value) { return value.isString() ? value.asString() : ""; }

// The first argument of a command, which identifies its request.
std::string argumentOf(const std::string& command) {
  const std::size_t begin = command.find(' ', command.find('#')) + 1;
  return command.substr(begin, command.find(' ', begin) - begin);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// Changes whenever the file is written or replaced. The time has a resolution of some milliseconds.
std::string versionOf(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return "";
  return std::to_string(status.st_ino) + "." + std::to_string(status.st_mtim.tv_nsec) + "." +
         std::to_string(status.st_size);
}
}  // namespace

bool Ledger::Message::isIn(const std::string& box) const {
  const std::string folder = Simulator::MessageFolders::pathOf(box) + "/";
  return std::any_of(paths.begin(), paths.end(),
                     [&](const auto& path) { return path.rfind(folder, 0) == 0; });
}

bool Ledger::Message::isDone() const {
  if (kind == Kind::Outgoing)
    return displaced || (!isIn("sending") && (isIn("sent") || (isIn("failed") && !retries)));
  return whole && std::none_of(parts.begin(), parts.end(),
                               [](const Part& part) { return part.place == Part::OnModem; });
}

std::size_t Ledger::enter(Message message) {
  const std::size_t number = messages_.size();
  byText_[message.text] = number;
  message.first = history_.size();
  messages_.push_back(std::move(message));
  return number;
}

std::size_t Ledger::enterIncoming(const std::string& text, unsigned kind,
                                  const std::vector<std::pair<std::string, std::string>>& parts) {
  const std::size_t number = enter({text, "", kind});
  for (const auto& [userData, partText] : parts) {
    byPart_[partText] = {number, messages_[number].parts.size()};
    messages_[number].parts.push_back({userData});
  }
  return number;
}

void Ledger::arrived(std::size_t message, std::size_t part) {
  underWay_.insert(message);
  messages_[message].parts[part].place = Part::OnModem;
}

void Ledger::enterQueued(const std::string& text, const std::string& recipient, bool refused) {
  underWay_.insert(enter({text, recipient, Kind::Outgoing, refused}));
}

void Ledger::accept() {
  for (Message& message : messages_) message.refused = false;
}

void Ledger::observe(const News& news) {
  history_.push_back(news.note);
  for (const std::string& body : news.posts) posts_.insert(textOf(Simulator::jsonOrText(body)["args"][0]));
  for (const std::size_t number : underWay_) messages_[number].met |= news.faults;
  observeModem();
  observeFolders({"received"}, inbox_, news.faults);
  observeFolders({"sending", "sent", "failed"}, outbox_, news.faults);
  for (const std::string& line : news.lines) observeLog(line);
  for (auto number = underWay_.begin(); number != underWay_.end();) {
    messages_[*number].last = history_.size();
    number = messages_[*number].isDone() ? underWay_.erase(number) : std::next(number);
  }
}

void Ledger::observeModem() {
  std::string listed;
  const Simulator::Modem modem(Simulator::Modem::storeFolder);
  for (const char* const box : {"unread", "read"})
    for (const std::string& message : modem.printed(box)) listed += message;
  for (const std::size_t number : underWay_)
    for (Part& part : messages_[number].parts) {
      const bool isListed = listed.find("\"" + part.userData + "\"") != std::string::npos;
      if (part.place != Part::OnModem || isListed) continue;
      part.place = Part::Taken;
      tell("off the modem: " + part.userData);
    }
}

// The folders share one limit.
void Ledger::observeFolders(const std::vector<std::string>& folders, Files& files, unsigned faults) {
  std::set<std::string> names;
  Files gone;
  for (const auto& [path, file] : files) {
    names.insert(nameOf(path));
    if (versionOf(path) != file.version) gone[path] = file;
  }
  for (const auto& [path, file] : gone) {
    tell("no longer in " + path);
    files.erase(path);
    if (file.message) messages_[*file.message].paths.erase(path);
  }
  std::size_t saves = 0;
  for (const std::string& box : folders)
    for (const std::string& name : Simulator::listFolder(Simulator::MessageFolders::pathOf(box))) {
      const std::string path = Simulator::MessageFolders::pathOf(box) + "/" + name;
      if (files.count(path) == 0) saves += appear(path, files[path] = read(path, faults));
    }
  for (const std::size_t number : underWay_)
    if (messages_[number].paths.empty()) saves += messages_[number].saves();
  // Each save displaces the smallest name when the limit is reached.
  while (!names.empty() && names.size() + saves > limit_) names.erase(names.begin());
  for (const auto& [path, file] : gone) {
    if (files.count(path) != 0 || names.count(nameOf(path)) != 0) continue;
    if (!file.message) strays_.push_back(strayIn(path, file));
    if (file.message && messages_[*file.message].paths.empty()) messages_[*file.message].displaced = true;
  }
}

// Returns the number of saves that the file may have needed.
std::size_t Ledger::appear(const std::string& path, const File& file) {
  tell("in " + path + ": " + file.content);
  if (!file.message) return 1;
  Message& message = messages_[*file.message];
  message.paths.insert(path);
  message.names.insert(nameOf(path));
  message.displaced = false;
  message.whole = message.whole || file.whole;
  message.retries = file.retries;
  for (std::size_t i = 0; i < message.parts.size(); ++i)
    if (file.whole || file.parts.count(i) != 0) message.parts[i].filed = true;
  return message.saves();
}

// Determines which message a file holds, whole or in parts.
Ledger::File Ledger::read(const std::string& path, unsigned faults) const {
  File file{versionOf(path), Simulator::readFile(path), faults};
  Json::Value record;
  if (!Simulator::readJson(file.content, record) || !record.isObject()) return file;
  file.retries = record["retries"].isUInt() && record["retries"].asUInt() > 0;
  if (const auto found = byText_.find(textOf(record["message"])); found != byText_.end()) {
    file.message = found->second;
    file.whole = true;
    return file;
  }
  for (const Json::Value& part : record["parts"]) {
    if (part.isNull()) continue;
    const auto known = byPart_.find(textOf(part));
    if (known == byPart_.end() || (file.message && file.message != known->second.first))
      return {file.version, file.content, faults};
    file.message = known->second.first;
    file.parts.insert(known->second.second);
  }
  return file;
}

void Ledger::observeLog(const std::string& line) {
  static const std::regex guid("[0-9]+");
  tell("log " + line);
  unsigned said = 0;
  if (line.find("SMS command in message") != std::string::npos) said = Fault::Unobeyed;  // or perhaps not
  if (line.find("was begun and never answered") != std::string::npos) said = Fault::Unanswered;
  for (std::sregex_iterator found(line.begin(), line.end(), guid); found != std::sregex_iterator(); ++found)
    said_[found->str()] |= said;
}

unsigned Ledger::metBy(const Message& message) const {
  unsigned faults = message.met;
  for (const std::string& name : message.names)
    if (const auto said = said_.find(name); said != said_.end()) faults |= said->second;
  return faults;
}

void Ledger::died() {
  for (const std::size_t number : underWay_)
    for (const Part& part : messages_[number].parts)
      if (part.place == Part::OnModem) messages_[number].met |= Fault::Listed;
}

void Ledger::met(unsigned faults, const std::string* within) {
  for (Message& message : messages_)
    if (within == nullptr || within->find(message.text) != std::string::npos) message.met |= faults;
}

std::vector<Ledger::Finding> Ledger::settle(const std::vector<Json::Value>& sent) const {
  std::vector<Finding> findings = strays_;
  for (const Files& files : {inbox_, outbox_})
    for (const auto& [path, file] : files)
      if (!file.message) findings.push_back(strayIn(path, file));
  std::multiset<std::size_t> sendings;
  for (const Json::Value& one : sent) {
    const auto found = byText_.find(one["text"].asString());
    if (found == byText_.end() || messages_[found->second].recipient != one["recipient"].asString())
      findings.push_back({"stray: sent " + Simulator::toLine(one)});
    else
      sendings.insert(found->second);
  }
  for (std::size_t number = 0; number < messages_.size(); ++number) {
    const Message& message = messages_[number];
    const Find find = [&](unsigned harm, const std::string& detail, unsigned faults) {
      const Window* const window = windowOf(harm, message.kind, faults);
      findings.push_back({Harm::name(harm) + ": " + message.text + detail, window,
                          window == nullptr ? historyOf(message) : ""});
    };
    if (message.kind == Kind::Outgoing)
      judgeOutgoing(message, sendings.count(number), find);
    else
      judgeIncoming(message, posts_.count(argumentOf(message.text)), find);
  }
  return findings;
}

// When the tool dies, the daemon files the printed part of a message as a whole message.
Ledger::Finding Ledger::strayIn(const std::string& path, const File& file) {
  return {"stray: " + path + ": " + file.content, windowOf(Harm::Lost, Kind::Incoming, file.faults)};
}

void Ledger::judgeIncoming(const Message& message, std::size_t posts, const Find& find) const {
  const unsigned met = metBy(message);
  const bool obeyed = message.kind == Kind::Command;
  bool filed = message.whole;
  for (const Part& part : message.parts) {
    filed = filed || part.filed;
    if (part.place != Part::Taken)
      find(Harm::Lost, ", still on the modem", 0);
    else if (!part.filed)
      find(Harm::Lost, ", " + part.userData, met);
  }
  if (filed && message.paths.empty() && !message.displaced) find(Harm::Lost, ", filed and gone", met);
  if (filed && !message.whole) find(Harm::Apart, "", met);
  if (message.names.size() > 1) find(Harm::Twice, "", met);
  if (obeyed && message.whole && posts == 0) find(Harm::Unobeyed, "", met);
  if (posts > (obeyed ? std::max<std::size_t>(1, message.names.size()) : 0))
    find(Harm::Twice, ", posted " + std::to_string(posts) + " times", obeyed ? met : 0);
}

void Ledger::judgeOutgoing(const Message& message, std::size_t sendings, const Find& find) const {
  const unsigned met = metBy(message);
  const std::string times = ", sent " + std::to_string(sendings) + " times";
  if (message.paths.empty() && !message.displaced) find(Harm::Lost, times, met);
  if (message.paths.size() > 1) find(Harm::Twice, times, met);
  if (sendings > 1) find(Harm::SentAgain, times, met);
  if (message.refused && sendings > 0) find(Harm::Unsent, ", was refused" + times, 0);
  if (message.isIn("sending")) find(Harm::Unsent, ", still in sending", 0);
  if (message.isIn("failed") && !message.refused) find(Harm::Unsent, ", filed as failed" + times, met);
  if (message.isIn("sent") && sendings == 0) find(Harm::Unsent, ", filed as sent", met);
}

std::string Ledger::historyOf(const Message& message) const {
  std::string text;
  for (const Window& window : windows)
    if ((window.fault & metBy(message)) != 0) text += std::string("  met: ") + window.name + "\n";
  for (std::size_t look = message.first; look < std::min(message.last + 1, history_.size()); ++look)
    text += "  look " + std::to_string(look + 1) + ": " + history_[look] + "\n";
  return text;
}
