#include "daemon/MainLoop.h"

#include <unistd.h>

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

void fileReceivedMessages(SmsProvider& provider, ICollectionStorage& storage, SMSCommand& commands) {
  std::optional<std::vector<Json::Value>> storedParts;  // read once, when the first part comes
  std::vector<Json::Value> updatedMultiparts;
  for (Json::Value& record : provider.receiveMessages()) {
    Orvel::Watchdog::feed();  // for each message, so that many are no hang
    if (isPartOfMultipart(record)) {
      if (!storedParts)
        storedParts = collectStoredParts(storage.load(Json::nullValue, MessageStatus::Received));
      if (mergeWithStoredParts(updatedMultiparts, record, *storedParts)) continue;
    }
    if (!MessageRecord::has(record, Key::Parts) && obey(commands, record)) record[Key::IsSMSCommand] = true;
    storage.save(record, MessageStatus::Received);
  }
  for (Json::Value& record : updatedMultiparts) {
    Orvel::Watchdog::feed();
    joinParts(record);
    // A command that came in parts is obeyed, but its record is not marked.
    if (!MessageRecord::has(record, Key::Parts)) obey(commands, record);
    storage.save(record, MessageStatus::Received);
  }
}

void sendQueuedMessages(SmsProvider& provider, ICollectionStorage& storage, RetryState& retry,
                        const MonotonicClock& clock) {
  for (const Json::Value& record : storage.load(Json::nullValue, MessageStatus::Sending)) {
    Orvel::Watchdog::feed();
    if (provider.sendMessage(record)) {
      storage.move(record, MessageStatus::Sending, MessageStatus::Sent);
    } else {
      storage.move(record, MessageStatus::Sending, MessageStatus::Failed);
      startFailureTimer(retry, clock);
    }
  }
}

}  // namespace

void runMainLoop(SmsProvider& provider, ICollectionStorage& storage, SMSCommand& commands) {
  RetryState retry;
  while (stopRequested == 0) {
    Orvel::Watchdog::feed();
    runPass(provider, storage, commands, smsTimings, retry);
    sleep(passInterval);
  }
}

void runPass(SmsProvider& provider, ICollectionStorage& storage, SMSCommand& commands,
             const std::vector<std::uint32_t>& timings, RetryState& retry, const MonotonicClock& clock) {
  try {
    fileReceivedMessages(provider, storage, commands);
    retryFailedMessages(provider, storage, timings, retry, clock);
    sendQueuedMessages(provider, storage, retry, clock);
  } catch (const std::string& text) {
    ORVEL_LOG(FATAL, "%s", text.c_str());
  } catch (...) {
    ORVEL_LOG(FATAL, "Exeption was detected");
  }
}
