#include "support/Watchdog.h"
#include "tests/DatagramSocket.h"

TEST(Watchdog, GivesSignsWhereASocketIsNamed) {
  for (const char* const name : {"/run/manager", "@manager"}) {
    DatagramSocket manager(name);
    setenv("NOTIFY_SOCKET", name, 1);
    Orvel::Watchdog::setup();
    EXPECT_EQ(getenv("NOTIFY_SOCKET"), nullptr);
    Orvel::Watchdog::feed();
    EXPECT_EQ(manager.receive(), "WATCHDOG=1") << name;
    Orvel::Watchdog::setup();
    Orvel::Watchdog::feed();
    EXPECT_EQ(manager.receive(), "") << name;
  }
}
