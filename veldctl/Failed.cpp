#include "veldctl/Failed.h"

#include "storage/MessageStatus.h"
#include "veldctl/Output.h"

namespace {

using namespace MessageStatus;

std::string faultOf(const Lookup& found) {
  if (!found.error.empty()) return found.error;
  if (!found.message) return "there is no such message";
  if (found.message->status == Sending) return "it is queued already";
  if (found.message->status == Sent) return "it was sent already";
  if (found.message->status == Received) return "it is a received message";
  return found.message->fault;
}

}  // namespace

std::optional<Message> findFailed(const Folders& folders, const std::string& guid) {
  Lookup found = folders.find(guid, {Failed, Sending, Sent, Received});
  const std::string fault = faultOf(found);
  if (fault.empty()) return found.message;
  Output::complain(guid + ": " + fault);
  return std::nullopt;
}
