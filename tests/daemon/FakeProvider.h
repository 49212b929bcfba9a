#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "provider/SmsProvider.h"
#include "storage/Journal.h"

/// A modem that hands out `incoming` once and refuses the numbers in `refused`.
class FakeProvider final : public SmsProvider {
 public:
  std::vector<Json::Value> receiveMessages() override {
    if (onReceive) onReceive();
    if (journal != nullptr) journal->received(incoming);
    return std::exchange(incoming, {});
  }

  bool sendMessage(const Json::Value& message) override {
    const std::string recipient = message["recipient"].asString();
    if (journal != nullptr) journal->begun();
    if (onSend) onSend();
    attempts.push_back(recipient);
    return refused.count(recipient) == 0;
  }

  std::vector<Json::Value> incoming;
  std::set<std::string> refused;
  std::function<void()> onReceive, onSend;
  Journal* journal = nullptr;
  std::vector<std::string> attempts;  ///< the number of every send, refused or not
};
