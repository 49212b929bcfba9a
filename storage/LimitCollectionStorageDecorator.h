#pragma once

#include <cstdint>
#include <memory>

#include "storage/ICollectionStorage.h"

/// Makes room before a save: when as many records are kept as the limit allows, or more, the one with the
/// smallest "guid" (byte by byte; by the form of the daemon's guids the oldest) is discarded. One at the most
/// goes for one that comes, whatever the guid of that one, so a store above a lowered limit does not shrink.
/// The three outbox statuses share `sentLimit`. A limit of 0 discards nothing here. Everything but save goes
/// to the storage inside.
class LimitCollectionStorageDecorator final : public ICollectionStorage {
 public:
  LimitCollectionStorageDecorator(std::shared_ptr<ICollectionStorage> inner, std::uint32_t receivedLimit,
                                  std::uint32_t sentLimit);

  void save(const Json::Value& record, int status) override;
  void remove(const Json::Value& filter, int status) override;
  Json::Value load(const Json::Value& filter, int status) override;
  void move(const Json::Value& filter, int from, int to) override;

 private:
  /// A received record without "guid" counts as one with an empty guid: it is the one to go, and stays, since
  /// no file has that name.
  void makeRoomInInbox();

  /// A record without "guid" is counted here but never discarded.
  void makeRoomInOutbox();

  const std::shared_ptr<ICollectionStorage> inner;
  const std::uint32_t receivedLimit;  ///< records
  const std::uint32_t sentLimit;      ///< records
};
