#pragma once

#include "veldctl/Report.h"

/// The state of the modem. Only the tool of the package veld-standalone reports this state.
namespace ModemStatus {
/// Returns true if veld-standalone is installed.
bool isKnown();

/// Runs the tool for at most ten seconds. Reports modem, SIM card, network, and the room for more messages.
void report(Report& report);

/// Runs the tool and reports whether it prints the state of the modem.
void check(Report& report);
}  // namespace ModemStatus
