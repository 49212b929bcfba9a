#include "simulator/support/Footprint.h"

#include <sstream>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {
// Returns the number in the line with this name, such as "Rss:     8188 kB"; 0 if there is no such line.
std::size_t kilobytes(const std::string& text, const std::string& name) {
  const std::size_t at = text.find(name + ":");
  return at == std::string::npos ? 0 : std::stoul(text.substr(at + name.size() + 1));
}
}  // namespace

std::vector<pid_t> childrenOf(pid_t process) {
  const std::string id = std::to_string(process);
  std::istringstream list(readFile("/proc/" + id + "/task/" + id + "/children"));
  std::vector<pid_t> children;
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

Footprint Footprint::of(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  const std::string memory = readFile(folder + "/smaps_rollup");
  return {kilobytes(memory, "Rss"), kilobytes(memory, "Private_Dirty"), listFolder(folder + "/fd").size(),
          childrenOf(process).size()};
}

std::string Footprint::text() const {
  return std::to_string(resident) + " kB resident, " + std::to_string(written) + " kB written, " +
         std::to_string(descriptors) + " descriptors, " + std::to_string(children) + " children";
}
}  // namespace Simulator
