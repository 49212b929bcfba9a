#include "daemon/MainLoop.h"

#include <unistd.h>

#include <functional>
#include <optional>
#include <string>

#include "daemon/PartMerger.h"
#include "daemon/SmsTimings.h"
#include "daemon/StartUp.h"
#include "provider/MultipartJoiner.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {

namespace Key = MessageRecord::Key;

// Obeys a complete message if it is a command from someone who may send it. True when a command was executed.
bool obey(SMSCommand& commands, const Json::Value& record) {
  if (!commands.isEnabled()) {
    ORVEL_LOG(WARNING, "SMS commands not enabled");
    return false;
  }
  ORVEL_LOG(WARNING, "SMS commands is enabled");
  if (!MessageRecord::has(record, Key::Message) || !MessageRecord::has(record, Key::Source)) return false;
  const std::string message = record[Key::Message].asString();
  const std::string source = record[Key::Source].asString();
  ORVEL_LOG(WARNING, "SMS commands processing message [%s] from recipient [%s]", message.c_str(),
            source.c_str());
  if (!commands.validateSMSCommand(message, source)) return false;
  ORVEL_LOG(WARNING, "SMS commands executing command");
  if (commands.executeCommand(message, source)) return true;
  ORVEL_LOG(ERROR, "Failed to execute command [%s]", message.c_str());
  return false;
}

using CommandPath = std::function<bool(const Json::Value& record)>;

// Files received messages, each after it was offered to the commands. Parts are merged with those that are
// stored.
void fileMessages(std::vector<Json::Value> records, ICollectionStorage& storage, Journal& journal,
                  const CommandPath& isObeyed) {
  std::optional<std::vector<Json::Value>> storedParts;  // read once, when the first part comes
  std::vector<Json::Value> updatedMultiparts;
  std::vector<std::string> mergedParts;
  for (Json::Value& record : records) {
    Orvel::Watchdog::feed();  // for each message, so that many are no hang
    if (isPartOfMultipart(record)) {
      if (!storedParts)
        storedParts =
            collectStoredParts(journal.withUnfiled(storage.load(Json::nullValue, MessageStatus::Received)));
      if (mergeWithStoredParts(updatedMultiparts, record, *storedParts)) {
        mergedParts.push_back(MessageRecord::guid(record));
        continue;
      }
    }
    if (!MessageRecord::has(record, Key::Parts) && isObeyed(record)) record[Key::IsSMSCommand] = true;
    storage.save(record, MessageStatus::Received);
  }
  for (Json::Value& record : updatedMultiparts) joinParts(record);
  journal.merged(mergedParts, updatedMultiparts);
  for (Json::Value& record : updatedMultiparts) {
    Orvel::Watchdog::feed();
    // A command that came in parts is obeyed, but its record is not marked.
    if (!MessageRecord::has(record, Key::Parts)) isObeyed(record);
    storage.save(record, MessageStatus::Received);
  }
}

// Files what an earlier pass left, one by one, since two parts of the same message may be among them. None of
// it is obeyed: a reboot that came back with each boot would never end.
void fileLeftMessages(ICollectionStorage& storage, SMSCommand& commands, Journal& journal) {
  const auto isObeyed = [&](const Json::Value& record) {
    const std::string text = MessageRecord::member(record, Key::Message).asString();
    ParsedSMSCommand command;
    if (commands.isEnabled() && !journal.wasTried(record) && text.find('#') != std::string::npos &&
        commands.parseCommand(text, command))
      ORVEL_LOG(WARNING, "SMS command in message %s from %s is not obeyed: an earlier pass was cut off",
                MessageRecord::guid(record).c_str(),
                MessageRecord::member(record, Key::Source).asString().c_str());
    return false;
  };
  for (const Json::Value& record : journal.left()) fileMessages({record}, storage, journal, isObeyed);
}

void sendQueuedMessages(SmsProvider& provider, ICollectionStorage& storage, Journal& journal,
                        RetryState& retry, const MonotonicClock& clock) {
  for (const Json::Value& record : storage.load(Json::nullValue, MessageStatus::Sending)) {
    if (journal.isAnswered(record, MessageStatus::Sending)) continue;
    Orvel::Watchdog::feed();
    journal.prepare(record, MessageStatus::Sending);
    const bool sent = provider.sendMessage(record);
    journal.answered(sent);
    if (sent) {
      storage.move(record, MessageStatus::Sending, MessageStatus::Sent);
    } else {
      storage.move(record, MessageStatus::Sending, MessageStatus::Failed);
      startFailureTimer(retry, clock);
    }
  }
}

}  // namespace

void runMainLoop(SmsProvider& provider, ICollectionStorage& storage, SMSCommand& commands, Journal& journal) {
  RetryState retry;
  while (stopRequested == 0) {
    Orvel::Watchdog::feed();
    runPass(provider, storage, commands, journal, smsTimings, retry);
    sleep(passInterval);
  }
}

void runPass(SmsProvider& provider, ICollectionStorage& storage, SMSCommand& commands, Journal& journal,
             const std::vector<std::uint32_t>& timings, RetryState& retry, const MonotonicClock& clock) {
  try {
    journal.catchUp(storage);
    fileLeftMessages(storage, commands, journal);
    journal.settle();
    fileMessages(provider.receiveMessages(), storage, journal,
                 [&](const Json::Value& record) { return obey(commands, record); });
    journal.settle();
    retryFailedMessages(provider, storage, journal, timings, retry, clock);
    sendQueuedMessages(provider, storage, journal, retry, clock);
  } catch (const std::string& text) {
    ORVEL_LOG(FATAL, "%s", text.c_str());
  } catch (...) {
    ORVEL_LOG(FATAL, "Exeption was detected");
  }
  journal.settle();
}
