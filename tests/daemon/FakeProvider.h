#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "provider/ModemEvents.h"
#include "provider/SmsProvider.h"

/// A modem that hands out `incoming` once and refuses the numbers in `refused`.
class FakeProvider final : public SmsProvider {
 public:
  std::vector<Json::Value> receiveMessages() override {
    if (onReceive) onReceive();
    if (events != nullptr && !incoming.empty()) events->aboutToDelete(incoming);
    return std::exchange(incoming, {});
  }

  bool sendMessage(const Json::Value& message) override {
    const std::string recipient = message["recipient"].asString();
    if (events != nullptr) events->aboutToSend();
    if (onSend) onSend();
    attempts.push_back(recipient);
    const bool sent = refused.count(recipient) == 0;
    if (events != nullptr) events->answered(sent);
    return sent;
  }

  std::vector<Json::Value> incoming;
  std::set<std::string> refused;
  std::function<void()> onReceive, onSend;
  ModemEvents* events = nullptr;
  std::vector<std::string> attempts;  ///< the number of every send, refused or not
};
