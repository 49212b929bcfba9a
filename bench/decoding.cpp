// Measures the decoding of user data in a listing: header, escapes and alphabet.

#include <string>

#include "bench/Bench.h"
#include "provider/UserData.h"

namespace {
// Repeats `piece` until the text has at least `size` bytes.
std::string repeated(const std::string& piece, std::int64_t size) {
  std::string text;
  while (text.size() < static_cast<std::size_t>(size)) text += piece;
  return text;
}

void decode(benchmark::State& state, const std::string& piece) {
  const std::string printed = repeated(piece, state.range(0));
  for (auto _ : state) {
    Json::Value record;
    std::string text = decodeUserData(printed, record);
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(printed.size()));
  state.counters["MBps"] = benchmark::Counter(static_cast<double>(printed.size()) * 1e-6,
                                              benchmark::Counter::kIsIterationInvariantRate);
}

void decodeText(benchmark::State& state) {
  decode(state, "Plain text, a \\\"quote\\\" and \\x1be 100 \\x02 ");
}
void decodeEscapes(benchmark::State& state) { decode(state, "\\x41"); }

constexpr std::int64_t sizes[] = {1 << 10, 1 << 14, 1 << 17, 1 << 20};
constexpr std::int64_t millionEscapes = 4000000;

BENCHMARK(decodeText)->ArgsProduct({{std::begin(sizes), std::end(sizes)}})->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeEscapes)
    ->ArgsProduct({{std::begin(sizes), std::end(sizes)}})
    ->Arg(millionEscapes)
    ->Unit(benchmark::kMicrosecond);
}  // namespace
