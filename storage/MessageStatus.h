#pragma once

/// The status of a message record: where it stands on its way. It is passed as an int, and a value outside 1
/// to 4 is no error: such a status has no folder, and its text is "unknown".
namespace MessageStatus {
enum : int { Received = 1, Sending = 2, Sent = 3, Failed = 4 };

/// "received", "sending", "sent" or "failed"; "unknown" for every other value.
const char* text(int status);
}  // namespace MessageStatus
