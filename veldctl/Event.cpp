#include "veldctl/Event.h"

#include "veldctl/MessageTable.h"
#include "veldctl/Output.h"
#include "veldctl/Times.h"

namespace {
constexpr std::size_t kindWidth = 9, numberWidth = 17;
}  // namespace

Json::Value toJson(const Event& event) {
  Json::Value row;
  row["event"] = event.kind;
  row["guid"] = event.message.name;
  row["time"] = Times::withZone(event.message.changedSecond());
  row["record"] = event.message.record;
  return row;
}

std::string toText(const Event& event) {
  const bool isRetried = event.kind == "failed" && !event.message.hasFailedPermanently();
  return Times::full(event.message.changedSecond()) + "  " + Output::padded(event.kind, kindWidth) + "  " +
         Output::padded(otherEnd(event.message), numberWidth) + "  " +
         Output::printable(event.message.text()) + (isRetried ? "  (will be retried)" : "");
}
