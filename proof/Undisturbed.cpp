#include <iostream>
#include <regex>

#include "proof/Proofs.h"
#include "proof/Scenario.h"
#include "simulator/support/Files.h"

namespace {
// The effect of a call that other processes see; empty without one.
std::string shown(const Tracer::Call& call) {
  static const std::regex command(R"re(execve\("/bin/sh", \["sh", "-c", (?:"--", )?"(.*)"\], )re");
  static const std::regex line(R"re(sendto\(\d+, "<(\d)>\w+ [ \d]\d [:\d]+ (.*)", \d+, )re");
  static const std::regex request(R"re(sendto\(\d+, "((?:GET|POST) [^ ]*).*\\r\\n\\r\\n(.*)", \d+, )re");
  std::smatch found;
  if (std::regex_search(call.text, found, command)) return "shell    " + found.str(1);
  if (std::regex_search(call.text, found, line)) return "log " + found.str(1) + "    " + found.str(2);
  if (std::regex_search(call.text, found, request)) return "request  " + found.str(1) + " " + found.str(2);
  return "";
}
}  // namespace

bool showUndisturbed(const Words&) {
  for (const Scenario& scenario : scenarios) {
    if (scenario.atStart && !scenario.before.empty()) continue;  // it disturbs an earlier daemon
    World world = scenario.prepare();
    Tracer tracer;
    if (!scenario.begin(world, tracer, "-f -s 1000 -e trace=execve,sendto") || !world.awaitSleep())
      return false;
    tracer.detach();
    std::cout << "\n" << scenario.name << "\n";
    for (const Tracer::Call& call : Tracer::calls())
      if (const std::string text = shown(call); !text.empty()) std::cout << "  " << text << "\n";
    for (const std::string box : Simulator::MessageFolders::names)
      for (const Json::Value& record : Simulator::MessageFolders::records(box))
        std::cout << "  " << box << "  " << Simulator::toLine(record) << "\n";
  }
  return true;
}
