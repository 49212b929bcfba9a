#pragma once

#include <benchmark/benchmark.h>
#include <json/json.h>

#include <functional>
#include <string>

#include "storage/MessageStore.h"

/// Shared code of the benchmarks. Run them in a private gateway, which has its own /tmp.

constexpr char storeFolder[] = "/tmp/store";    ///< root of the message store
constexpr char listingFile[] = "/tmp/listing";  ///< listing of the stand-in for the `sms` tool
constexpr char inboxFolder[] = "/tmp/store/inbox/received";

/// Runs `ours` and `floor` once in each iteration. Stores the medians of their CPU times, children included,
/// in the counters "us" and "floor_us", in microseconds.
void runBesideFloor(benchmark::State& state, const std::function<void()>& ours,
                    const std::function<void()>& floor);

/// Runs `ours` alone; "us" as above. `before` is not measured.
void runAlone(benchmark::State& state, const std::function<void()>& before,
              const std::function<void()>& ours);

/// A received record whose guid is made from `number`: a lower number means an older record.
Json::Value recordOf(unsigned number);

/// Empties the store and files records 0 to `count` - 1 under Received.
void fillInbox(unsigned count);
