#pragma once

#include <json/json.h>

#include <cstdint>
#include <vector>

#include "commands/SMSCommand.h"
#include "daemon/InTransit.h"
#include "daemon/RetryStep.h"
#include "provider/SmsProvider.h"
#include "storage/CheckedStorage.h"

/// The seconds between two passes.
constexpr unsigned passInterval = 5;

/// Runs a pass, sleeps for `passInterval`, and repeats this until SIGTERM arrives. SIGTERM ends a sleep
/// early, but never a pass.
void runMainLoop(SmsProvider& provider, CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit);

/// One pass, without the sleep: files what an earlier pass left; receives, merges parts, obeys commands and
/// files; sends failed messages again when their interval has passed; sends queued messages. An exception
/// ends the pass and is logged.
void runPass(SmsProvider& provider, CheckedStorage& storage, SMSCommand& commands, InTransit& inTransit,
             const std::vector<std::uint32_t>& timings, RetryState& retry,
             const MonotonicClock& clock = monotonicSeconds);
