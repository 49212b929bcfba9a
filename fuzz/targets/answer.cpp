// The input is the answer of the local API, to the request for the settings and to a command.

#include <cstdint>
#include <optional>
#include <string>

#include "commands/SMSCommandExecutor.h"
#include "daemon/LocalApi.h"
#include "fuzz/shared/FakeCurl.h"
#include "fuzz/shared/Property.h"

namespace {

// The result of `call`; nullopt if it throws the JSON library's exception. No other may occur.
template <typename Call>
std::optional<bool> outcome(Call call) {
  try {
    return call();
  } catch (const Json::Exception&) {
    return std::nullopt;
  }
}

std::optional<bool> settingsLoad(const std::string& answer, std::size_t pieceSize) {
  const Json::Value before("as it was");
  Json::Value result = before;
  FakeCurl::answer = answer;
  FakeCurl::pieceSize = pieceSize;
  const auto loaded = outcome([&] { return loadFromApi("http://localhost/api/sms", result); });
  if (loaded != true) property(result == before, "the result is only set by a good answer");
  return loaded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string answer(data, data + size);
  const auto loaded = settingsLoad(answer, size + 1);
  property(settingsLoad(answer, 1) == loaded, "the split of an answer into pieces changes nothing");

  SMSCommandExecutor executor("http://localhost/api/command/sms_restart");
  const bool executed = executor.execute("1", std::vector<std::string>());  // throws for no answer
  property(executed == (loaded == true), "both requests accept the same answers");

  if (loaded == true && answer.find('\0') == std::string::npos) {  // the JSON library stops at a NUL
    property(settingsLoad(answer + "x", 1) == false, "nothing may follow an answer");
    property(settingsLoad(answer.substr(0, answer.rfind('}')), 1) == false, "a truncated answer is refused");
  }
  FakeCurl::requests.clear();
  return 0;
}
