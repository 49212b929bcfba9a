#include "standalone/api/CommandRequest.h"

#include "standalone/api/StrictJson.h"
#include "veldctl/ShortMessage.h"

namespace Standalone {
std::optional<CommandRequest> parseCommandRequest(const std::string& body) {
  std::string fault;
  const std::optional<Json::Value> json = parseStrictJson(body, fault);
  if (!json || !json->isObject() || json->size() != 2) return std::nullopt;
  const Json::Value& recipients = (*json)["recipients"];
  const Json::Value& args = (*json)["args"];
  if (!recipients.isArray() || recipients.size() != 1 || !recipients[0].isString()) return std::nullopt;
  if (!args.isArray()) return std::nullopt;
  CommandRequest request{recipients[0].asString(), {}};
  if (!ShortMessage::isNumber(request.sender)) return std::nullopt;
  for (const Json::Value& arg : args) {
    if (!arg.isString()) return std::nullopt;
    request.args.push_back(arg.asString());
    if (request.args.back().find('\0') != std::string::npos) return std::nullopt;
  }
  return request;
}
}  // namespace Standalone
