// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

struct SystemLoad {
    double busy = 0;               ///< share of the processor time since the last sample, 0 to 1
    std::uint64_t usedMemory = 0;  ///< bytes
    std::uint64_t freeMemory = 0;  ///< bytes
    bool isConnected = false;      ///< whether an interface other than the loopback is up
};

class SystemLoadSampler {
  public:
    SystemLoad sample();

  private:
    struct ProcessorTime {
        std::uint64_t busy = 0;
        std::uint64_t all = 0;
    };
    static ProcessorTime processorTime();
    ProcessorTime last_;
};
