#include "faults/Trial.h"

#include <sys/wait.h>

#include <algorithm>
#include <filesystem>

#include "simulator/modem/GsmEncoder.h"
#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace {

namespace fs = std::filesystem;
using Simulator::Gateway;
using Simulator::MessageFolders;

constexpr double hangSeconds = 20;

// Everything that an earlier trial may have left, but not the folders themselves: /var/log is a mount's.
std::unique_ptr<Gateway> freshGateway(const Trial::Programs& programs) {
  for (const char* const folder : {"/var/config", "/var/log", "/run/modem", "/run/gateway", "/tmp/sms"})
    fs::remove_all(folder);
  return std::make_unique<Gateway>(Gateway::Options{programs.daemon, programs.simulatorFolder, true});
}

std::size_t countOf(const std::vector<Json::Value>& values, const std::string& key, const std::string& text) {
  return static_cast<std::size_t>(std::count_if(values.begin(), values.end(), [&](const Json::Value& value) {
    return value.isObject() && value[key] == text;
  }));
}

template <typename Messages>
bool isAmong(const Messages& messages, const Json::Value& value, const std::string& key) {
  return value.isObject() && std::any_of(messages.begin(), messages.end(),
                                         [&](const auto& message) { return value[key] == message.text; });
}

}  // namespace

Trial::Trial(const Programs& programs, unsigned limit) : limit_(limit), gateway_(freshGateway(programs)) {
  gateway_->settings.set("receivedLimit", limit);
  gateway_->settings.set("sentLimit", limit);
  gateway_->modem.setRefused(refused, true);
  if (!gateway_->settings.setTimings("[5]")) std::abort();
}

void Trial::receive(const std::string& text, const std::string& sender, unsigned parts, bool hold) {
  Simulator::GsmEncoder encoder;
  if (!encoder.encode(text, {false, parts, nextReference_++}).empty()) std::abort();
  for (const std::string& part : encoder.parts) {
    if (hold && &part == &encoder.parts.back())
      held_ = {sender, part};
    else
      gateway_->modem.receive(sender, part);
  }
  incoming_.push_back({text, encoder.parts});
}

void Trial::release() { gateway_->modem.receive(held_.first, held_.second); }

void Trial::accept() {
  gateway_->modem.setRefused(refused, false);
  for (Message& message : outgoing_) message.refused = false;
}

void Trial::queue(const std::string& text, const std::string& number, unsigned retries) {
  if (gateway_->folders.queue(number, text, retries).empty()) std::abort();
  outgoing_.push_back({text, {}, true, number == refused});
}

void Trial::mayBeDisplaced() {
  for (auto* messages : {&incoming_, &outgoing_})
    for (Message& message : *messages) message.missed = false;
}

bool Trial::start() { return daemon().start().empty() && awaitSleep(); }

bool Trial::pass(unsigned count) {
  bool sleeps = awaitSleep();
  for (unsigned i = 0; sleeps && i < count; ++i) {
    gateway_->clock.grant();
    sleeps = awaitSleep();
  }
  return sleeps;
}

bool Trial::awaitSleep() { return daemon().awaitSleep(hangSeconds) == Simulator::DaemonProcess::Passed::Yes; }

bool Trial::awaitEnd() {
  if (!Simulator::waitUntil(hangSeconds, [this] { return !daemon().running(); })) return false;
  while (waitpid(-1, nullptr, 0) > 0) continue;
  return true;
}

void Trial::allowListedAgain() {
  for (const char* const box : {"unread", "read"})
    for (const std::string& listed : gateway_->modem.printed(box))
      for (Message& message : incoming_)
        for (const std::string& part : message.parts)
          if (listed.find("\"" + part + "\"") != std::string::npos) message.listedAgain = true;
}

Verdict Trial::look(bool unanswered) {
  Verdict verdict;
  lookAtInbox(verdict);
  lookAtOutbox(verdict, unanswered);
  lookForLeftovers(verdict);
  return verdict;
}

void Trial::lookAtInbox(Verdict& verdict) {
  const std::vector<Json::Value> records = MessageFolders::records("received");
  const bool listedAgain =
      std::any_of(incoming_.begin(), incoming_.end(), [](const Message& m) { return m.listedAgain; });
  std::size_t commands = 0;
  for (const Message& message : incoming_) {
    const std::size_t count = countOf(records, "message", message.text);
    // What comes twice under a limit displaces one message more.
    if (count == 0 && message.missed)
      (listedAgain && records.size() == limit_ ? verdict.windows : verdict.harms)
          .insert("lost: " + message.text);
    if (count > 1) (message.listedAgain ? verdict.windows : verdict.harms).insert("twice: " + message.text);
    if (message.text.find('#') != std::string::npos) ++commands;
  }
  const auto requests = gateway_->api.requests();
  const auto posts = static_cast<std::size_t>(std::count_if(
      requests.begin(), requests.end(), [](const auto& request) { return request.method == "POST"; }));
  if (posts > commands) (listedAgain ? verdict.windows : verdict.harms).insert("twice: a command");
  for (const Json::Value& record : records) {
    // A part that comes again after its message is whole stays by itself.
    if (!isAmong(incoming_, record, "message"))
      (listedAgain ? verdict.windows : verdict.harms).insert("torn: " + Simulator::toLine(record));
  }
}

void Trial::lookAtOutbox(Verdict& verdict, bool unanswered) {
  const std::vector<Json::Value> sent = gateway_->modem.sent();
  for (const Message& message : outgoing_) {
    std::size_t count = 0;
    std::string box;
    for (const char* const name : {"sending", "sent", "failed"}) {
      const std::size_t here = countOf(MessageFolders::records(name), "message", message.text);
      count += here;
      if (here > 0) box = name;
    }
    const std::size_t times = countOf(sent, "text", message.text);
    if (count == 0 && message.missed)
      verdict.harms.insert("lost: " + message.text + ", sent " + std::to_string(times) + " times");
    if (count > 1) verdict.harms.insert("twice: " + message.text);
    if (box == "sending") verdict.harms.insert("unsent: " + message.text);
    if (times > 1) (unanswered ? verdict.windows : verdict.harms).insert("sent again: " + message.text);
    if (message.refused ? times > 0 : box == "sent" && times == 0)
      verdict.harms.insert("unsent: " + message.text + ", but filed as " + box);
    if (!message.refused && box == "failed")
      (unanswered ? verdict.windows : verdict.harms).insert("unsent: " + message.text + ", filed as failed");
  }
  for (const Json::Value& one : sent)
    if (!isAmong(outgoing_, one, "text")) verdict.harms.insert("torn: sent " + Simulator::toLine(one));
}

void Trial::lookForLeftovers(Verdict& verdict) {
  std::vector<std::string> boxes;
  for (const char* const box : MessageFolders::boxes) boxes.push_back(MessageFolders::pathOf(box));
  for (const std::string folder : {MessageFolders::root, "/tmp/sms"}) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      const bool filed = std::find(boxes.begin(), boxes.end(), entry.path().parent_path()) != boxes.end();
      if (entry.is_directory() || filed) continue;
      // What is staged goes with the next message of its name, or with the next start of the gateway.
      (folder == MessageFolders::root ? verdict.harms : verdict.windows)
          .insert("left: " + entry.path().string());
    }
  }
  for (const char* const box : {"sending", "sent", "failed"})
    for (const Json::Value& record : MessageFolders::records(box))
      if (!record.isObject()) verdict.harms.insert("torn: a file in " + std::string(box));
}
