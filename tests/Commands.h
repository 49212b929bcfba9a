#pragma once

#include <gtest/gtest.h>

#include "commands/SMSCommand.h"
#include "tests/Json.h"

/// The required keys of the settings. These values permit two commands to everyone.
constexpr char commandSettings[] =
    "{'enabled':true,'checkinEnabled':true,'rebootEnabled':true,"
    "'whitelist':{'enabled':false,'numbers':[1234567,'+49170']},'password':{'enabled':false,'text':'secret'}"
    "}";

/// SMSCommand with `commandSettings`, in which `changes` replaces some values.
struct Commands : SMSCommand {
  explicit Commands(const char* changes = "{}") : SMSCommand(merged(json(commandSettings), json(changes))) {
    EXPECT_TRUE(loadConfig());
  }
};
