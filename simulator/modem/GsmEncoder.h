#pragma once

#include <string>
#include <vector>

namespace Simulator {

/// Encodes a text as the network carries it and as the modem's tool prints it: in the GSM 7-bit default
/// alphabet and its extension table (3GPP TS 23.038), 160 septets in one message, a longer text in parts with
/// a concatenation header (3GPP TS 23.040). The tool prints a character as itself when its code is the same
/// in ASCII. It prints other octets as \xHH in lower case, and the octet after the escape to the extension
/// table unchanged.
struct GsmEncoder {
  struct Options {
    bool wideReference = false;  ///< a 16-bit reference: parts of 152 septets instead of 153
    unsigned parts = 0;          ///< the least number of parts; 0: as many as the text needs
    unsigned reference = 1;      ///< its low 8 or 16 bits go into the header
  };

  /// Encodes `text`, which is UTF-8. Returns an empty string, or one line on why it cannot: a character is in
  /// neither table, or there would be more than 255 parts or more parts than characters.
  [[nodiscard]] std::string encode(const std::string& text, const Options& options);

  /// The user data of each part as the tool prints it, without quotes. One element for an undivided text.
  std::vector<std::string> parts;
  /// What veld will not receive as it was written, one line each.
  std::vector<std::string> notes;
};

}  // namespace Simulator
