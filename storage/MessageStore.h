#pragma once

#include <cstdint>
#include <memory>

#include "storage/ICollectionStorage.h"

/// Where a gateway's messages are stored.
constexpr char messageFolder[] = "/var/config/sms";  ///< root of the message folders; survives a restart
constexpr char stagingFolder[] = "/tmp/sms";         ///< where files are written before they are moved

/// The message store as the loop uses it: `folders`, wrapped by the limits, by the limits of 0, and,
/// outermost, by moves that write the status. The limits are numbers of records.
std::shared_ptr<ICollectionStorage> makeMessageStore(std::shared_ptr<ICollectionStorage> folders,
                                                     std::uint32_t receivedLimit, std::uint32_t sentLimit);
