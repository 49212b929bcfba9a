#include "veldctl/Follow.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Output.h"

namespace {

constexpr int lookInterval = 30'000;  // milliseconds
constexpr std::int64_t writing = 2;   // seconds for which a file may be half written
const std::vector<int> told = {MessageStatus::Received, MessageStatus::Sent, MessageStatus::Failed};

// Prints what `known` does not know, which holds by folder and name the time of the file, negative for a
// message that lacks parts. False when nobody takes it.
bool tell(const Folders& folders, Json::Value& known, bool quiet, bool acknowledged) {
  Json::Value before(Json::objectValue);
  known.swap(before);
  for (const auto& [name, status] : folders.names(told)) {
    const std::string event = MessageStatus::text(status), key = std::string(event).append("/").append(name);
    const std::int64_t then = before.get(key, 0).asInt64();
    if (then != 0) known[key] = Json::Int64(then);
    if (folders.changed(status, name) == std::llabs(then)) continue;
    const std::optional<Message> message = folders.read(status, name);
    if (!message ||
        (!message->fault.empty() && std::time(nullptr) - message->changed / 1'000'000'000 < writing))
      continue;
    const bool lacksParts = MessageRecord::has(message->record, MessageRecord::Key::Parts);
    known[key] = Json::Int64(lacksParts ? -message->changed : message->changed);
    if (quiet || (lacksParts && then < 0)) continue;
    if (!message->fault.empty() && Output::complain(folders.path(status, name) + ": " + message->fault))
      continue;
    Json::Value line;
    line["event"] = then < 0 ? "completed" : event;
    line["guid"] = name;
    line["record"] = message->record;
    std::string answer;
    std::cout << Output::line(line) << std::endl;
    if (!std::cout || (acknowledged && !std::getline(std::cin, answer))) return false;
  }
  return true;
}

}  // namespace

FolderWatch::FolderWatch(const Folders& folders, std::vector<int> statuses)
    : folders_(folders), statuses_(std::move(statuses)), events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  watch();
}

// Again and again: a folder may have been made anew.
void FolderWatch::watch() const {
  for (const int status : statuses_)
    inotify_add_watch(events_, folders_.path(status).c_str(),
                      IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVE);
}

bool FolderWatch::wait(int milliseconds) {
  pollfd watched[] = {{events_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
  poll(watched, std::size(watched), milliseconds);
  char events[4096];
  while (read(events_, events, sizeof(events)) > 0) continue;
  watch();
  return (watched[1].revents & POLLERR) == 0;
}

void follow(const Folders& folders, const std::string& state, bool acknowledged) {
  FolderWatch watch(folders, told);
  Json::Value known(Json::objectValue), noted;
  std::string errors;
  std::ifstream stream(state);
  const auto isTime = [](const Json::Value& value) { return value.isInt64(); };
  if (!stream.is_open()) {
    tell(folders, known, true, false);
  } else if (stream.peek() != EOF && !(MessageRecord::parse(stream, known, errors) && known.isObject() &&
                                       std::all_of(known.begin(), known.end(), isTime))) {
    Output::complain(state + " is no state file: everything is told again");
    known = Json::objectValue;
  }
  while (tell(folders, known, false, acknowledged)) {
    if (!state.empty() && known != noted) replaceFile(state, state + ".new", Output::line(known) + "\n");
    noted = known;
    if (!watch.wait(lookInterval)) return;
  }
}
