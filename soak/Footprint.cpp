#include "soak/Footprint.h"

#include <sstream>

#include "simulator/support/Files.h"

Footprint Footprint::of(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  Footprint footprint;
  const std::string status = Simulator::readFile(folder + "/status");
  const std::size_t resident = status.find("VmRSS:");
  if (resident != std::string::npos) footprint.residentKilobytes = std::stoul(status.substr(resident + 6));
  footprint.descriptors = Simulator::listFolder(folder + "/fd").size();
  std::istringstream children(Simulator::readFile(folder + "/task/" + std::to_string(process) + "/children"));
  for (std::string child; children >> child;) ++footprint.children;
  return footprint;
}

std::string Footprint::text() const {
  return std::to_string(residentKilobytes) + " kB resident, " + std::to_string(descriptors) +
         " descriptors, " + std::to_string(children) + " children";
}
