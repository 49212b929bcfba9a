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

Json::Value daemonPane(const Interpreter& interpreter, Gateway& gateway) {
  Json::Value pane;
  pane["running"] = gateway.daemon().running();
  pane["process"] = gateway.daemon().pid();
  pane["ending"] = gateway.daemon().ending();
  pane["hang"] = gateway.hang();
  pane["busy"] = interpreter.busy();
  return pane;
}

Json::Value modemPane(const Modem& modem) {
  Json::Value pane;
  for (const char* box : {"unread", "read"}) pane[box] = arrayOf(modem.printed(box));
  pane["sent"] = Json::UInt64(modem.sent().size());
  return pane;
}

Json::Value requestsPane(const LocalApiServer& api) {
  Json::Value pane(Json::arrayValue);
  for (const LocalApiServer::Request& request : api.requests()) {
    Json::Value value;
    value["method"] = request.method;
    value["path"] = request.path;
    value["body"] = request.body;
    value["code"] = request.code;
    pane.append(value);
  }
  return pane;
}

Json::Value phonesPane(const Phones& phones) {
  Json::Value pane(Json::arrayValue);
  for (const Phones::Text& text : phones.texts()) {
    Json::Value value;
    value["number"] = text.number;
    value["text"] = text.text;
    value["written"] = text.written;
    value["time"] = timeOf(text.when);
    pane.append(value);
  }
  return pane;
}

Json::Value foldersPane() {
  Json::Value pane;
  for (const char* box : MessageFolders::boxes) pane[box] = arrayOf(MessageFolders::records(box));
  return pane;
}

// The numbers that may send commands, and what these must begin with.
Json::Value settingsPane(const Json::Value& all) {
  Json::Value pane;
  const Json::Value& commands = all["smsCommands"];
  if (!commands.isObject()) return pane;
  for (const char* key : {"whitelist", "password", "enabled"}) pane[key] = commands[key];
  return pane;
}

Json::Value eventsPane(const Responder& responder) {
  Json::Value pane(Json::arrayValue);
  for (const Responder::Event& event : responder.events()) {
    Json::Value value;
    value["text"] = event.text;
    value["reboot"] = event.isReboot;
    pane.append(value);
  }
  return pane;
}

// What the log says of a command that was refused, and what that means.
struct Refusal {
  const char* said;
  const char* meaning;
};
constexpr Refusal refusals[] = {
    {"phone number not in white list", "not on the whitelist"},
    {"password did not match", "wrong password"},
    {"Invalid command string", "no such command"},
    {"Bad command, either not enabled", "switched off"},
};

}  // namespace

// The daemon writes down which text it decides on, and then why it refuses.
void Panes::readLog(SyslogServer& syslog) {
  const std::string before = "SMS commands processing message [";
  const std::string between = "] from recipient [";
  for (const SyslogServer::Line& line : syslog.lines(logSeen_)) {
    ++logSeen_;
    const std::size_t text = line.text.find(before);
    const std::size_t end = line.text.rfind(between);
    if (text != std::string::npos && end != std::string::npos) {
      const std::size_t begin = text + before.size();
      const std::string number = line.text.substr(end + between.size());
      judged_ = number.substr(0, number.size() - 1) + " " + line.text.substr(begin, end - begin);
      refusals_.removeMember(judged_);
    }
    for (const Refusal& refusal : refusals)
      if (line.text.find(refusal.said) != std::string::npos) refusals_[judged_] = refusal.meaning;
  }
}

void Panes::look() {
  interpreter_.carryOut();
  const auto turn = interpreter_.lock();
  Gateway& gateway = interpreter_.gateway();
  const std::time_t now = gateway.clock().now();
  const std::vector<Json::Value> sent = gateway.modem().sent();
  for (; sentSeen_ < sent.size(); ++sentSeen_)
    gateway.phones().add(
        {sent[sentSeen_]["recipient"].asString(), sent[sentSeen_]["text"].asString(), false, now});
  readLog(gateway.syslog());
  const std::map<std::string, Json::Value> panes{
      {"daemon", daemonPane(interpreter_, gateway)},
      {"clock", timeOf(now)},
      {"modem", modemPane(gateway.modem())},
      {"phones", phonesPane(gateway.phones())},
      {"folders", foldersPane()},
      {"requests", requestsPane(gateway.api())},
      {"settings", settingsPane(gateway.settings().value())},
      {"faults", arrayOf(gateway.faults())},
      {"events", eventsPane(gateway.responder())},
      {"refusals", refusals_},
  };
  for (const auto& [name, pane] : panes) panes_[name] = toLine(pane);
}

}  // namespace Simulator
