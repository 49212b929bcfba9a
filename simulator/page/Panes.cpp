#include "simulator/page/Panes.h"

#include "simulator/support/Files.h"

namespace Simulator {
namespace {
std::string timeOf(std::time_t when) {
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&when));
  return text;
}

template <typename Values>
Json::Value arrayOf(const Values& values) {
  Json::Value array(Json::arrayValue);
  for (const auto& value : values) array.append(value);
  return array;
}

Json::Value daemonPane(Gateway& gateway) {
  std::string hang = gateway.hang();
  if (!hang.empty()) hang += " for " + std::to_string(gateway.hangSeconds()) + " s";
  DaemonProcess& daemon = gateway.daemon;
  return object({{"running", daemon.running()},
                 {"process", daemon.pid()},
                 {"ending", daemon.ending()},
                 {"hang", hang}});
}

Json::Value modemPane(const Modem& modem) {
  return object({{"unread", arrayOf(modem.printed("unread"))}, {"read", arrayOf(modem.printed("read"))}});
}

Json::Value requestsPane(const LocalApiServer& api, const Responder& responder) {
  Json::Value pane(Json::arrayValue);
  for (const auto& [method, path, body, answered, code] : api.requests())
    pane.append(
        object({{"method", method}, {"path", path}, {"body", body}, {"answered", answered}, {"code", code}}));
  for (const auto& [request, text] : responder.events())
    pane[static_cast<Json::ArrayIndex>(request)]["outcome"] = text;
  return pane;
}

Json::Value phonesPane(const Phones& phones) {
  Json::Value pane(Json::arrayValue);
  for (const auto& [number, text, written, when] : phones.texts)
    pane.append(object({{"number", number}, {"text", text}, {"written", written}, {"time", timeOf(when)}}));
  return pane;
}

Json::Value foldersPane() {
  Json::Value pane;
  for (const char* name : MessageFolders::names) pane[name] = arrayOf(MessageFolders::records(name));
  return pane;
}

// Returns the settings that decide who may send commands.
Json::Value settingsPane(const Json::Value& all) {
  const Json::Value& commands = all["smsCommands"];
  if (!commands.isObject()) return Json::nullValue;
  return object({{"whitelist", commands["whitelist"]},
                 {"password", commands["password"]},
                 {"enabled", commands["enabled"]}});
}

// For each log line about a refused command: a part of the line, and the reason that the page shows.
constexpr std::pair<const char*, const char*> refusals[] = {
    {"phone number not in white list", "not on the whitelist"},
    {"password did not match", "wrong password"},
    {"Invalid command string", "no such command"},
    {"Bad command, either not enabled", "switched off"},
};
}  // namespace

// Reads from the log why the daemon refused a command. The daemon first logs the text, and then the reason.
void Panes::readLog(SyslogServer& syslog) {
  const std::string before = "SMS commands processing message [";
  const std::string between = "] from recipient [";
  for (const SyslogServer::Line& line : syslog.lines(nextLine_)) {
    ++nextLine_;
    const std::size_t text = line.text.find(before);
    const std::size_t end = line.text.rfind(between);
    if (text != std::string::npos && end != std::string::npos) {
      const std::size_t begin = text + before.size();
      const std::string number = line.text.substr(end + between.size());
      checked_ = number.substr(0, number.size() - 1) + " " + line.text.substr(begin, end - begin);
      refusals_.removeMember(checked_);
    }
    for (const auto& [reason, meaning] : refusals)
      if (line.text.find(reason) != std::string::npos) refusals_[checked_] = meaning;
  }
}

std::map<std::string, std::string> Panes::read() {
  interpreter_.carryOut();
  const auto turn = interpreter_.lock();
  Gateway& gateway = interpreter_.gateway();
  const std::time_t now = gateway.clock.now();
  const std::vector<Json::Value> sent = gateway.modem.sent();
  for (; nextSent_ < sent.size(); ++nextSent_)
    gateway.phones.texts.push_back(
        {sent[nextSent_]["recipient"].asString(), sent[nextSent_]["text"].asString(), false, now});
  readLog(gateway.syslog);
  return {
      {"daemon", toLine(daemonPane(gateway))},
      {"clock", toLine(timeOf(now))},
      {"modem", toLine(modemPane(gateway.modem))},
      {"phones", toLine(phonesPane(gateway.phones))},
      {"folders", toLine(foldersPane())},
      {"requests", toLine(requestsPane(gateway.api, gateway.responder))},
      {"settings", toLine(settingsPane(gateway.settings.value()))},
      {"faults", toLine(arrayOf(gateway.faults()))},
      {"refusals", toLine(refusals_)},
  };
}
}  // namespace Simulator
