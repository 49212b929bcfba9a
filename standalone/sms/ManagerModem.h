#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "standalone/sms/Bus.h"
#include "standalone/sms/Config.h"
#include "standalone/sms/Modem.h"
#include "standalone/sms/State.h"

namespace Standalone {
/// The first modem of ModemManager. ModemManager joins the parts of concatenated messages, keeps no read
/// marks, and renumbers its messages at each start.
class ManagerModem final : public Modem {
 public:
  /// `state` and `deadline` must outlive the object.
  ManagerModem(const Config& config, State& state, const Deadline& deadline);

  void prepare() override;
  std::string binding() override { return bus_.owner(); }
  std::vector<Message> list(bool unreadToo) override;
  void remove(const std::string& id) override;
  void send(const std::string& number, const std::string& text) override;
  Status status() override;
  std::string warning() override;

  /// Makes ModemManager fetch all messages: disables and enables the modem, which takes seconds. On a modem
  /// with AT commands, ModemManager misses a message that arrives while it fetches another message.
  /// Fetches after a burst of messages, and every hour. Fetches every minute while a message lacks parts and
  /// is less than an hour old. Never fetches while a data connection is up.
  void fetchMissed(bool arrived) override;

 private:
  void find();
  void awaitStableState();
  void enable(bool on);
  void givePin();
  std::vector<std::string> paths();
  bool isListed(const Properties& sms);
  bool isFetchDue(bool arrived) const;

  const std::string pin_;
  State& state_;
  const Deadline& deadline_;
  Bus bus_;
  std::string path_;            ///< the D-Bus path of the modem
  Properties modem_;            ///< as the last find() has read them
  Properties network_;          ///< as the last find() has read them
  bool waitsForParts_ = false;  ///< true if a message lacks parts and is less than an hour old
};
}  // namespace Standalone
