#include "veldctl/News.h"

#include <ctime>

#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Output.h"

namespace {

constexpr std::time_t writing = 2;  // seconds for which a file may be half written

std::string keyOf(int status, const std::string& name) {
  return std::string(MessageStatus::text(status)).append("/").append(name);
}

bool lacksParts(const Message& message) {
  return MessageRecord::has(message.record, MessageRecord::Key::Parts);
}

bool mayBeHalfWritten(const Message& message) {
  const auto written = static_cast<std::time_t>(message.changed / 1'000'000'000);
  return !message.fault.empty() && std::time(nullptr) - written < writing;
}

}  // namespace

const std::vector<int> News::statuses = {MessageStatus::Received, MessageStatus::Sent, MessageStatus::Failed};

bool News::Known::operator==(const Known& other) const {
  return changed == other.changed && lacksParts == other.lacksParts;
}

// Returns the files, and forgets known ones that are gone. None when a folder cannot be listed, which is said
// once.
std::vector<FileName> News::look() {
  Listing listing = folders_.names(statuses);
  const std::string error = listing.errors.empty() ? "" : listing.errors.front();
  if (!error.empty() && error != complained_) Output::complain(error);
  complained_ = error;
  if (!error.empty()) return {};
  AllKnown there;
  for (const FileName& file : listing.files) {
    const auto found = known_.find(keyOf(file.status, file.name));
    if (found != known_.end()) there.insert(*found);
  }
  known_ = std::move(there);
  return std::move(listing.files);
}

// None when nothing has happened to the file, or it is gone or half written.
std::optional<Event> News::changeOf(const FileName& file) const {
  const auto before = known_.find(keyOf(file.status, file.name));
  const bool isKnown = before != known_.end();
  if (isKnown && before->second.changed == folders_.changed(file.status, file.name)) return std::nullopt;
  Lookup found = folders_.read(file.status, file.name);
  if (!found.message || mayBeHalfWritten(*found.message)) return std::nullopt;
  const bool isCompleted = isKnown && before->second.lacksParts;
  return Event{isCompleted ? "completed" : MessageStatus::text(file.status), std::move(*found.message)};
}

void News::know(const Event& event) {
  const Message& message = event.message;
  known_[keyOf(message.status, message.name)] = {message.changed, lacksParts(message)};
}

// A part that does not complete a message is no event, and neither is a file that is no record.
Listener::Answer News::tellOf(const Event& event, Listener& listener) {
  if (event.what == "completed" && lacksParts(event.message)) return Listener::Answer::Told;
  if (event.message.fault.empty()) return listener.tell(event);
  Output::complain(folders_.path(event.message.status, event.message.name) + ": " + event.message.fault);
  return Listener::Answer::Told;
}

void News::skip() {
  for (const FileName& file : look())
    if (const std::optional<Event> event = changeOf(file)) know(*event);
}

Listener::Answer News::tell(Listener& listener, const std::function<void()>& afterEach) {
  for (const FileName& file : look()) {
    const std::optional<Event> event = changeOf(file);
    if (!event) continue;
    const Listener::Answer answer = tellOf(*event, listener);
    if (answer != Listener::Answer::Told) return answer;
    know(*event);
    afterEach();
  }
  return Listener::Answer::Told;
}
