#include "veldctl/Commands.h"

// Name, arguments, options, help, example, least and most words, function.
// clang-format off
const std::vector<Command> commands = {
    {"send", "NUMBER \"TEXT\"|-", "rwj",
     "queue a message and print its guid; '-' reads the text from standard input",
     "veldctl send +4917011111 \"The tank is full\" --retries 3 --wait", 2, 2, send},
    {"wait", "GUID [SECONDS]", "j",
     "wait until a queued message was sent or has failed, at most 60 seconds",
     "veldctl wait 2026112514032200 300", 1, 2, wait},
    {"list", "[received|sending|sent|failed]", "nigqj",
     "list messages by guid, the oldest first",
     "veldctl list failed -n 10 --since 2d", 0, 1, list},
    {"show", "GUID", "j",
     "show one message with all that its file holds",
     "veldctl show 2026112514032200", 1, 1, show},
    {"remove", "GUID...", "j",
     "remove messages, or other files of the message folders",
     "veldctl remove 2026112514032200", 1, SIZE_MAX, remove},
    {"retry", "GUID...", "rj",
     "queue failed messages again",
     "veldctl retry 2026112514032200 --retries 3", 1, SIZE_MAX, retry},
    {"seen", "GUID...", "j",
     "mark messages that failed for good, so that status no longer counts them",
     "veldctl seen $(veldctl list failed --quiet)", 1, SIZE_MAX, seen},
    {"follow", "", "saxj",
     "print each message as it comes, is sent or fails",
     "veldctl follow --state /var/lib/alarm/state --exec /usr/local/bin/alarm", 0, 0, follow},
    {"status", "", "pj",
     "say whether the daemon, the modem and the messages are well",
     "veldctl status --prometheus", 0, 0, status},
    {"check", "", "j",
     "say what is wrong with the settings, permissions and programs",
     "veldctl check", 0, 0, check},
};
// clang-format on
