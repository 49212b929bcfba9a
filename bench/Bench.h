#pragma once

#include <benchmark/benchmark.h>
#include <json/json.h>

#include <functional>
#include <string>

#include "storage/MessageStore.h"

/// Shared code of the benchmarks. Run them in a private gateway, which has its own /tmp.

constexpr char storeFolder[] = "/tmp/store";    ///< root of the message store
constexpr char listingFile[] = "/tmp/listing";  ///< the listing that the tool `sms` prints
constexpr char inboxFolder[] = "/tmp/store/inbox/received";

/// Compares `ours` with `floor`: runs each once per iteration. Stores the medians of their processor times in
/// microseconds in the counters "us" and "floor_us". The times include child processes.
void runBesideFloor(benchmark::State& state, const std::function<void()>& ours,
                    const std::function<void()>& floor);

/// Runs `before`, then `ours`, in each iteration. Stores the median of the processor times of `ours` in "us".
void runAlone(benchmark::State& state, const std::function<void()>& before,
              const std::function<void()>& ours);

/// Returns a received record whose guid contains `number`: a lower number means an older record.
Json::Value recordOf(unsigned number);

/// Empties the message store and files the records 0 to `count` - 1 as received.
void fillInbox(unsigned count);
