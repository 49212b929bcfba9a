#include "veldctl/Census.h"

#include <algorithm>
#include <ctime>

#include "daemon/StartUp.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Times.h"

namespace {
using namespace MessageStatus;

constexpr std::int64_t longQueued = 600;  // seconds; normally a message waits only for the next pass
constexpr std::size_t mostNamed = 5;      // guids in one line

// What inspect() has counted in the message folders.
struct Census {
  std::int64_t broken = 0, dangerous = 0, incomplete = 0, retried = 0, seen = 0, outbox = 0;
  std::vector<std::string> permanent;  // guids of permanently failed messages that are not marked as seen
  std::int64_t oldestQueued = 0;       // age in seconds
  Message lastReceived, lastSent;      // the name is empty if there is no such message
};

void keepLater(Message& last, const Message& message) {
  if (last.name.empty() || message.changed > last.changed) last = message;
}

void countFailed(Census& census, const Message& message) {
  if (!message.hasFailedPermanently())
    ++census.retried;
  else if (message.isSeen())
    ++census.seen;
  else
    census.permanent.push_back(message.name);
}

void count(Census& census, const Message& message) {
  if (MessageRecord::has(message.record, MessageRecord::Key::Parts)) ++census.incomplete;
  if (!message.danger.empty()) ++census.dangerous;
  const std::int64_t age = std::time(nullptr) - message.changedSecond();
  if (message.status == Sending) census.oldestQueued = std::max(census.oldestQueued, age);
  if (message.status == Failed) countFailed(census, message);
  if (message.status == Received) keepLater(census.lastReceived, message);
  if (message.status == Sent) keepLater(census.lastSent, message);
}

// Counts one file. If the file has a fault, reports the file on a line of its own.
void inspect(Report& report, const Folders& folders, const FileName& file, Census& census) {
  const Lookup found = folders.read(file.status, file.name);
  if (!found.error.empty()) report.add(Ill, found.error);
  if (!found.message) return;
  const Message& message = *found.message;
  if (!message.problem().empty() && !message.isSeen())
    report.add(Look, folders.path(file.status, file.name) + ": " + message.problem());
  if (message.fault.empty())
    count(census, message);
  else
    ++census.broken;
}

const Json::Value& limitOf(int status, const Json::Value& settings) {
  return MessageRecord::member(settings,
                               status == Received ? SettingsKey::receivedLimit : SettingsKey::sentLimit);
}

void reportCount(Report& report, int status, std::size_t count, const Json::Value& limit) {
  const std::string folder = text(status);
  const auto number = static_cast<std::int64_t>(count);
  Json::Value more(Json::objectValue);
  if (limit.isUInt()) more["limit"] = limit;
  report.add(Well, folder + ": " + std::to_string(count) + (limit.isUInt() ? " of " + limit.asString() : ""),
             {"messages", number, {{"folder", folder}}}, more);
  if (limit.isUInt()) report.add(Well, "", {"limit", limit.asUInt(), {{"folder", folder}}});
}

// The daemon has two limits: one for the received messages, one for all messages of the outbox together.
void reportLimit(Report& report, const char* key, const Json::Value& settings, std::int64_t count) {
  const Json::Value& limit = MessageRecord::member(settings, key);
  if (!limit.isUInt()) return;
  const std::string name = std::string("\"") + key + "\"";
  if (limit.asUInt() == 0)
    report.add(Look, name + " is 0: no message is kept, and no failed message is retried");
  else if (count > limit.asInt64())
    report.add(Look, std::to_string(count) + " messages are kept, more than " + name + " allows");
}

void reportFolders(Report& report, const Folders& folders, const Json::Value& settings, Census& census) {
  std::int64_t received = 0;
  for (const int status : MessageStatus::all) {
    const Listing listing = folders.names({status});
    for (const FileName& file : listing.files) inspect(report, folders, file, census);
    for (const std::string& error : listing.errors) report.add(Ill, std::string(text(status)) + ": " + error);
    if (listing.errors.empty()) reportCount(report, status, listing.files.size(), limitOf(status, settings));
    std::int64_t& sum = status == Received ? received : census.outbox;
    sum += static_cast<std::int64_t>(listing.files.size());
  }
  reportLimit(report, SettingsKey::receivedLimit, settings, received);
  reportLimit(report, SettingsKey::sentLimit, settings, census.outbox);
}

void reportLast(Report& report, const Message& message, const std::string& what, const char* metric) {
  if (message.name.empty()) return;
  Json::Value more(Json::objectValue);
  more["guid"] = message.name;
  more["time"] = Times::withZone(message.time());
  more["number"] = message.number();
  report.add(Well,
             "the last message " + what + " at " + Times::full(message.time()) + ": " + message.number(),
             {metric, static_cast<std::int64_t>(message.time()), {}}, more);
}

std::string named(const std::vector<std::string>& guids) {
  std::string names;
  for (std::size_t i = 0; i < std::min(guids.size(), mostNamed); ++i) names += (i > 0 ? ", " : "") + guids[i];
  return names + (guids.size() > mostNamed ? " and others" : "");
}

void reportFailed(Report& report, const Census& census) {
  report.count(Well, "failed and will be retried", {"failed", census.retried, {{"again", "yes"}}});
  Json::Value more(Json::objectValue);
  for (const std::string& guid : census.permanent) more["guids"].append(guid);
  report.count(Look, "failed permanently: " + named(census.permanent),
               {"failed", static_cast<std::int64_t>(census.permanent.size()), {{"again", "no"}}}, more);
  report.count(Well, "failed permanently, marked as seen", {"failed", census.seen, {{"again", "seen"}}});
}
}  // namespace

void reportMessages(Report& report, const Folders& folders, const Json::Value& settings) {
  Census census;
  reportFolders(report, folders, settings, census);
  reportLast(report, census.lastReceived, "was received", "last_received_time_seconds");
  reportLast(report, census.lastSent, "was sent", "last_sent_time_seconds");
  const std::int64_t age = census.oldestQueued;
  report.add(
      age > longQueued ? Look : Well,
      age > 0 ? "the oldest queued message has waited since " + Times::full(std::time(nullptr) - age) : "",
      {"oldest_queued_seconds", age, {}});
  reportFailed(report, census);
  report.count(Well, "received with missing parts", {"incomplete", census.incomplete, {}});
  report.add(Well, "", {"broken_files", census.broken, {}});
  report.add(Well, "", {"dangerous_recipients", census.dangerous, {}});
}
