#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "standalone/sms/Bus.h"
#include "standalone/sms/Config.h"
#include "standalone/sms/Modem.h"
#include "standalone/sms/State.h"

namespace Standalone {

/// The first modem of ModemManager that supports messages. ModemManager joins the parts of concatenated
/// messages, keeps no read marks, and renumbers its messages at each start.
class ManagerModem final : public Modem {
 public:
  /// `state` and `deadline` outlive the object.
  ManagerModem(const Config& config, State& state, const Deadline& deadline);

  void prepare() override;
  std::string binding() override { return bus_.owner(); }
  std::vector<Message> list(bool unreadToo) override;
  void remove(const std::string& id) override;
  void send(const std::string& number, const std::string& text) override;
  Status status() override;
  std::string complaint() override;

  /// Disables and enables the modem, so that ModemManager fetches all messages, which takes seconds. On a
  /// modem with AT commands ModemManager drops the notice of a message that arrives while it fetches another.
  /// Does so after messages arrived and then none, once a minute while parts of a message are missing in its
  /// first hour, and once an hour; never while a data connection is up.
  void lookAgain(bool somethingCame) override;

 private:
  void find();
  void awaitRest();
  void enable(bool on);
  void givePin();
  std::vector<std::string> paths();
  bool isShown(const Properties& sms);

  const std::string pin_;
  State& state_;
  const Deadline& deadline_;
  Bus bus_;
  std::string path_;            ///< of the modem
  Properties modem_;            ///< as find() saw it
  Properties network_;          ///< as find() saw it
  bool waitsForParts_ = false;  ///< whether a message less than an hour old lacks parts
};

}  // namespace Standalone
