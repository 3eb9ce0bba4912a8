#pragma once

#include <cstdint>

namespace tarnkit::bench {

/// Bytes that the process holds from its heap just now, and the most it has held since the last
/// `resetPeak`; counted at every allocation of the program.
std::int64_t liveBytes();
std::int64_t peakBytes();
void resetPeak();

}  // namespace tarnkit::bench
