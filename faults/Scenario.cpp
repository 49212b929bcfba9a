#include "faults/Scenario.h"

namespace {

constexpr char longText[] =
    "The water in the lower tank stands at two metres and forty centimetres, the upper pump runs since four "
    "in the "
    "morning, and the man who has the key for the gate will not be here before noon today.";

void nothing(Trial&) {}

}  // namespace

const std::vector<Scenario> scenarios = {
    {"plain", nothing, [](Trial& trial) { trial.receive("a plain message"); }},
    {"several", nothing,
     [](Trial& trial) {
       trial.receive("the first");
       trial.receive("p secret #ping 8.8.8.8", Trial::friendly);
       trial.receive("a long message", Trial::other, 2);
     }},
    {"completed",
     [](Trial& trial) {
       trial.receive("in two parts", Trial::other, 2, true);
       trial.pass();
     },
     [](Trial& trial) { trial.release(); }},
    {"sent", nothing, [](Trial& trial) { trial.queue("goes out"); }},
    {"refused", nothing, [](Trial& trial) { trial.queue("is refused", Trial::refused); }},
    {"retried",
     [](Trial& trial) {
       trial.queue("goes out later", Trial::refused, 3);
       trial.pass();
       trial.accept();
     },
     nothing},
    {"retried in vain",
     [](Trial& trial) {
       trial.queue("is refused for ever", Trial::refused, 30);
       trial.pass();
     },
     nothing},
    {"limits",
     [](Trial& trial) {
       for (const char* const text : {"1", "2"}) {
         trial.receive("in " + std::string(text));
         trial.queue("out " + std::string(text));
         trial.pass();
         if (*text == '1') trial.mayBeDisplaced();
       }
     },
     [](Trial& trial) {
       trial.receive("in 3");
       trial.queue("out 3");
     },
     2},
    {"start", nothing,
     [](Trial& trial) {
       trial.receive("waits on the modem");
       trial.queue("waits in the queue");
     },
     100, true},
};
