#include "storage/MessageStatus.h"
#include "veldctl/Commands.h"
#include "veldctl/Each.h"
#include "veldctl/Queue.h"

namespace {
std::string removeOne(const Request& request, const std::string& name) {
  bool isRemoved = false;
  for (const int status : MessageStatus::all)
    if (Queue(request.folders).remove(status, name)) isRemoved = true;
  if (isRemoved) return "";
  const std::string error =
      request.folders.find(name, {MessageStatus::Received, MessageStatus::Sending}).error;
  return error.empty() ? noSuchMessage : error;
}
}  // namespace

int remove(const Request& request) { return forEachGuid(request, removeOne); }
