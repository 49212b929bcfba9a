#include "storage/MessageStore.h"

#include <utility>

#include "storage/LimitCollectionStorageDecorator.h"
#include "storage/LimitNullCollectionStorageDecorator.h"
#include "storage/StatusCollectionStorageDecorator.h"

std::shared_ptr<ICollectionStorage> makeMessageStore(std::shared_ptr<ICollectionStorage> folders,
                                                     std::uint32_t receivedLimit, std::uint32_t sentLimit) {
  auto limited =
      std::make_shared<LimitCollectionStorageDecorator>(std::move(folders), receivedLimit, sentLimit);
  auto refusing = std::make_shared<LimitNullCollectionStorageDecorator>(limited, receivedLimit, sentLimit);
  return std::make_shared<StatusCollectionStorageDecorator>(refusing);
}
