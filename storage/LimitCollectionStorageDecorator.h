#pragma once

#include <cstdint>
#include <memory>

#include "storage/ICollectionStorage.h"

/// Makes room before a save: when the limit is reached, discards the record with the smallest "guid",
/// compared byte by byte. In the daemon's guid format, this is the oldest record. Each save discards at most
/// one record, so a lowered limit does not shrink the store. The three outbox statuses share `sentLimit`. A
/// limit of 0 discards nothing here. All other calls go to the inner storage.
class LimitCollectionStorageDecorator final : public ICollectionStorage {
 public:
  LimitCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner, std::uint32_t receivedLimit,
                                  std::uint32_t sentLimit);

  void save(const Json::Value& record, int status) override;
  void remove(const Json::Value& filter, int status) override { inner->remove(filter, status); }
  Json::Value load(const Json::Value& filter, int status) override { return inner->load(filter, status); }
  void move(const Json::Value& filter, int from, int to) override { inner->move(filter, from, to); }

 private:
  /// A received record without "guid" counts as one with an empty guid. It is the smallest, but is not
  /// removed: no file has that name.
  void makeRoomInInbox();

  /// A record without "guid" is counted here but never discarded.
  void makeRoomInOutbox();

  const std::shared_ptr<ICollectionStorage> inner;
  const std::uint32_t receivedLimit;  ///< records
  const std::uint32_t sentLimit;      ///< records
};
