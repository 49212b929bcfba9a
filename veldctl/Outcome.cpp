#include "veldctl/Outcome.h"

#include <algorithm>
#include <fstream>
#include <iostream>

#include "provider/SmsUtilsProvider.h"
#include "storage/MessageStatus.h"
#include "veldctl/FolderWatch.h"
#include "veldctl/Output.h"
#include "veldctl/Times.h"

namespace {
using namespace MessageStatus;

constexpr std::time_t moveSeconds = 5;  // seconds that a message may be missing while the daemon moves it
constexpr int longestWait = 1000;       // milliseconds
constexpr std::int64_t second = 1'000'000'000;  // in nanoseconds

// Returns the last line that follows the offset `logged` in the send log.
std::string reasonFrom(std::streamoff logged) {
  std::ifstream log(sendLog);
  log.seekg(logged);
  std::string reason = "the tool printed nothing";
  for (std::string line; std::getline(log, line);)
    if (!line.empty()) reason = line;
  return reason;
}

// Fills in `outcome` if the message was sent or has failed. Returns false if neither has happened.
bool readOutcome(const Folders& folders, std::streamoff logged, Outcome& outcome) {
  const std::int64_t sent = folders.changed(Sent, outcome.guid);
  const std::int64_t failed = folders.changed(Failed, outcome.guid);
  if (sent == 0 && failed == 0) return false;
  outcome.status = sent != 0 ? Done : Bad;
  outcome.time = static_cast<std::time_t>(std::max(sent, failed) / second);
  if (sent == 0) outcome.reason = reasonFrom(logged);
  return true;
}

const char* nameOf(ExitStatus status) {
  if (status == Done) return "sent";
  return status == Bad ? "failed" : "unknown";
}
}  // namespace

std::streamoff endOfSendLog() {
  const std::streamoff end = std::ifstream(sendLog, std::ios::ate).tellg();
  return std::max<std::streamoff>(end, 0);  // tellg() returns -1 if there is no log
}

Outcome awaitOutcome(const Folders& folders, const std::string& guid, unsigned seconds,
                     std::streamoff logged) {
  Outcome outcome;
  outcome.guid = guid;
  FolderWatch watch(folders, {Sending, Sent, Failed});
  const std::time_t begin = std::time(nullptr);
  for (std::time_t lastQueued = begin; !readOutcome(folders, logged, outcome); watch.wait(longestWait)) {
    const std::time_t now = std::time(nullptr);
    if (folders.changed(Sending, guid) != 0) lastQueued = now;
    if (now - lastQueued > moveSeconds) outcome.reason = "its file has disappeared";
    if (now - begin >= static_cast<std::time_t>(seconds)) outcome.reason = "it is still queued";
    if (!outcome.reason.empty()) break;
  }
  return outcome;
}

int printOutcome(const Outcome& outcome, bool isJson) {
  const bool isKnown = outcome.status != Unknown;
  if (isJson) {
    Json::Value row;
    row["guid"] = outcome.guid;
    row["outcome"] = nameOf(outcome.status);
    if (!outcome.reason.empty()) row["reason"] = outcome.reason;
    if (isKnown) row["time"] = Times::withZone(outcome.time);
    std::cout << Output::line(row) << '\n';
  } else if (outcome.status != Done) {
    Output::complain(outcome.guid + (isKnown ? " failed: " : ": ") + outcome.reason);
  }
  return outcome.status;
}
