#include "faults/Points.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>

#include "faults/ErrnoTable.h"
#include "faults/Scenario.h"
#include "faults/Tracer.h"
#include "storage/SpoolEntry.h"

namespace {

constexpr unsigned settlingPasses = 4;  // enough for a retry after a new start

struct Point {
  const Scenario* scenario;
  Tracer::Call call;
  std::string error;  ///< empty: SIGKILL

  std::string injection() const {
    return call.name + (error.empty() ? ":signal=KILL" : ":error=" + error) +
           ":when=" + std::to_string(call.nth);
  }
};

// An undisturbed pass of a scenario.
struct Recording {
  std::vector<Tracer::Call> calls;
  std::size_t descriptors = 0;  ///< of the daemon afterwards
};

// Whether the daemon has noted that a message is about to be sent, and not what came of it.
bool sendIsUnanswered() {
  const Spool::Survey spool = Spool::survey(Simulator::MessageFolders::root);
  return std::any_of(spool.notes.begin(), spool.notes.end(),
                     [](const Spool::Note& note) { return note.stage == stageOf(BegunSend{}); });
}

class Runner {
 public:
  explicit Runner(const Trial::Programs& programs) : programs_(programs) {}

  // The calls of a pass that nothing disturbs, and what the daemon then has open.
  const Recording& record(const Scenario& scenario) {
    Recording& recording = recordings_[scenario.name];
    if (!recording.calls.empty()) return recording;
    Trial trial = prepare(scenario, programs_);
    Tracer tracer;
    if (!begin(scenario, trial, tracer, {}) || !trial.awaitSleep()) {
      std::cerr << "veld-faults: " << scenario.name << ": no pass could be traced\n";
      std::exit(EXIT_FAILURE);
    }
    tracer.detach();
    recording.calls = Tracer::calls();
    trial.pass(settlingPasses);
    recording.descriptors = trial.daemon().footprint().descriptors;
    dropClock(recording.calls);
    return recording;
  }

  Verdict run(const Point& point) {
    Trial trial = prepare(*point.scenario, programs_);
    Tracer tracer;
    if (!begin(*point.scenario, trial, tracer,
               {"-e", "trace=" + point.call.name, "-e", "inject=" + point.injection()}))
      return {{"ended: before the pass"}, {}};
    return point.error.empty() ? crash(trial, tracer) : fault(trial, point, tracer);
  }

 private:
  // The calls of the library that runs the clock belong to no pass.
  static void dropClock(std::vector<Tracer::Call>& calls) {
    const auto isClock = [](const Tracer::Call& call) {
      return call.name == "ppoll" || call.name == "futex" ||
             call.text.find("/run/gateway/") != std::string::npos ||
             (call.name == "read" && call.text.find(", 64)") != std::string::npos);
    };
    calls.erase(std::remove_if(calls.begin(), calls.end(), isClock), calls.end());
  }

  static Verdict crash(Trial& trial, Tracer& tracer) {
    // It survives where the number of such calls depends on how quickly others answer.
    const bool survived = trial.awaitSleep();
    if (!survived && !trial.awaitEnd()) return {{"hang: in the pass"}, {}};
    tracer.detach();
    trial.allowListedAgain();
    const bool unanswered = sendIsUnanswered();
    if (!survived && !trial.start()) return {{"hang: the next daemon"}, {}};
    if (!trial.pass(settlingPasses)) return {{"hang: in a later pass"}, {}};
    return trial.look(unanswered);
  }

  Verdict fault(Trial& trial, const Point& point, Tracer& tracer) {
    const bool slept = trial.awaitSleep();
    tracer.detach();
    Simulator::DaemonProcess& daemon = trial.daemon();
    if (!slept && daemon.running()) return {{"hang: in the pass"}, {}};
    if (!daemon.running()) {
      const std::string ending = daemon.ending();
      if (!point.scenario->atStart || ending.find("signal") == 0) return {{"ended: with " + ending}, {}};
      if (!trial.start()) return {{"ended: the next daemon, too"}, {}};
    }
    trial.allowListedAgain();
    if (!trial.pass(settlingPasses)) return {{"hang: in the next pass"}, {}};
    Verdict verdict = trial.look(true);
    trial.mayBeDisplaced();
    trial.receive("came in afterwards");
    trial.queue("was queued afterwards");
    if (!trial.pass()) return {{"hang: in a later pass"}, {}};
    verdict.harms.merge(trial.look(true).harms);
    if (daemon.footprint().descriptors > record(*point.scenario).descriptors)
      verdict.harms.insert("left: " + std::to_string(daemon.footprint().descriptors) + " descriptors");
    if (daemon.footprint().children > 0 && point.call.name != "wait4") verdict.harms.insert("left: a child");
    return verdict;
  }

  const Trial::Programs programs_;
  std::map<std::string, Recording> recordings_;
};

using ErrorsOf = std::function<std::vector<std::string>(const Tracer::Call&)>;

bool tryPoints(const Trial::Programs& programs, const Selection& selection, const ErrorsOf& errorsOf) {
  Runner runner(programs);
  std::vector<Point> points;
  for (const Scenario& scenario : scenarios) {
    if (!selection.scenario.empty() && selection.scenario != scenario.name) continue;
    for (const Tracer::Call& call : runner.record(scenario).calls)
      for (const std::string& error : errorsOf(call)) points.push_back({&scenario, call, error});
  }
  if (selection.sample > 0) {
    std::shuffle(points.begin(), points.end(), std::mt19937(selection.seed));
    points.resize(std::min<std::size_t>(points.size(), selection.sample));
  }
  bool good = true;
  for (std::size_t i = selection.shard; i < points.size(); i += selection.shards) {
    const Point& point = points[i];
    const Verdict verdict = runner.run(point);
    good = good && verdict.harms.empty();
    std::set<std::string> kinds;
    for (const std::string& harm : verdict.harms) {
      kinds.insert(harm.substr(0, harm.find(':')));
      std::cout << point.scenario->name << ", call " << point.call.number << ", " << point.injection() << ": "
                << harm << "; " << point.call.text.substr(0, 80) << std::endl;
    }
    if (kinds.empty()) kinds.insert(verdict.windows.empty() ? "clean" : "in a window");
    if (!Tracer::struck()) kinds.insert("not reached");
    kinds.insert("tried");
    for (const std::string& kind : kinds)
      std::cout << "\t" << point.scenario->name << "\t" << kind << std::endl;
  }
  return good;
}

}  // namespace

bool tryCrashPoints(const Trial::Programs& programs, const Selection& selection) {
  return tryPoints(programs, selection, [](const Tracer::Call&) { return std::vector<std::string>{""}; });
}

bool tryFaultPoints(const Trial::Programs& programs, const Selection& selection) {
  return tryPoints(programs, selection, plausibleErrors);
}
