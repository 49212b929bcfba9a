#include "support/Watchdog.h"
#include "tests/DatagramSocket.h"
#include "tests/TemporaryFolder.h"

TEST(Watchdog, ReportsToTheSocketOfTheEnvironmentVariable) {
  const TemporaryFolder folder;  // gives a unique name, because all processes share the abstract socket names
  for (const std::string& name : {std::string("/run/manager"), "@" + folder.path}) {
    DatagramSocket manager(name);
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
    Orvel::Watchdog::setup();
    EXPECT_EQ(getenv("NOTIFY_SOCKET"), nullptr);
    Orvel::Watchdog::feed();
    EXPECT_EQ(manager.receive(), "WATCHDOG=1") << name;
    Orvel::Watchdog::setup();
    Orvel::Watchdog::feed();
    EXPECT_EQ(manager.receive(), "") << name;
  }
}
