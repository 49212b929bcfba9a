#include "support/Watchdog.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>
#include <string>

#include "support/FileDescriptor.h"

namespace Orvel {
namespace {
constexpr char managerVariable[] = "NOTIFY_SOCKET";
constexpr char sign[] = "WATCHDOG=1";

std::string managerSocket;
}  // namespace

void Watchdog::setup() {
  const char* const name = std::getenv(managerVariable);
  managerSocket = name != nullptr ? name : "";
  unsetenv(managerVariable);
}

void Watchdog::feed() {
  sockaddr_un address{};
  if (managerSocket.empty() || managerSocket.size() >= sizeof(address.sun_path)) return;
  address.sun_family = AF_UNIX;
  managerSocket.copy(address.sun_path, sizeof(address.sun_path));
  if (address.sun_path[0] == '@') address.sun_path[0] = '\0';  // an abstract socket name
  const FileDescriptor descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!descriptor.isOpen()) return;
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + managerSocket.size());
  if (connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), size) == 0)
    send(descriptor.get(), sign, sizeof(sign) - 1, MSG_DONTWAIT | MSG_NOSIGNAL);
}
}  // namespace Orvel
