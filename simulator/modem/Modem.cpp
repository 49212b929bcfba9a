#include "simulator/modem/Modem.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <sstream>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {
// Nobody has this number: the United Kingdom reserves 07700 900000 to 900999 for fiction.
constexpr char serviceCentre[] = "+447700900123";
}  // namespace

Modem::Modem(std::string folder) : folder_(std::move(folder)) {
  std::filesystem::create_directories(path("unread"));
  std::filesystem::create_directories(path("read"));
}

void Modem::receive(const std::string& sender, const std::string& userData) {
  receiveRaw("index: " + std::to_string(state()["received"].asUInt()) + "\nsmsc-addr: " + serviceCentre +
             "\naddr: " + sender + "\nuser-data: \"" + userData + "\"\n");
}

void Modem::receiveRaw(const std::string& listing) {
  Json::Value now = state();
  const unsigned number = now["received"].asUInt();
  now["received"] = number + 1;
  write("state", toLine(now));
  char name[16];
  std::snprintf(name, sizeof name, "%08u", number);
  // The file is complete before it is moved into the folder, so the tool never lists half a message.
  if (writeFile(path(name), listing)) std::filesystem::rename(path(name), path("unread/") + name);
}

std::vector<std::string> Modem::printed(const std::string& state) const {
  std::vector<std::string> texts;
  const std::string folder = path(state + "/");
  for (const std::string& name : listFolder(folder)) texts.push_back(readFile(folder + name));
  return texts;
}

void Modem::markRead() {
  for (const std::string& name : listFolder(path("unread")))
    std::filesystem::rename(path("unread/" + name), path("read/" + name));
}

bool Modem::deleteRead() {
  bool good = true;
  for (const std::string& name : listFolder(path("read")))
    good = std::remove(path("read/" + name).c_str()) == 0 && good;
  return good;
}

bool Modem::send(const std::string& recipient, const std::string& text) {
  if (state()["refused"].isMember(recipient)) return false;
  return appendFile(path("sent"), toLine(object({{"recipient", recipient}, {"text", text}})) + "\n");
}

std::vector<Json::Value> Modem::sent() const {
  std::vector<Json::Value> messages;
  std::istringstream lines(readFile(path("sent")));
  Json::Value message;
  for (std::string line; std::getline(lines, line);)
    if (readJson(line, message)) messages.push_back(message);
  return messages;
}

Json::Value Modem::state() const {
  Json::Value value;
  return readJson(readFile(path("state")), value) ? value : object({});
}

void Modem::write(const std::string& name, const std::string& content) {
  if (!writeFile(path(name), content)) std::perror(path(name).c_str());
}

void Modem::setRefused(const std::string& number, bool refused) {
  Json::Value now = state();
  now["refused"].removeMember(number);
  if (refused) now["refused"][number] = true;
  write("state", toLine(now));
}

std::vector<std::string> Modem::refused() const { return state()["refused"].getMemberNames(); }

void Modem::setFault(const std::string& operation, ToolFault fault, unsigned times) {
  Json::Value now = state();
  now["faults"].removeMember(operation);
  if (fault != ToolFault::None && times > 0) {
    now["faults"][operation]["kind"] = static_cast<int>(fault);
    now["faults"][operation]["times"] = times;
  }
  write("state", toLine(now));
}

void Modem::clearFaults() {
  Json::Value now = state();
  now.removeMember("faults");
  write("state", toLine(now));
}

ToolFault Modem::takeFault(const std::string& operation) {
  const Json::Value fault = state()["faults"][operation];
  if (fault.isNull()) return ToolFault::None;
  const auto kind = static_cast<ToolFault>(fault["kind"].asInt());
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

bool Modem::hangs(const std::string& operation) const {
  return state()["faults"][operation]["kind"] == static_cast<int>(ToolFault::Hang);
}

std::string Modem::hangingOperation() const {
  const std::string operation = readFile(path("hanging"));
  return !operation.empty() && hangs(operation) ? operation : "";
}

unsigned Modem::hangingSeconds() const {
  struct stat status = {};
  if (stat(path("hanging").c_str(), &status) != 0) return 0;
  return static_cast<unsigned>(std::max<std::time_t>(0, std::time(nullptr) - status.st_mtim.tv_sec));
}
}  // namespace Simulator
