// SPDX-License-Identifier: MIT
#include "Platform/Machine/MachineIdentity.h"

#include <algorithm>
#include <utility>

#include "Platform/Files/Files.h"
#include "Platform/Machine/KernelName.h"
#include "Platform/Threads/Mutex.h"

namespace QRVPlatform {

namespace {

// With its terminating zero the text has to fit a buffer of 128 bytes.
constexpr std::size_t longestModel = 127;
constexpr std::size_t largestSource = 4096;

class CurrentSources {
  public:
    MachineIdentitySources replace(MachineIdentitySources sources) {
        const LockGuard lock(mutex_);
        return std::exchange(sources_, std::move(sources));
    }
    MachineIdentitySources get() const {
        const LockGuard lock(mutex_);
        return sources_;
    }

  private:
    mutable Mutex mutex_;
    MachineIdentitySources sources_ QRV_GUARDED_BY(mutex_);
};

CurrentSources& currentSources() {
    static auto& sources = *new CurrentSources;
    return sources;
}

std::string trimmed(std::string_view text) {
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    text = text.substr(0, text.find('\0'));
    const std::size_t start = text.find_first_not_of(whiteSpace);
    if (start == std::string_view::npos) return {};
    return std::string(text.substr(start, text.find_last_not_of(whiteSpace) - start + 1));
}

std::string firstText(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        std::string text = trimmed(contentsOfFile(file, largestSource).bytes);
        if (!text.empty()) return text;
    }
    return {};
}

char asASCII(char byte) {
    return static_cast<unsigned char>(byte) < 0x80 ? byte : '?';
}

}  // namespace

std::optional<std::string> platformSerialNumber() {
    std::string text = firstText(currentSources().get().serialNumberFiles);
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<std::string> hardwareModel() {
    const MachineIdentitySources sources = currentSources().get();
    std::string text = firstText(sources.modelFiles);
    if (text.empty() && sources.usesKernelMachineName) text = kernelMachineName();
    if (text.empty() || text.size() > longestModel) return std::nullopt;
    std::transform(text.begin(), text.end(), text.begin(), asASCII);
    return text;
}

MachineIdentitySources setMachineIdentitySources(MachineIdentitySources sources) {
    return currentSources().replace(std::move(sources));
}

}  // namespace QRVPlatform
