#pragma once

#include <string>
#include <vector>

namespace Simulator {

/// Encodes a text in the GSM 7-bit default alphabet and its extension table (3GPP TS 23.038). 160 septets fit
/// into one message; a longer text becomes several parts with a concatenation header (3GPP TS 23.040). The
/// result has the form in which the modem's tool prints it: a character as itself if it has the same code in
/// ASCII, an octet after the escape to the extension table unchanged, any other octet as \xHH in lower case.
struct GsmEncoder {
  struct Options {
    bool wideReference = false;  ///< a 16-bit reference: parts of 152 septets instead of 153
    unsigned parts = 0;          ///< the least number of parts; 0: as many as the text needs
    unsigned reference = 1;      ///< the header has its low 8 or 16 bits
  };

  /// Encodes a text in UTF-8. Returns an empty string, or one line that says why it cannot: a character is in
  /// neither table, or the text needs more than 255 parts or has fewer characters than parts.
  [[nodiscard]] std::string encode(const std::string& text, const Options& options);

  /// The user data of each part as the tool prints it, without quotes. A text that fits has one part.
  std::vector<std::string> parts;
  /// One line for each difference between the text and what veld receives.
  std::vector<std::string> notes;
};

}  // namespace Simulator
