// The input is an answer of the local API to the request for the settings, and to the request of a command.

#include <cstdint>
#include <optional>
#include <string>

#include "commands/SMSCommandExecutor.h"
#include "daemon/LocalApi.h"
#include "fuzz/shared/FakeCurl.h"
#include "fuzz/shared/Property.h"

namespace {
// Returns the result of `call`, or nullopt if `call` throws a Json::Exception. No other exception may occur.
template <typename Call>
std::optional<bool> outcome(Call call) {
  try {
    return call();
  } catch (const Json::Exception&) {
    return std::nullopt;
  }
}

std::optional<bool> settingsLoad(const std::string& answer, std::size_t pieceSize) {
  const Json::Value before("unchanged");
  Json::Value result = before;
  FakeCurl::answer = answer;
  FakeCurl::pieceSize = pieceSize;
  const auto loaded = outcome([&] { return loadFromApi("http://localhost/api/sms", result); });
  if (loaded != true) property(result == before, "only a good answer changes the result");
  return loaded;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string answer(data, data + size);
  const auto loaded = settingsLoad(answer, size + 1);
  property(settingsLoad(answer, 1) == loaded, "the result does not depend on the size of the pieces");

  SMSCommandExecutor executor("http://localhost/api/command/sms_restart");
  const bool executed = executor.execute("1", std::vector<std::string>());  // must not throw
  property(executed == (loaded == true), "both requests accept the same answers");

  if (loaded == true && answer.find('\0') == std::string::npos) {  // the JSON library stops at a NUL
    property(settingsLoad(answer + "x", 1) == false, "an answer with further text is refused");
    property(settingsLoad(answer.substr(0, answer.rfind('}')), 1) == false, "a truncated answer is refused");
  }
  FakeCurl::requests.clear();
  return 0;
}
