#include "simulator/gateway/Responder.h"

#include "simulator/support/Files.h"

namespace Simulator {
namespace {
constexpr char rebootPath[] = "/api/command/sms_restart";
constexpr unsigned accepted = 200;
constexpr unsigned retries = 3;
}  // namespace

void Responder::carryOut() {
  for (const LocalApiServer::Request& request : api_.requests(next_)) {
    if (!request.answered) break;
    const std::size_t number = next_++;
    if (request.method != "POST" || request.code != accepted) continue;
    const std::string text = carryOut(request);
    if (!text.empty()) events_.push_back({number, text});
  }
}

// Carries out one command. Returns a text about the result; an empty string if the command had no effect.
std::string Responder::carryOut(const LocalApiServer::Request& request) {
  Json::Value body;
  if (!readJson(request.body, body)) return "";
  const bool reboot = request.path == rebootPath;
  std::string problem;
  if (reboot) problem = daemon_.stop() ? daemon_.start() : "the daemon still runs.";
  if (!problem.empty()) return "The gateway cannot reboot: " + problem;
  const std::string text =
      reboot ? "The gateway has rebooted." : request.path.substr(request.path.rfind('/') + 1) + ": done";
  const std::string guid = folders_.queue(body["recipients"][0], text, retries);
  if (guid.empty()) return "";
  const std::string done =
      reboot ? "The gateway has rebooted" : "The gateway has carried out " + request.path;
  return done + ". The answer is message " + guid + ".";
}
}  // namespace Simulator
