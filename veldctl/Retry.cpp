#include "veldctl/Commands.h"
#include "veldctl/Failed.h"
#include "veldctl/Output.h"
#include "veldctl/Queue.h"
#include "veldctl/ShortMessage.h"

namespace {

void retryOne(const Request& request, const std::string& guid) {
  const std::optional<Message> message = findFailed(request.folders, guid);
  if (!message) return;
  if (!message->danger.empty())
    Output::complain(guid + ": " + message->danger + "; " + ShortMessage::numberRule);
  else if (!Queue(request.folders).retry(*message, request.number('r')))
    Output::complain(guid + ": it is queued already");
}

}  // namespace

int retry(const Request& request) {
  for (const std::string& guid : request.words) retryOne(request, guid);
  return Output::complaints() > 0 ? Bad : Done;
}
