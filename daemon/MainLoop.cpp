#include "daemon/MainLoop.h"

#include <unistd.h>

#include <string>

#include "daemon/Inbox.h"
#include "daemon/Outbox.h"
#include "daemon/SmsTimings.h"
#include "daemon/StartUp.h"
#include "storage/MessageStatus.h"
#include "support/Logger.h"
#include "support/Watchdog.h"

namespace {
void sendQueuedMessages(Outbox& outbox, CheckedStorage& storage, RetryState& retry,
                        const MonotonicClock& clock) {
  for (const Json::Value& record : storage.load(MessageStatus::Sending))
    if (!outbox.isAnswered(record, MessageStatus::Sending) && !outbox.send(record, MessageStatus::Sending))
      startFailureTimer(retry, clock);
}
}  // namespace

void runMainLoop(SmsProvider& provider, CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit) {
  RetryState retry;
  while (stopRequested == 0) {
    Orvel::Watchdog::feed();
    runPass(provider, storage, commands, inTransit, smsTimings, retry);
    sleep(passInterval);
  }
}

void runPass(SmsProvider& provider, CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit,
             const std::vector<std::uint32_t>& timings, RetryState& retry, const MonotonicClock& clock) {
  const Spool::Pass pass = inTransit.spool.open();
  Inbox inbox(storage, commands, inTransit);
  Outbox outbox(provider, storage, inTransit);
  try {
    inTransit.begin(pass);
    outbox.fileLeft(pass);
    inbox.fileLeft(pass);
    inbox.file(provider.receiveMessages());
    retryFailedMessages(outbox, storage, timings, retry, clock);
    sendQueuedMessages(outbox, storage, retry, clock);
  } catch (const std::string& text) {
    ORVEL_LOG(FATAL, "%s", text.c_str());
  } catch (...) {
    ORVEL_LOG(FATAL, "Exeption was detected");
  }
  inTransit.dropUnanswered();
}
