#include "veldctl/Commands.h"
#include "veldctl/Each.h"
#include "veldctl/Queue.h"
#include "veldctl/ShortMessage.h"

namespace {
std::string retryOne(const Request& request, const std::string& guid) {
  const Lookup found = findFailed(request.folders, guid);
  if (!found.message) return found.error;
  if (!found.message->danger.empty()) return found.message->danger + "; " + ShortMessage::numberRule;
  const bool isQueued = Queue(request.folders).retry(*found.message, request.number('r'));
  return isQueued ? "" : "it is queued already";
}
}  // namespace

int retry(const Request& request) { return forEachGuid(request, retryOne); }
