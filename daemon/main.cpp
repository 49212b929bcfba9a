#include <cstdlib>
#include <memory>

#include "commands/SMSCommand.h"
#include "daemon/MainLoop.h"
#include "daemon/StartUp.h"
#include "provider/SmsUtilsProvider.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/MessageStore.h"
#include "support/Logger.h"

int main() {
  const std::optional<Json::Value> settings = startUp();
  if (!settings) return EXIT_FAILURE;

  SMSCommand commands((*settings)[SettingsKey::smsCommands]);
  if (!commands.loadConfig()) {
    ORVEL_LOG(ERROR, "Exit: Failed to set SmsCommand config");
    std::exit(EXIT_FAILURE);
  }
  const std::uint32_t receivedLimit = (*settings)[SettingsKey::receivedLimit].asUInt();
  const std::uint32_t sentLimit = (*settings)[SettingsKey::sentLimit].asUInt();

  InTransit inTransit(messageFolder, stagingFolder);
  SmsUtilsProvider provider(&inTransit);
  const auto folders = std::make_shared<FolderCollectionStorage>(messageFolder, stagingFolder);
  const auto store = makeMessageStore(folders, receivedLimit, sentLimit);
  CheckedStorage storage(*store, folders->faults());

  runMainLoop(provider, storage, commands, inTransit);
  return EXIT_SUCCESS;
}
