// SPDX-License-Identifier: MIT
#include "Platform/Machine/MachineIdentity.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Platform/Files/FileFailures.h"
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
    using Shared = std::shared_ptr<const MachineIdentitySources>;
    Shared replace(MachineIdentitySources sources) {
        auto shared = std::make_shared<const MachineIdentitySources>(std::move(sources));
        const LockGuard lock(mutex_);
        return std::exchange(sources_, std::move(shared));
    }
    Shared get() const {
        const LockGuard lock(mutex_);
        return sources_;
    }

  private:
    mutable Mutex mutex_;
    Shared sources_ QRV_GUARDED_BY(mutex_) = std::make_shared<const MachineIdentitySources>();
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

struct Source {
    std::string text;
    bool lackedMeans = false;
};

/// After a shortage no later file answers: its text may differ from that of the file in question.
Source firstText(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        const FileContents contents = contentsOfFile(file, largestSource);
        if (FileFailures::isShortage(contents.error)) return {{}, true};
        std::string text = trimmed(contents.bytes);
        if (!text.empty()) return {text, false};
    }
    return {};
}

char asASCII(char byte) {
    return static_cast<unsigned char>(byte) < 0x80 ? byte : '?';
}

}  // namespace

std::optional<std::string> platformSerialNumber(bool* lackedMeans) {
    Source source = firstText(currentSources().get()->serialNumberFiles);
    if (lackedMeans != nullptr) *lackedMeans = source.lackedMeans;
    if (source.text.empty()) return std::nullopt;
    return std::move(source.text);
}

std::optional<std::string> hardwareModel(bool* lackedMeans) {
    const CurrentSources::Shared sources = currentSources().get();
    const Source source = firstText(sources->modelFiles);
    if (lackedMeans != nullptr) *lackedMeans = source.lackedMeans;
    if (source.lackedMeans) return std::nullopt;
    std::string text = source.text;
    if (text.empty() && sources->usesKernelMachineName) text = kernelMachineName();
    if (text.empty() || text.size() > longestModel) return std::nullopt;
    std::transform(text.begin(), text.end(), text.begin(), asASCII);
    return text;
}

MachineIdentitySources setMachineIdentitySources(MachineIdentitySources sources) {
    return *currentSources().replace(std::move(sources));
}

}  // namespace QRVPlatform
