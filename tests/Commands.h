#pragma once

#include <gtest/gtest.h>

#include "commands/SMSCommand.h"
#include "tests/Json.h"

/// The required settings. They permit two commands to everyone.
constexpr char commandSettings[] =
    "{'enabled':true,'checkinEnabled':true,'rebootEnabled':true,"
    "'whitelist':{'enabled':false,'numbers':[1234567,'+49170']},'password':{'enabled':false,'text':'secret'}"
    "}";

/// The commands with these settings and some changes.
struct Commands : SMSCommand {
  explicit Commands(const char* changes = "{}") : SMSCommand(merged(json(commandSettings), json(changes))) {
    EXPECT_TRUE(loadConfig());
  }
};
