#pragma once

#include <json/value.h>

#include <atomic>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/clock/GatewayClock.h"
#include "simulator/gateway/DaemonProcess.h"
#include "simulator/gateway/LocalApiServer.h"
#include "simulator/gateway/Phones.h"
#include "simulator/gateway/Settings.h"
#include "simulator/gateway/SyslogServer.h"
#include "simulator/modem/Modem.h"

namespace Simulator {

/// The gateway around the daemon: everything that the daemon meets, at the absolute paths where it looks for
/// it. One a file system; to be run by private-gateway.
class Gateway {
 public:
  struct Options {
    std::string program;      ///< the daemon
    std::string buildFolder;  ///< where the tool and the clock library lie
    bool hold = false;        ///< time stands still but for passes that are asked for
  };
  enum class Passed { Yes, Ended, NotYet };

  /// Brings up everything but the daemon.
  explicit Gateway(const Options& options);
  /// Puts right what is wrong and ends the daemon, by force if it has not ended itself within a few seconds.
  ~Gateway();
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;

  Modem& modem() { return modem_; }
  SyslogServer& syslog() { return syslog_; }
  LocalApiServer& api() { return api_; }
  Settings& settings() { return settings_; }
  DaemonProcess& daemon() { return daemon_; }
  Phones& phones() { return phones_; }
  GatewayClock& clock() { return clock_; }

  /// Starts the daemon; false with one line in `problem` as DaemonProcess::start.
  [[nodiscard]] bool start(std::string& problem);
  /// Asks it to end, and waits up to ten seconds; whether it has ended.
  bool stop();
  /// Ends the daemon's sleep and returns.
  void grantPass();
  /// Waits up to `seconds` until the daemon has gone to sleep.
  Passed awaitSleep(double seconds);
  /// Ends the daemon's sleep and waits up to a minute until it sleeps again.
  Passed pass();
  /// To be called by a signal handler: a command that runs many passes ends after the one that goes on.
  void interrupt() { interrupted_ = true; }
  /// Whether that happened since it was last asked.
  bool takeInterrupt() { return interrupted_.exchange(false); }

  /// Keeps parts back for release(), or hands them to the modem: a number and the user data each.
  using Part = std::pair<std::string, std::string>;
  void hold(const Part& part) { held_.push_back(part); }
  std::size_t release();
  std::size_t held() const { return held_.size(); }

  /// Hands an outgoing message to the daemon as a record; its guid in `guid`. False when the disk refuses it.
  [[nodiscard]] bool queue(Json::Value record, std::string& guid);

  /// Carries out what the API was asked for and has accepted since the last call, as a gateway would: it
  /// answers the sender by a message that it queues, and a reboot restarts the daemon. What was done, a line
  /// each.
  std::string carryOut();

  static const std::vector<std::string>& boxes();  ///< "received", "sending", "sent", "failed"
  static std::string folderOf(const std::string& box);
  /// The records of a box, by name; what is no JSON as a text.
  static std::vector<Json::Value> records(const std::string& box);

  /// Whether the `sms` tool is in the daemon's path.
  void setToolThere(bool there);
  bool toolThere() const;
  /// Fills a file system ("/var", "/tmp") to the last byte, or frees it again. False, and nothing is done,
  /// when it is too large to be one of private-gateway's.
  static bool setFull(const std::string& folder, bool full);
  static bool isFull(const std::string& folder);
  /// Puts everything right that can be wrong; false when a socket cannot be bound again.
  bool repairAll();

 private:
  Modem modem_;
  SyslogServer syslog_;
  Settings settings_;
  LocalApiServer api_;
  GatewayClock clock_;
  DaemonProcess daemon_;
  Phones phones_;
  std::string tool_;
  std::deque<Part> held_;
  std::size_t carriedOut_ = 0;
  std::atomic<bool> interrupted_{false};
};

}  // namespace Simulator
