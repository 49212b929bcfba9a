#pragma once

#include <json/json.h>

#include <string>

/// The answer of the local API to a request for the settings.
struct ApiAnswer {
  Json::Value settings;  ///< null on a fault
  std::string fault;     ///< a fault of the answer or the connection; empty if there is none
};

/// Requests the settings from the local API. Waits at most three seconds.
ApiAnswer askForSettings();
