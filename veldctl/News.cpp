#include "veldctl/News.h"

#include <ctime>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Output.h"

namespace {
constexpr std::time_t writeSeconds = 2;  // another program may still be writing a younger file

std::string keyOf(int status, const std::string& name) {
  return std::string(MessageStatus::text(status)).append("/").append(name);
}

bool lacksParts(const Message& message) {
  return MessageRecord::has(message.record, MessageRecord::Key::Parts);
}

bool mayBeIncomplete(const Message& message) {
  return !message.fault.empty() && std::time(nullptr) - message.changedSecond() < writeSeconds;
}
}  // namespace

const std::vector<int> News::statuses = {MessageStatus::Received, MessageStatus::Sent, MessageStatus::Failed};

bool News::Known::operator==(const Known& other) const {
  return changed == other.changed && lacksParts == other.lacksParts;
}

// Lists the files, and forgets removed files. If a folder cannot be listed, prints why and returns no files.
std::vector<FileName> News::listFiles() {
  Listing listing = folders_.names(statuses);
  const std::string error = listing.errors.empty() ? "" : listing.errors.front();
  if (!error.empty() && error != complained_) Output::complain(error);
  complained_ = error;
  if (!error.empty()) return {};
  AllKnown existing;
  for (const FileName& file : listing.files) {
    const auto found = known_.find(keyOf(file.status, file.name));
    if (found != known_.end()) existing.insert(*found);
  }
  known_ = std::move(existing);
  return std::move(listing.files);
}

// Returns nullopt if the file has not changed, no longer exists, or may be incomplete.
std::optional<Event> News::eventOf(const FileName& file) const {
  const auto before = known_.find(keyOf(file.status, file.name));
  const bool isKnown = before != known_.end();
  if (isKnown && before->second.changed == folders_.changed(file.status, file.name)) return std::nullopt;
  Lookup found = folders_.read(file.status, file.name);
  if (!found.message || mayBeIncomplete(*found.message)) return std::nullopt;
  const bool isCompleted = isKnown && before->second.lacksParts;
  return Event{isCompleted ? "completed" : MessageStatus::text(file.status), std::move(*found.message)};
}

void News::remember(const Event& event) {
  const Message& message = event.message;
  known_[keyOf(message.status, message.name)] = {message.changed, lacksParts(message)};
}

// Skips a new part while the message lacks other parts. Prints the fault of a file that is not a record.
Listener::Result News::reportOne(const Event& event, Listener& listener) {
  if (event.kind == "completed" && lacksParts(event.message)) return Listener::Result::Reported;
  if (event.message.fault.empty()) return listener.report(event);
  Output::complain(folders_.path(event.message.status, event.message.name) + ": " + event.message.fault);
  return Listener::Result::Reported;
}

void News::skip() {
  for (const FileName& file : listFiles())
    if (const std::optional<Event> event = eventOf(file)) remember(*event);
}

Listener::Result News::report(Listener& listener, const std::function<void()>& afterEach) {
  for (const FileName& file : listFiles()) {
    const std::optional<Event> event = eventOf(file);
    if (!event) continue;
    const Listener::Result result = reportOne(*event, listener);
    if (result != Listener::Result::Reported) return result;
    remember(*event);
    afterEach();
  }
  return Listener::Result::Reported;
}
