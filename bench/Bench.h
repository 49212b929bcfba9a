#pragma once

#include <benchmark/benchmark.h>
#include <json/json.h>

#include <functional>
#include <string>

#include "storage/MessageStore.h"

/// What the benchmarks share. They are to be run in a private gateway, whose /tmp is theirs.

constexpr char storeFolder[] = "/tmp/store";    ///< root of the message store
constexpr char listingFile[] = "/tmp/listing";  ///< what the stand-in of the `sms` tool lists
constexpr char inboxFolder[] = "/tmp/store/inbox/received";

/// Runs `ours` and `floor` in turn, each once in an iteration, and puts the medians of their processor times,
/// that of their children included, into the counters "us" and "floor_us", in microseconds.
void runBesideFloor(benchmark::State& state, const std::function<void()>& ours,
                    const std::function<void()>& floor);

/// Runs `ours` alone; "us" as above. `before` is not measured.
void runAlone(benchmark::State& state, const std::function<void()>& before,
              const std::function<void()>& ours);

/// A received record; its guid is made from `number`, so that records are as old as their numbers are low.
Json::Value recordOf(unsigned number);

/// Empties the store and files records 0 to `count` - 1 under Received.
void fillInbox(unsigned count);
