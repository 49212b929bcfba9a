#pragma once

/// The status of a message record, passed as an int. A value outside 1 to 4 is not an error: it has no
/// folder, and its text is "unknown".
namespace MessageStatus {
enum : int { Received = 1, Sending = 2, Sent = 3, Failed = 4 };

/// "received", "sending", "sent" or "failed"; "unknown" for every other value.
const char* text(int status);

/// Every status, in the order in which a message passes through them.
constexpr int all[] = {Received, Sending, Sent, Failed};

/// The folder of a status below the root of the store, as in "/outbox/sent"; nullptr for every other value.
const char* folder(int status);
}  // namespace MessageStatus
