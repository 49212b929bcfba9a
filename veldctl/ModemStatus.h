#pragma once

#include "veldctl/Report.h"

/// The state of the modem. Only veld's own tool can report it, a gateway's tool cannot.
namespace ModemStatus {

/// Whether veld's own tool is installed.
bool isKnown();

/// Runs the tool for at most ten seconds. Reports modem, SIM card, network, and the room for messages.
void report(Report& report);

/// Runs the tool and reports whether it prints the state of the modem.
void check(Report& report);

}  // namespace ModemStatus
