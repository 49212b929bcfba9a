#include "veldctl/ModemStatus.h"

#include <unistd.h>

#include <cstdio>

#include "provider/SmsUtilsProvider.h"
#include "storage/MessageRecord.h"
#include "veldctl/Message.h"

namespace {
constexpr char marker[] = "/usr/lib/veld/standalone";  // only the package veld-standalone has this file
constexpr char timeLimit[] = "timeout 10 env ";        // env sets the variable in smsTool
constexpr std::size_t mostBytes = 1 << 16;

// Returns the tool's output; null if that is not a JSON object.
Json::Value ask() {
  const std::string command = std::string(timeLimit) + smsTool + "status --json </dev/null 2>/dev/null";
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return Json::nullValue;
  std::string output(mostBytes, '\0');
  output.resize(std::fread(output.data(), 1, output.size(), pipe));
  pclose(pipe);
  Json::Value answer;
  return MessageRecord::parse(output, answer) && answer.isObject() ? answer : Json::nullValue;
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

constexpr char noAnswer[] = "\"sms status --json\" does not report the state of the modem";
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
  report.add(answers ? Well : Ill, answers ? "the tool reports the state of the modem" : noAnswer);
}
