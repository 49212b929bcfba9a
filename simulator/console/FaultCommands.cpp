#include <algorithm>

#include "simulator/console/Interpreter.h"

namespace Simulator {
namespace {
constexpr unsigned untilRepair = 9999;  // the tool never runs this often

// Returns the fault with this name; None if there is no such fault.
template <typename Fault, std::size_t count>
Fault faultOf(const char* const (&names)[count], const std::string& name) {
  const auto place = std::find(std::begin(names), std::end(names), name) - std::begin(names);
  return place < static_cast<std::ptrdiff_t>(count) ? static_cast<Fault>(place) : Fault::None;
}

Answer breakApi(Gateway& gateway, const Arguments& given) {
  if (!gateway.servesApi()) return wrong("The gateway does not serve the API (--api none).");
  const auto fault = faultOf<ApiFault>(LocalApiServer::faultNames, given.word(1));
  if (fault != ApiFault::None) {
    gateway.api.setFault(fault, given.number(2, 0));
    return {true, "The API is broken: " + gateway.api.fault() + "."};
  }
  const bool refuses = given.word(1) == "refused";
  gateway.api.close(refuses);
  return {true, refuses ? "The API refuses connections." : "The API's socket is gone."};
}

Answer breakTool(Gateway& gateway, const Arguments& given) {
  const std::string operation = given.word(1);
  if (operation == "gone") {
    gateway.setToolThere(false);
    return {true, "The tool is gone."};
  }
  gateway.modem.setFault(operation, faultOf<ToolFault>(Modem::faultNames, given.word(2)),
                         given.number(3, untilRepair));
  return {true, "The tool is broken: " + operation + " " + given.word(2) + "."};
}

Answer fill(Disk& disk, const std::string& name) {
  if (disk.fill()) return {true, name + " is full."};
  return wrong("Cannot fill " + name + ": under proot, its size has no limit.");
}

Answer fault(Gateway& gateway, const Arguments& given) {
  const std::string what = given.word(0);
  if (what == "api") return breakApi(gateway, given);
  if (what == "tool") return breakTool(gateway, given);
  if (what == "disk") return fill(gateway.var, "/var");
  if (what == "tmp") return fill(gateway.tmp, "/tmp");
  gateway.syslog.close();
  return {true, "Syslog is gone."};
}

Answer repair(Gateway& gateway, const Arguments& given) {
  const std::string what = given.words().empty() ? "all" : given.word(0);
  if (what == "all")
    for (const std::string& number : gateway.modem.refused()) gateway.modem.setRefused(number, false);
  if (!gateway.repair(what)) return wrong("Cannot bind the socket again.");
  return {true, what == "all" ? "Everything works." : "Repaired: " + what + "."};
}

Answer faults(Gateway& gateway, const Arguments&) {
  std::string text;
  for (const std::string& line : gateway.faults()) text += line + "\n";
  return {true, text.empty() ? "Everything works." : text};
}
}  // namespace

std::vector<Command> faultCommands() {
  return {
      {"fault",
       "api code N, api garbage|close|silent|gone|refused, tool gone, "
       "tool unread|read|delete|send fail|hang|kill|silent [TIMES], syslog gone, disk full, tmp full",
       "sets a fault until \"repair\"; a fault of the tool can also end by itself, after TIMES runs", fault},
      {"repair", "[api|tool|syslog|disk|tmp|all]", "ends faults; \"all\" also ends the modem's refusals",
       repair},
      {"faults", "", "shows the faults that are set", faults},
  };
}
}  // namespace Simulator
