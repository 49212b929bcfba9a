#pragma once

#include <string>
#include <vector>

namespace Simulator {
/// Encodes a text in the GSM 7-bit default alphabet and its extension table (3GPP TS 23.038). 160 septets fit
/// into one message; a longer text becomes several parts with a concatenation header (3GPP TS 23.040). The
/// result is user data as the modem's tool prints it. Characters with the same code in ASCII stay unchanged,
/// and so do printable octets after an escape to the extension table. All other octets become \xHH.
struct GsmEncoder {
  struct Options {
    bool wideReference = false;  ///< true: a 16-bit reference, and 152 septets in each part instead of 153
    unsigned parts = 0;          ///< the minimum number of parts; 0: no minimum
    unsigned reference = 1;      ///< the low 8 or 16 bits of this number are the reference in the header
  };

  /// Encodes a text in UTF-8. Returns an empty string, or one line about the error: a character is in neither
  /// table, the text needs more than 255 parts, or it has fewer characters than `options.parts`.
  [[nodiscard]] std::string encode(const std::string& text, const Options& options);

  /// The user data of each part, without the quotes that the tool prints around it.
  std::vector<std::string> parts;
  /// One line for each difference between the text and the text that veld decodes.
  std::vector<std::string> notes;
};
}  // namespace Simulator
