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

namespace {

constexpr unsigned settlingPasses = 4;  // enough for a retry after a new start

struct Point {
  const Scenario* scenario;
  Tracer::Call call;
  std::string error;  ///< empty: SIGKILL
  bool mayBeUnanswered;

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

class Runner {
 public:
  explicit Runner(const Trial::Programs& programs) : programs_(programs) {}

  // The calls of a pass that nothing disturbs, and what the daemon then has open.
  const Recording& record(const Scenario& scenario) {
    Recording& recording = recordings_[scenario.name];
    if (!recording.calls.empty()) return recording;
    Trial trial = prepare(scenario);
    Tracer tracer;
    if (!begin(trial, scenario, tracer, "") || !trial.awaitSleep()) {
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
    Trial trial = prepare(*point.scenario);
    Tracer tracer;
    if (!begin(trial, *point.scenario, tracer, point.injection())) return {{"ended: before the pass"}, {}};
    return point.error.empty() ? crash(trial, point, tracer) : fault(trial, point, tracer);
  }

 private:
  Trial prepare(const Scenario& scenario) {
    Trial::Programs programs = programs_;
    if (scenario.atStart)
      programs.daemon =
          Tracer::stoppingOnce(programs.daemon, programs.simulatorFolder + "/libgateway-clock.so");
    Trial trial(programs, scenario.limit);
    if (!scenario.atStart && !trial.start()) std::abort();
    scenario.before(trial);
    scenario.arrive(trial);
    return trial;
  }

  static bool begin(Trial& trial, const Scenario& scenario, Tracer& tracer, const std::string& injection) {
    std::string problem;
    if (scenario.atStart && !(trial.daemon().start(problem) && Tracer::awaitStop(trial.daemon().pid())))
      return false;
    if (!tracer.attach(trial.daemon().pid(), injection)) return false;
    if (scenario.atStart)
      trial.daemon().signal(SIGCONT);
    else
      trial.gateway().clock().grant();
    return true;
  }

  // The calls of the library that runs the clock belong to no pass.
  static void dropClock(std::vector<Tracer::Call>& calls) {
    const auto isClock = [](const Tracer::Call& call) {
      return call.name == "ppoll" || call.name == "futex" ||
             (call.name == "read" && call.text.find(", 64)") != std::string::npos);
    };
    calls.erase(std::remove_if(calls.begin(), calls.end(), isClock), calls.end());
  }

  Verdict crash(Trial& trial, const Point& point, Tracer& tracer) {
    if (!trial.awaitEnd()) return {{"hang: it survived"}, {}};
    tracer.detach();
    const bool listedAgain = trial.modemHolds();
    if (!trial.start() || !trial.pass(settlingPasses)) return {{"hang: the next daemon"}, {}};
    return trial.look(listedAgain, point.mayBeUnanswered);
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
    const bool listedAgain = trial.modemHolds();
    if (!trial.pass(settlingPasses)) return {{"hang: in the next pass"}, {}};
    Verdict verdict = trial.look(listedAgain, true);
    trial.mayBeDisplaced();
    trial.receive("came in afterwards");
    trial.queue("was queued afterwards");
    if (!trial.pass()) return {{"hang: in a later pass"}, {}};
    verdict.harms.merge(trial.look(listedAgain, true).harms);
    if (daemon.footprint().descriptors > record(*point.scenario).descriptors)
      verdict.harms.insert("left: " + std::to_string(daemon.footprint().descriptors) + " descriptors");
    if (daemon.footprint().children > 0 && point.call.name != "wait4") verdict.harms.insert("left: a child");
    return verdict;
  }

  const Trial::Programs programs_;
  std::map<std::string, Recording> recordings_;
};

bool isFlush(const Tracer::Call& call) { return call.name == "fsync" || call.name == "fdatasync"; }

// Whether, before this call, a send is noted and its outcome is not: from what has to do with the send file
// to the next flush.
bool maySendBeUnanswered(const Tracer::Call& call, bool before) {
  return call.text.find("/sms-tmp") != std::string::npos || (before && !isFlush(call));
}

using ErrorsOf = std::function<std::vector<std::string>(const std::string& call)>;

bool tryPoints(const Trial::Programs& programs, const Selection& selection, const ErrorsOf& errorsOf) {
  Runner runner(programs);
  std::vector<Point> points;
  for (const Scenario& scenario : scenarios) {
    if (!selection.scenario.empty() && selection.scenario != scenario.name) continue;
    const std::vector<Tracer::Call>& calls = runner.record(scenario).calls;
    const bool flushes = std::any_of(calls.begin(), calls.end(), isFlush);
    bool unanswered = false;
    for (const Tracer::Call& call : calls) {
      unanswered = flushes && maySendBeUnanswered(call, unanswered);
      for (const std::string& error : errorsOf(call.name))
        points.push_back({&scenario, call, error, unanswered});
    }
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
    kinds.insert("points");
    for (const std::string& kind : kinds)
      std::cout << "\t" << point.scenario->name << "\t" << kind << std::endl;
  }
  return good;
}

}  // namespace

bool tryCrashPoints(const Trial::Programs& programs, const Selection& selection) {
  return tryPoints(programs, selection, [](const std::string&) { return std::vector<std::string>{""}; });
}

bool tryFaultPoints(const Trial::Programs& programs, const Selection& selection) {
  return tryPoints(programs, selection, plausibleErrors);
}
