#include "simulator/modem/Modem.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

constexpr const char* faultNames[] = {"none", "fail", "hang", "kill", "silent"};
constexpr char serviceCentre[] = "+491710760000";

}  // namespace

Modem::Modem(std::string folder) : folder_(std::move(folder)) {
  std::filesystem::create_directories(path("unread"));
  std::filesystem::create_directories(path("read"));
}

void Modem::store(const std::string& text) {
  Json::Value now = state();
  const unsigned number = now["received"].asUInt();
  now["received"] = number + 1;
  setState(now);
  char name[16];
  std::snprintf(name, sizeof name, "%08u", number);
  // Written beside the boxes, so that no half message is listed.
  if (writeFile(path(name), text)) std::filesystem::rename(path(name), path("unread") + "/" + name);
}

void Modem::receive(const std::string& sender, const std::string& userData) {
  const unsigned number = state()["received"].asUInt();
  std::ostringstream text;
  text << "index: " << number << "\nsmsc-addr: " << serviceCentre << "\naddr: " << sender << "\nuser-data: \""
       << userData << "\"\n";
  store(text.str());
}

void Modem::receiveRaw(const std::string& listing) { store(listing); }

std::vector<std::string> Modem::messages(const std::string& box) const {
  std::vector<std::string> paths;
  for (const std::string& name : listFolder(path(box))) paths.push_back(path(box) + "/" + name);
  return paths;
}

std::string Modem::print(const std::string& box) const {
  std::string text;
  for (const std::string& message : messages(box)) text += readFile(message);
  return text;
}

std::string Modem::listUnread() {
  std::string text;
  for (const std::string& name : listFolder(path("unread"))) {
    text += readFile(path("unread/" + name));
    std::filesystem::rename(path("unread/" + name), path("read/" + name));
  }
  return text;
}

std::string Modem::listRead() const { return print("read"); }

bool Modem::deleteRead() {
  bool good = true;
  for (const std::string& message : messages("read")) good = std::remove(message.c_str()) == 0 && good;
  return good;
}

bool Modem::send(const std::string& recipient, const std::string& text) {
  const std::vector<std::string> numbers = refused();
  if (std::find(numbers.begin(), numbers.end(), recipient) != numbers.end()) return false;
  Json::Value message;
  message["recipient"] = recipient;
  message["text"] = text;
  return appendFile(path("sent"), toLine(message) + "\n");
}

std::vector<std::string> Modem::printed(const std::string& box) const {
  std::vector<std::string> texts;
  for (const std::string& message : messages(box)) texts.push_back(readFile(message));
  return texts;
}

std::size_t Modem::unread() const { return messages("unread").size(); }
std::size_t Modem::read() const { return messages("read").size(); }

std::vector<Json::Value> Modem::sent() const {
  std::vector<Json::Value> messages;
  std::istringstream lines(readFile(path("sent")));
  Json::Value message;
  for (std::string line; std::getline(lines, line);) {
    if (readJson(line, message)) messages.push_back(message);
  }
  return messages;
}

Json::Value Modem::state() const {
  Json::Value value(Json::objectValue);
  if (const std::string text = readFile(path("state")); !text.empty() && !readJson(text, value)) {
    value = Json::Value(Json::objectValue);
  }
  return value;
}

void Modem::setState(const Json::Value& state) {
  if (!writeFile(path("state"), toLine(state))) std::perror(path("state").c_str());
}

void Modem::setRefused(const std::string& number, bool refused) {
  Json::Value now = state();
  if (refused) {
    now["refused"][number] = true;
  } else {
    now["refused"].removeMember(number);
  }
  setState(now);
}

std::vector<std::string> Modem::refused() const { return state()["refused"].getMemberNames(); }

void Modem::setFault(const std::string& operation, ToolFault fault, unsigned times) {
  Json::Value now = state();
  now["faults"].removeMember(operation);
  if (fault != ToolFault::None && times > 0) {
    now["faults"][operation]["kind"] = static_cast<int>(fault);
    now["faults"][operation]["times"] = times;
  }
  setState(now);
}

void Modem::clearFaults() {
  Json::Value now = state();
  now.removeMember("faults");
  setState(now);
}

ToolFault Modem::takeFault(const std::string& operation) {
  const Json::Value fault = state()["faults"][operation];
  if (fault.isNull()) return ToolFault::None;
  const auto kind = static_cast<ToolFault>(fault["kind"].asInt());
  // A hanging tool hangs until it is put right.
  if (kind != ToolFault::Hang) setFault(operation, kind, fault["times"].asUInt() - 1);
  return kind;
}

std::vector<std::string> Modem::faults() const {
  std::vector<std::string> lines;
  const Json::Value all = state()["faults"];
  for (const std::string& operation : all.getMemberNames()) {
    const unsigned times = all[operation]["times"].asUInt();
    lines.push_back(operation + ": " + faultNames[all[operation]["kind"].asInt()] + ", " +
                    std::to_string(times) + (times == 1 ? " time" : " times"));
  }
  return lines;
}

bool Modem::hasFault(const std::string& operation) const { return state()["faults"].isMember(operation); }

void Modem::setHanging(bool hanging) {
  if (hanging) {
    appendFile(path("hanging"), "");
  } else {
    std::remove(path("hanging").c_str());
  }
}

bool Modem::hanging() const { return std::filesystem::exists(path("hanging")); }

}  // namespace Simulator
