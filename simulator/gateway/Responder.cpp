#include "simulator/gateway/Responder.h"

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

constexpr char rebootPath[] = "/api/command/sms_restart";
constexpr int accepted = 200;
constexpr unsigned retries = 3;

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
  const std::string problem = !reboot ? "" : daemon_.stop() ? daemon_.start() : "The daemon does not end.";
  if (!problem.empty()) {
    events_.push_back({"The gateway cannot reboot: " + problem, true});
    return;
  }
  const std::string text =
      reboot ? "The gateway has rebooted." : request.path.substr(request.path.rfind('/') + 1) + ": done";
  const std::string guid = folders_.queue(body["recipients"][0], text, retries);
  if (guid.empty()) return;
  events_.push_back({(reboot ? "The gateway has rebooted" : "The gateway has carried out " + request.path) +
                         ", and answers as " + guid + ".",
                     reboot});
}

}  // namespace Simulator
