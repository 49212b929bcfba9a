#include "bench/Bench.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {
double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

double processorTime() {
  double sum = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    getrusage(who, &usage);
    sum += seconds(usage.ru_utime) + seconds(usage.ru_stime);
  }
  return sum;
}

double timeOf(const std::function<void()>& action) {
  const double begin = processorTime();
  action();
  return processorTime() - begin;
}

double medianMicroseconds(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle * 1e6;
}
}  // namespace

void runBesideFloor(benchmark::State& state, const std::function<void()>& ours,
                    const std::function<void()>& floor) {
  std::vector<double> ourTimes, floorTimes;
  for (auto _ : state) {
    // Alternates the order, so that warm caches help both actions equally.
    const bool floorFirst = ourTimes.size() % 2 == 1;
    if (floorFirst) floorTimes.push_back(timeOf(floor));
    ourTimes.push_back(timeOf(ours));
    if (!floorFirst) floorTimes.push_back(timeOf(floor));
    state.SetIterationTime(ourTimes.back() + floorTimes.back());
  }
  state.counters["us"] = medianMicroseconds(ourTimes);
  state.counters["floor_us"] = medianMicroseconds(floorTimes);
}

void runAlone(benchmark::State& state, const std::function<void()>& before,
              const std::function<void()>& ours) {
  std::vector<double> times;
  for (auto _ : state) {
    before();
    times.push_back(timeOf(ours));
    state.SetIterationTime(times.back());
  }
  state.counters["us"] = medianMicroseconds(times);
}

Json::Value recordOf(unsigned number) {
  char guid[32];
  std::snprintf(guid, sizeof(guid), "20260101%08u", number);
  Json::Value record;
  record["guid"] = guid;
  record["source"] = "+4917012345";
  record["timestamp"] = "2026/01/01 12:00:00";
  record["message"] = "The quick brown fox jumps over the lazy dog, " + std::to_string(number) + " times.";
  return record;
}

void fillInbox(unsigned count) {
  std::filesystem::remove_all(storeFolder);
  std::filesystem::create_directories(inboxFolder);
  for (unsigned i = 0; i < count; ++i) {
    const Json::Value record = recordOf(i);
    std::ofstream(std::string(inboxFolder) + "/" + record["guid"].asString()) << record;
  }
}
