#pragma once

#include <string>
#include <vector>

#include "standalone/sms/Assembly.h"
#include "standalone/sms/AtPort.h"
#include "standalone/sms/Config.h"
#include "standalone/sms/Modem.h"
#include "standalone/sms/State.h"

namespace Standalone {
/// Drives a modem on a serial port with AT commands in PDU mode (3GPP TS 27.005). No other program may use
/// the port. The modem keeps read marks, and holds messages in the memory of the SIM and in its own memory.
class PortModem final : public Modem {
 public:
  /// Opens the port that `config` names. `state` and `deadline` must outlive the object.
  PortModem(const Config& config, State& state, const Deadline& deadline);

  void prepare() override;
  std::string binding() override { return "port"; }
  std::vector<Message> list(bool unreadToo) override;
  void remove(const std::string& id) override;
  void send(const std::string& number, const std::string& text) override;
  Status status() override;
  std::string warning() override;

 private:
  struct Memory {
    std::string name;
    unsigned used;
    unsigned total;
  };

  std::string simState();
  void givePin();
  std::string registration();
  std::vector<std::string> memoryNames();
  Memory select(const std::string& memory);
  std::vector<Stored> stored(const std::string& memory, bool unreadToo);
  void addMemories(Status& status);
  void removePart(const std::string& part);

  const std::string pin_;
  State& state_;
  AtPort port_;
  std::string selected_;  ///< the name of the selected memory
  bool full_ = false;     ///< true if a memory is full and the tool has listed no message
};
}  // namespace Standalone
