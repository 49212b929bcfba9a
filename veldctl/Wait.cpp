#include "storage/MessageStatus.h"
#include "veldctl/Commands.h"
#include "veldctl/Each.h"
#include "veldctl/Outcome.h"
#include "veldctl/Output.h"

int wait(const Request& request) {
  using namespace MessageStatus;
  const std::string& guid = request.words[0];
  const auto seconds = request.words.size() > 1 ? readNumber(request.words[1]) : waitSeconds;
  if (!seconds) throw Misuse("wait takes seconds up to 4294967295, not '" + request.words[1] + "'");
  const std::streamoff logged = endOfSendLog();
  const Lookup found = request.folders.find(guid, {Sending, Sent, Failed});
  if (!found.error.empty()) Output::complain(found.error);
  if (!found.error.empty()) return Bad;
  const bool hasFailed = found.message && found.message->status == Failed;
  Outcome outcome = awaitOutcome(request.folders, guid, *seconds, logged);
  if (!found.message && outcome.status == Unknown) outcome.reason = noSuchMessage;
  if (hasFailed) outcome.reason = "the message failed before this command started";
  return printOutcome(outcome, request.isJson());
}
