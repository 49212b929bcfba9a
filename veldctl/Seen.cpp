#include "veldctl/Commands.h"
#include "veldctl/Each.h"
#include "veldctl/Queue.h"

namespace {
std::string markOne(const Request& request, const std::string& guid) {
  const Lookup found = findFailed(request.folders, guid);
  if (!found.message) return found.error;
  if (!found.message->hasFailedPermanently())
    return "it will be sent again; only permanent failures can be marked";
  Queue(request.folders).markSeen(*found.message);
  return "";
}
}  // namespace

int seen(const Request& request) { return forEachGuid(request, markOne); }
