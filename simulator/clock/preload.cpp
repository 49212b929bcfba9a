// libgateway-clock.so: preloaded into the daemon, it lets the gateway run the daemon's time. The daemon's
// sleeps can be cut short, and the clocks then go on by what was cut off, as if it had passed.
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "simulator/clock/ClockControl.h"

namespace {

using Simulator::ClockControl;

// With 64-bit times on a 32-bit system the kernel has calls of their own for them.
#if defined(__TIMESIZE) && __TIMESIZE == 32 && defined(_TIME_BITS) && _TIME_BITS == 64
constexpr long clockGettimeCall = SYS_clock_gettime64;
#else
constexpr long clockGettimeCall = SYS_clock_gettime;
#endif

ClockControl* control = nullptr;

// Asks the kernel: a sanitizer's allocator looks at the clock under its lock, where looking up the C
// library's function, which allocates, would wait for ever.
int realClock(clockid_t clock, timespec* now) {
  return static_cast<int>(syscall(clockGettimeCall, clock, now));
}

// Runs before main: the daemon's children, which are no part of this game, must not inherit the library.
__attribute__((constructor)) void attach() {
  unsetenv("LD_PRELOAD");
  const int file = open(ClockControl::file, O_RDWR | O_CLOEXEC);
  if (file < 0) return;
  void* memory = mmap(nullptr, sizeof(ClockControl), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  if (memory != MAP_FAILED) control = static_cast<ClockControl*>(memory);
}

bool isHeld() { return control != nullptr && control->hold != 0; }

bool isGranted(std::uint32_t number) { return static_cast<std::int32_t>(control->granted - number) >= 0; }

// The seconds that are left of a sleep of `seconds` since `start`, rounded up; 0 when it is over.
unsigned left(const timespec& start, unsigned seconds) {
  timespec now{};
  realClock(CLOCK_MONOTONIC, &now);
  const long long nanoseconds = (now.tv_sec - start.tv_sec) * 1000000000LL + (now.tv_nsec - start.tv_nsec);
  const long long remaining = seconds * 1000000000LL - nanoseconds;
  return remaining <= 0 ? 0 : static_cast<unsigned>((remaining + 999999999LL) / 1000000000LL);
}

}  // namespace

extern "C" {

// Ends at once when a signal has been handled, as the real one does; returns the seconds that were left then.
unsigned sleep(unsigned seconds) {
  if (control == nullptr) return reinterpret_cast<unsigned (*)(unsigned)>(dlsym(RTLD_NEXT, "sleep"))(seconds);
  // Open for both directions: it never ends, and opening it does not block. Not before: the daemon closes
  // what it finds open at its start.
  static const int wake = open(ClockControl::wakeFifo, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  timespec start{};
  realClock(CLOCK_MONOTONIC, &start);
  // Who has seen that the sleep has begun may send a signal: only the wait lets it in, so that it ends it.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  const std::uint32_t number = ++control->begun;
  unsigned remaining = seconds;
  bool interrupted = false;
  while (!interrupted && !isGranted(number)) {
    remaining = isHeld() ? seconds : left(start, seconds);
    if (remaining == 0) break;
    const timespec wait{static_cast<time_t>(remaining), 0};
    pollfd grant{wake, POLLIN, 0};
    const int result = ppoll(&grant, 1, isHeld() ? nullptr : &wait, &before);
    interrupted = result == -1 && errno == EINTR;
    char bytes[64];
    while (result == 1 && read(wake, bytes, sizeof bytes) > 0) continue;
  }
  if (!interrupted && remaining > 0) control->skipped += remaining;
  ++control->ended;
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return interrupted ? remaining : 0;
}

int clock_gettime(clockid_t clock, timespec* now) noexcept {
  const int result = realClock(clock, now);
  if (result != 0 || control == nullptr || clock != CLOCK_MONOTONIC) return result;
  if (isHeld()) *now = {static_cast<time_t>(control->monotonic), 0};
  now->tv_sec += control->skipped;
  return result;
}

time_t time(time_t* result) noexcept {
  timespec now{};
  realClock(CLOCK_REALTIME, &now);
  if (isHeld()) now.tv_sec = control->wall;
  if (control != nullptr) now.tv_sec += control->skipped;
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}
}
