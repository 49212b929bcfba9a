#include "veldctl/Commands.h"

// Name, arguments, options, help, example, least and greatest number of arguments, function.
// clang-format off
const std::vector<Command> commands = {
    {"send", "NUMBER \"TEXT\"|-", "rwj",
     "queue a message and print its guid; '-' reads the text from standard input",
     "veldctl send +4917011111 \"The tank is full\" --retries 3 --wait", 2, 2, send},
    {"wait", "GUID [SECONDS]", "j",
     "wait at most SECONDS (default 60) until a queued message is sent or has failed",
     "veldctl wait 2026112514032200 300", 1, 2, wait},
    {"list", "[received|sending|sent|failed]", "nigqj",
     "list messages by guid, oldest first",
     "veldctl list failed -n 10 --since 2d", 0, 1, list},
    {"show", "GUID", "j",
     "show one message and the whole content of its file",
     "veldctl show 2026112514032200", 1, 1, show},
    {"remove", "GUID...", "j",
     "remove messages, or other files in the message folders",
     "veldctl remove 2026112514032200", 1, SIZE_MAX, remove},
    {"retry", "GUID...", "rj",
     "queue failed messages again",
     "veldctl retry 2026112514032200 --retries 3", 1, SIZE_MAX, retry},
    {"seen", "GUID...", "j",
     "mark permanently failed messages, so that \"veldctl status\" no longer warns of them",
     "veldctl seen $(veldctl list failed --quiet)", 1, SIZE_MAX, seen},
    {"follow", "", "saxj",
     "report each message when it is received, when it is sent, and when it fails",
     "veldctl follow --state /var/lib/alarm/state --exec /usr/local/bin/alarm", 0, 0, follow},
    {"status", "", "pj",
     "report the state of the daemon, the modem and the messages",
     "veldctl status --prometheus", 0, 0, status},
    {"check", "", "j",
     "report faults in the settings, the file permissions and the installed programs",
     "veldctl check", 0, 0, check},
};
// clang-format on
