#include "veldctl/ModemStatus.h"

#include <unistd.h>

#include <cstdio>
#include <sstream>

#include "provider/SmsUtilsProvider.h"
#include "storage/MessageRecord.h"

namespace {

constexpr char marker[] = "/usr/lib/veld/standalone";  // a file of the package that has the tool
constexpr char bound[] = "timeout 10 env ";
constexpr std::size_t mostBytes = 1 << 16;

// What the tool prints; null when that is no JSON object.
Json::Value ask() {
  const std::string command = std::string(bound) + smsTool + "status --json </dev/null 2>/dev/null";
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return Json::nullValue;
  std::string said(mostBytes, '\0');
  said.resize(std::fread(said.data(), 1, said.size(), pipe));
  pclose(pipe);
  std::istringstream stream(said);
  Json::Value answer;
  std::string errors;
  return MessageRecord::parse(stream, answer, errors) && answer.isObject() ? answer : Json::nullValue;
}

std::string textOf(const Json::Value& answer, const char* key) {
  const Json::Value& value = MessageRecord::member(answer, key);
  return value.isConvertibleTo(Json::stringValue) ? value.asString() : "";
}

void addCount(Report& report, const Json::Value& answer, const char* key, const char* metric) {
  const Json::Value& value = MessageRecord::member(answer, key);
  if (value.isInt64()) report.add(Well, "", {metric, value.asInt64(), {}});
}

void addRoom(Report& report, const Json::Value& answer) {
  const Json::Value& room = MessageRecord::member(answer, "room");
  if (!room.isInt64()) return;
  const bool isFull = room.asInt64() <= 0;
  report.add(isFull ? Look : Well, isFull ? "the modem has no room for another message" : "",
             {"modem_room", room.asInt64(), {}});
}

std::string describe(const Json::Value& answer) {
  return "the modem: " + textOf(answer, "modem") + ", SIM " + textOf(answer, "sim") + ", " +
         textOf(answer, "registration") + " " + textOf(answer, "operator") + ", signal " +
         textOf(answer, "signal") + " %";
}

constexpr char noAnswer[] = "the tool does not say how the modem is: sms status --json";

}  // namespace

bool ModemStatus::isKnown() { return access(marker, F_OK) == 0; }

void ModemStatus::report(Report& report) {
  const Json::Value answer = ask();
  const std::string problem = textOf(answer, "problem");
  const bool isWell = answer.isObject() && problem.empty();
  std::string text = isWell ? describe(answer) : "the modem: " + problem;
  if (answer.isNull()) text = noAnswer;
  Json::Value more(Json::objectValue);
  more["modem"] = answer;
  report.add(isWell ? Well : Ill, text, {"modem_well", isWell ? 1 : 0, {}}, more);
  addCount(report, answer, "signal", "modem_signal_percent");
  addCount(report, answer, "stored", "modem_stored");
  addRoom(report, answer);
}

void ModemStatus::check(Report& report) {
  const bool answers = !ask().isNull();
  report.add(answers ? Well : Ill, answers ? "the tool says how the modem is" : noAnswer);
}
