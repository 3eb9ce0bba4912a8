#pragma once

#include <chrono>
#include <ctime>

namespace tarnkit::test {

/// The processor time that the program has used, so that a bound on what something costs holds on a
/// machine that is busy with other things; under an emulator, about what a processor would have
/// used.
struct ProcessorTime {
  using rep = std::chrono::nanoseconds::rep;
  using period = std::chrono::nanoseconds::period;
  using duration = std::chrono::nanoseconds;
  using time_point = std::chrono::time_point<ProcessorTime>;
  static constexpr bool is_steady = true;

#ifdef TARNKIT_EMULATOR_SLOWNESS
  static constexpr int kSlowness = TARNKIT_EMULATOR_SLOWNESS;
#else
  static constexpr int kSlowness = 1;
#endif

  static time_point now() noexcept {
    std::timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time_point((std::chrono::seconds(time.tv_sec) + duration(time.tv_nsec)) / kSlowness);
  }
};

}  // namespace tarnkit::test
