#include "standalone/sms/Commands.h"

#include <algorithm>
#include <cstdio>
#include <ostream>
#include <set>

#include "standalone/sms/Listing.h"

namespace Standalone {
namespace {
using Mark = State::Mark;

void print(const std::vector<Message>& messages, std::ostream& out) {
  Listing listing;
  std::string blocks;
  for (const Message& message : messages) blocks += listing.print(message);
  out << blocks << std::flush;
  if (!out) throw Problem("cannot print the listing");
}

std::string quoted(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    char escape[8] = "";
    if (c == '"' || c == '\\')
      std::snprintf(escape, sizeof escape, "\\%c", c);
    else if (static_cast<unsigned char>(c) < 0x20)
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
    json += escape[0] != '\0' ? std::string(escape) : std::string(1, c);
  }
  return json + "\"";
}
}  // namespace

// Returns the messages without the mark ToDelete. Removes marks of messages that no longer exist.
std::vector<Message> Commands::listedMessages(bool unreadToo) {
  std::vector<Message> messages = modem_.list(unreadToo);
  std::set<std::string> ids;
  for (const Message& message : messages) ids.insert(message.id);
  for (auto mark = state_.marks.begin(); mark != state_.marks.end();)
    mark = ids.count(mark->first) != 0 ? std::next(mark) : state_.marks.erase(mark);
  const auto isToDelete = [this](const Message& message) {
    const auto mark = state_.marks.find(message.id);
    return mark != state_.marks.end() && mark->second == Mark::ToDelete;
  };
  messages.erase(std::remove_if(messages.begin(), messages.end(), isToDelete), messages.end());
  return messages;
}

void Commands::listUnread(std::ostream& out) {
  std::vector<Message> messages = listedMessages(true);
  const auto isRead = [this](const Message& message) {
    return message.read || state_.marks.count(message.id) != 0;
  };
  messages.erase(std::remove_if(messages.begin(), messages.end(), isRead), messages.end());
  print(messages, out);
  for (const Message& message : messages) state_.marks.emplace(message.id, Mark::Read);
  state_.save();
  deleteMarked();
  modem_.fetchMissed(!messages.empty());
}

void Commands::listRead(std::ostream& out) {
  std::vector<Message> messages = listedMessages(false);
  const auto isUnread = [this](const Message& message) {
    return !message.read && state_.marks.count(message.id) == 0;
  };
  messages.erase(std::remove_if(messages.begin(), messages.end(), isUnread), messages.end());
  print(messages, out);
  for (const Message& message : messages) state_.marks[message.id] = Mark::Printed;
  state_.save();
}

void Commands::deleteRead() {
  for (auto& [id, mark] : state_.marks)
    if (mark == Mark::Printed) mark = Mark::ToDelete;
  state_.save();
  deleteMarked();
}

// Tries to delete every message with the mark ToDelete. Then throws the last Problem, if there was one.
void Commands::deleteMarked() {
  std::string refusal;
  for (auto next = state_.marks.begin(); next != state_.marks.end();) {
    const auto mark = next++;
    if (mark->second != Mark::ToDelete) continue;
    try {
      modem_.remove(mark->first);
      state_.marks.erase(mark);
    } catch (const Problem& problem) {
      refusal = problem.what();
    }
  }
  state_.save();
  if (!refusal.empty()) throw Problem("cannot delete messages: " + refusal);
}

std::string printed(const Status& status, bool asJson) {
  std::string text;
  const auto add = [&](const std::string& key, const std::string& value, bool isText) {
    if (value.empty()) return;
    if (asJson)
      text += (text.empty() ? "" : ", ") + quoted(key) + ": " + (isText ? quoted(value) : value);
    else
      text += key + ": " + value + "\n";
  };
  const auto number = [](const std::optional<unsigned>& of) { return of ? std::to_string(*of) : ""; };
  add("modem", status.modem, true);
  add("sim", status.sim, true);
  add("operator", status.networkOperator, true);
  add("registration", status.registration, true);
  add("signal", number(status.signal), false);
  add("stored", number(status.stored), false);
  add("room", number(status.room), false);
  add("problem", status.problem, true);
  return asJson ? "{" + text + "}\n" : text;
}
}  // namespace Standalone
