#include "storage/MessageStatus.h"
#include "veldctl/Commands.h"
#include "veldctl/Output.h"
#include "veldctl/Queue.h"

namespace {

void removeOne(const Folders& folders, const std::string& name) {
  bool isRemoved = false;
  for (const int status : MessageStatus::all) isRemoved = Queue(folders).remove(status, name) || isRemoved;
  if (isRemoved) return;
  const std::string error = folders.find(name, {MessageStatus::Received, MessageStatus::Sending}).error;
  Output::complain(error.empty() ? "there is no message " + name : error);
}

}  // namespace

int remove(const Request& request) {
  for (const std::string& name : request.words) removeOne(request.folders, name);
  return Output::complaints() > 0 ? Bad : Done;
}
