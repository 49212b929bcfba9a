#include "veldctl/Event.h"

#include "veldctl/MessageTable.h"
#include "veldctl/Output.h"
#include "veldctl/Times.h"

namespace {

constexpr std::size_t whatWidth = 9, numberWidth = 17;

// When it came into its folder, which for a long message is when it was completed.
std::time_t timeOf(const Event& event) {
  return static_cast<std::time_t>(event.message.changed / 1'000'000'000);
}

}  // namespace

Json::Value toJson(const Event& event) {
  Json::Value row;
  row["event"] = event.what;
  row["guid"] = event.message.name;
  row["time"] = Times::withZone(timeOf(event));
  row["record"] = event.message.record;
  return row;
}

std::string toText(const Event& event) {
  const bool isTriedAgain = event.what == "failed" && !event.message.hasFailedForGood();
  return Times::full(timeOf(event)) + "  " + Output::padded(event.what, whatWidth) + "  " +
         Output::padded(otherEnd(event.message), numberWidth) + "  " +
         Output::printable(event.message.text()) + (isTriedAgain ? "  (is tried again)" : "");
}
