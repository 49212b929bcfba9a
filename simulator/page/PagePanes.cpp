#include "simulator/page/PagePanes.h"

#include <sstream>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

std::string timeOf(std::time_t when) {
  char text[32];
  tm parts{};
  localtime_r(&when, &parts);
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  return text;
}

template <typename Values>
Json::Value arrayOf(const Values& values) {
  Json::Value array(Json::arrayValue);
  for (const auto& value : values) array.append(value);
  return array;
}

Json::Value modem(const Modem& modem) {
  Json::Value pane;
  for (const char* box : {"unread", "read"}) pane[box] = arrayOf(modem.printed(box));
  pane["refused"] = arrayOf(modem.refused());
  pane["sent"] = Json::UInt64(modem.sent().size());
  return pane;
}

Json::Value requests(const LocalApiServer& api) {
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

Json::Value phones(const Phones& phones) {
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

Json::Value folders() {
  Json::Value pane;
  for (const std::string& box : Gateway::boxes()) pane[box] = arrayOf(Gateway::records(box));
  return pane;
}

// The numbers that may send commands, and what these must begin with.
Json::Value settings(const Json::Value& all) {
  Json::Value pane;
  const Json::Value& commands = all["smsCommands"];
  if (!commands.isObject()) return pane;
  for (const char* key : {"whitelist", "password", "enabled"}) pane[key] = commands[key];
  return pane;
}

}  // namespace

void PagePanes::look() {
  const Interpreter::Turn turn = interpreter_.tryTurn();
  if (turn) lookAlone();
  daemon_["busy"] = !turn.owns_lock();
  panes_["daemon"] = toLine(daemon_);
  lookFreely();
}

void PagePanes::lookAlone() {
  interpreter_.carryOut();
  DaemonProcess& daemon = interpreter_.gateway().daemon();
  daemon_["running"] = daemon.running();
  daemon_["process"] = daemon.pid();
  daemon_["ending"] = daemon.ending();
  std::istringstream lines(interpreter_.execute("faults").text);
  Json::Value faults(Json::arrayValue);
  for (std::string line; std::getline(lines, line);) faults.append(line);
  panes_["faults"] = toLine(faults);
  panes_["events"] = toLine(arrayOf(interpreter_.carriedOut()));
}

void PagePanes::lookFreely() {
  Gateway& gateway = interpreter_.gateway();
  const std::time_t now = gateway.clock().now();
  const std::vector<Json::Value> sent = gateway.modem().sent();
  for (; sentSeen_ < sent.size(); ++sentSeen_) {
    const Json::Value& message = sent[sentSeen_];
    gateway.phones().got(message["recipient"].asString(), message["text"].asString(), now);
  }
  panes_["clock"] = toLine(timeOf(now));
  panes_["modem"] = toLine(modem(gateway.modem()));
  panes_["phones"] = toLine(phones(gateway.phones()));
  panes_["folders"] = toLine(folders());
  panes_["requests"] = toLine(requests(gateway.api()));
  panes_["settings"] = toLine(settings(gateway.settings().value()));
}

}  // namespace Simulator
