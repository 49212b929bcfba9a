#pragma once

#include <string>
#include <vector>

namespace Simulator {

/// Turns a text into what the network carries and the modem's tool prints: the GSM 7-bit default alphabet and
/// its extension table (3GPP TS 23.038), up to 160 septets in one message, a longer text in parts with a
/// concatenation header (3GPP TS 23.040). The tool prints a character that the alphabet and ASCII code alike
/// as itself, other octets as \xHH in lower case, after the escape to the extension table the octet as it
/// stands.
struct GsmEncoder {
  struct Options {
    bool wideReference = false;  ///< a 16-bit reference: parts of 152 septets instead of 153
    unsigned parts = 0;          ///< at least so many parts, even of a short text; 0: as many as it needs
    unsigned reference = 1;      ///< of the concatenation header, its low 8 or 16 bits
  };

  /// Encodes `text`, UTF-8. What it gives is empty, or says in one line that a character is in neither table,
  /// or there would be more than 255 parts or more parts than characters.
  [[nodiscard]] std::string encode(const std::string& text, const Options& options);

  /// The user data of each part as the tool prints it, without quotes. One element for an undivided text.
  std::vector<std::string> parts;
  /// What of the text will not arrive as it was written, a line each, because veld reads the tool's output
  /// narrowly.
  std::vector<std::string> notes;
};

}  // namespace Simulator
