#pragma once

#include <cstdint>
#include <memory>

#include "storage/ICollectionStorage.h"

/// Stores no received record when `receivedLimit` is 0, and no sent or failed record when `sentLimit` is 0. A
/// queued record (Sending) is always stored. All other calls go to the inner storage.
class LimitNullCollectionStorageDecorator final : public ICollectionStorage {
 public:
  LimitNullCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner, std::uint32_t receivedLimit,
                                      std::uint32_t sentLimit);

  void save(const Json::Value& record, int status) override;
  void remove(const Json::Value& filter, int status) override { inner->remove(filter, status); }
  Json::Value load(const Json::Value& filter, int status) override { return inner->load(filter, status); }
  void move(const Json::Value& filter, int from, int to) override { inner->move(filter, from, to); }

 private:
  const std::shared_ptr<ICollectionStorage> inner;
  const std::uint32_t receivedLimit;  ///< records
  const std::uint32_t sentLimit;      ///< records
};
