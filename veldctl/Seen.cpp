#include "veldctl/Commands.h"
#include "veldctl/Failed.h"
#include "veldctl/Output.h"
#include "veldctl/Queue.h"

namespace {

void markOne(const Folders& folders, const std::string& guid) {
  const std::optional<Message> message = findFailed(folders, guid);
  if (!message) return;
  if (message->hasFailedForGood())
    Queue(folders).markSeen(*message);
  else
    Output::complain(guid + ": it is sent again, so there is nothing to mark");
}

}  // namespace

int seen(const Request& request) {
  for (const std::string& guid : request.words) markOne(request.folders, guid);
  return Output::complaints() > 0 ? Bad : Done;
}
