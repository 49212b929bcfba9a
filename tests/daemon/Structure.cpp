// Checks at compile time what the headers promise about their types.

#include <cstddef>
#include <type_traits>

#include "commands/CommandTable.h"
#include "commands/SMSCommand.h"
#include "daemon/LocalApi.h"
#include "daemon/MainLoop.h"
#include "daemon/StartUp.h"
#include "provider/SmsUtilsProvider.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/LimitCollectionStorageDecorator.h"
#include "storage/LimitNullCollectionStorageDecorator.h"
#include "storage/MoveFolderStorage.h"
#include "storage/StatusCollectionStorageDecorator.h"
#include "support/Logger.h"

namespace {
template <typename... Types>
constexpr bool copyable =
    (std::is_copy_constructible_v<Types> || ...) || (std::is_copy_assignable_v<Types> || ...);
static_assert(!copyable<SMSCommand, SMSCommandConfig, SMSCommandExecutor, Orvel::NonCopyable>);

template <typename... Types>
constexpr bool showsItsBase = (std::is_convertible_v<Types*, Orvel::NonCopyable*> || ...);
static_assert(!showsItsBase<SMSCommand, SMSCommandConfig, SMSCommandExecutor>);

template <typename Base, typename... Types>
constexpr bool isBaseOf = (std::is_convertible_v<Types*, Base*> && ...);
static_assert(isBaseOf<ICollectionStorage, FolderCollectionStorage, LimitCollectionStorageDecorator,
                       LimitNullCollectionStorageDecorator, StatusCollectionStorageDecorator>);
static_assert(isBaseOf<IStorage, FolderStorage> && isBaseOf<FolderStorage, MoveFolderStorage> &&
              isBaseOf<SmsProvider, SmsUtilsProvider>);

template <typename... Types>
constexpr bool isInterface = ((std::is_abstract_v<Types> && sizeof(Types) == sizeof(void*)) && ...);
static_assert(isInterface<IStorage, ICollectionStorage, SmsProvider>);

template <typename... Types>
constexpr bool hasVirtualDestructor = (std::has_virtual_destructor_v<Types> || ...);
static_assert(!hasVirtualDestructor<IStorage, ICollectionStorage> && hasVirtualDestructor<SmsProvider> &&
              hasVirtualDestructor<SMSCommand> && hasVirtualDestructor<SMSCommandConfig> &&
              hasVirtualDestructor<SMSCommandExecutor>);

static_assert(std::is_same_v<decltype(&IStorage::save), bool (IStorage::*)(const Json::Value&)>);
static_assert(std::is_same_v<decltype(&IStorage::remove), bool (IStorage::*)(const Json::Value&)>);
static_assert(std::is_same_v<decltype(&ICollectionStorage::save),
                             void (ICollectionStorage::*)(const Json::Value&, int)>);
static_assert(std::is_same_v<decltype(&ICollectionStorage::move),
                             void (ICollectionStorage::*)(const Json::Value&, int, int)>);

static_assert(std::string_view(localApiSocket) == "/var/run/api/http.sock");
static_assert(std::string_view(settingsPath) == "/api/sms");
static_assert(std::string_view(commandRows.back().path) == "sms_send");
static_assert(passInterval == 5);
static_assert(static_cast<int>(Orvel::Logger::PrintMode::Syslog) == 3);
static_assert(static_cast<int>(Orvel::Logger::PrintMode::StandardError) == 1);

static_assert(SMSCMD_UNKNOWN == 0 && SMSCMD_CHECKIN == 1 && SMSCMD_LNSRESTART == 14 && SMSCMD_WANIPS == 15);
static_assert(std::is_same_v<decltype(RetryState::time_not_attempting), std::uint32_t>);

#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#define AT(flag) offsetof(SMSCommandConfig, flag) - offsetof(SMSCommandConfig, checkinEnabled)
static_assert(AT(rebootEnabled) == 1 && AT(rmEnabled) == 2 && AT(setCellularEnabled) == 3 &&
              AT(apnEnabled) == 4 && AT(cellularStatusEnabled) == 5 && AT(radioEnabled) == 6 &&
              AT(ethernetEnabled) == 7 && AT(wanStatusEnabled) == 8 && AT(wifiEnabled) == 9 &&
              AT(pingEnabled) == 10 && AT(serialEnabled) == 11 && AT(geopositionEnabled) == 12 &&
              AT(lnsRestartEnabled) == 13 && AT(wanIpsEnabled) == 14 && AT(enabled) == 15);
}  // namespace
