// libgateway-clock.so: replaces sleep(), clock_gettime(), time() and umask() in the daemon, by LD_PRELOAD.
// The simulated gateway can end a sleep early. The clocks then advance by the rest of the sleep.
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "simulator/clock/ClockControl.h"

namespace {
using Simulator::ClockControl;

// On a 32-bit machine, the kernel has a separate system call for 64-bit times.
#if defined(__TIMESIZE) && __TIMESIZE == 32 && defined(_TIME_BITS) && _TIME_BITS == 64
constexpr long clockGettimeCall = SYS_clock_gettime64;
#else
constexpr long clockGettimeCall = SYS_clock_gettime;
#endif

ClockControl* control = nullptr;

// Does not call dlsym(), which allocates memory: a sanitizer's allocator reads the clock under its own lock.
int realClock(clockid_t clock, timespec* now) {
  return static_cast<int>(syscall(clockGettimeCall, clock, now));
}

// Runs before main(). Clears LD_PRELOAD, so that programs that the daemon starts do not load the library.
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

// Returns the remaining seconds of a sleep of `seconds` that began at `start`, rounded up.
unsigned left(const timespec& start, unsigned seconds) {
  timespec now{};
  realClock(CLOCK_MONOTONIC, &now);
  const long long nanoseconds = (now.tv_sec - start.tv_sec) * 1000000000LL + (now.tv_nsec - start.tv_nsec);
  const long long remaining = seconds * 1000000000LL - nanoseconds;
  return remaining <= 0 ? 0 : static_cast<unsigned>((remaining + 999999999LL) / 1000000000LL);
}
}  // namespace

extern "C" {

// As in the C library, a signal with a handler ends the sleep, and the result is the remaining time.
unsigned sleep(unsigned seconds) {
  if (control == nullptr) return reinterpret_cast<unsigned (*)(unsigned)>(dlsym(RTLD_NEXT, "sleep"))(seconds);
  // With O_RDWR, open() does not block, and read() never reports an end of file. Only the first sleep opens
  // the FIFO, because the daemon sleeps only after it has detached.
  static const int wake = open(ClockControl::wakeFifo, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  timespec start{};
  realClock(CLOCK_MONOTONIC, &start);
  // The gateway may send a signal as soon as `begun` changes. The signal is blocked until ppoll() begins.
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

// The daemon calls umask() directly after its fork. stopNextDaemon() makes this call stop the daemon.
mode_t umask(mode_t mask) noexcept {
  if (control != nullptr && control->stops.exchange(0) != 0) raise(SIGSTOP);
  return static_cast<mode_t>(syscall(SYS_umask, mask));
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
