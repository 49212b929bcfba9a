#pragma once

#include <cstdint>
#include <memory>

#include "storage/ICollectionStorage.h"

/// Keeps nothing under a limit of 0: a received record with `receivedLimit` 0, a sent or failed one with
/// `sentLimit` 0, is not stored. A queued record (Sending) always is. Everything else goes to the storage
/// inside.
class LimitNullCollectionStorageDecorator final : public ICollectionStorage {
 public:
  LimitNullCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner, std::uint32_t receivedLimit,
                                      std::uint32_t sentLimit);

  void save(const Json::Value& record, int status) override;
  void remove(const Json::Value& filter, int status) override;
  Json::Value load(const Json::Value& filter, int status) override;
  void move(const Json::Value& filter, int from, int to) override;

 private:
  const std::shared_ptr<ICollectionStorage> inner;
  const std::uint32_t receivedLimit;  ///< records
  const std::uint32_t sentLimit;      ///< records
};
