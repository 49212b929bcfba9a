#pragma once

#include <json/json.h>

#include <string>

/// What the local API says of the settings.
struct ApiAnswer {
  Json::Value settings;  ///< null when there is a fault
  std::string fault;     ///< what is wrong with the answer, or why there is none; empty when all is well
};

/// Asks the local API for the settings, and waits three seconds at most.
ApiAnswer askForSettings();
