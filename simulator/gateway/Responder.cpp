#include "simulator/gateway/Responder.h"

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

constexpr char rebootPath[] = "/api/command/sms_restart";
constexpr int accepted = 200;

}  // namespace

void Responder::carryOut() {
  for (const LocalApiServer::Request& request : api_.requests(seen_)) {
    if (request.code == 0) break;  // not before it is answered
    ++seen_;
    if (request.method == "POST" && request.code == accepted) carryOut(request);
  }
}

void Responder::carryOut(const LocalApiServer::Request& request) {
  Json::Value body;
  if (!readJson(request.body, body)) return;
  const bool reboot = request.path == rebootPath;
  std::string problem;
  if (reboot && !(daemon_.stop() && daemon_.start(problem))) {
    events_.push_back({"The gateway cannot reboot: " + problem, true});
    return;
  }
  Json::Value record;
  record["recipient"] = body["recipients"][0];
  record["message"] =
      reboot ? "The gateway has rebooted." : request.path.substr(request.path.rfind('/') + 1) + ": done";
  record["retries"] = 3;
  std::string guid;
  if (!folders_.queue(record, guid)) return;
  events_.push_back({(reboot ? "The gateway has rebooted" : "The gateway has carried out " + request.path) +
                         ", and answers as " + guid + ".",
                     reboot});
}

}  // namespace Simulator
