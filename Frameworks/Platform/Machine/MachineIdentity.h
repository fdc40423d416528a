// SPDX-License-Identifier: MIT
#pragma once

// The identity of this machine and its model. For any threads; nothing is cached between calls.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QRVPlatform {

/// A serial number of this machine that every user may read and that does not change; empty when
/// the system has none. Also empty, with `lackedMeans` set, when there are no descriptors or no
/// memory left to read a source: then it says nothing about the machine.
std::optional<std::string> platformSerialNumber(bool* lackedMeans = nullptr);

/// The model of this machine, 127 bytes of ASCII at most (any other byte becomes `?`). Empty when
/// the text is longer, or when no source has one; `lackedMeans` as above.
std::optional<std::string> hardwareModel(bool* lackedMeans = nullptr);

using SHA1Digest = std::array<std::uint8_t, 20>;
SHA1Digest CC_SHA1(std::string_view bytes);

/// The sources of the two texts: of each list, the first file that holds text. White space around
/// it, and what follows a zero byte, do not count.
struct MachineIdentitySources {
    // Not the serial number of the board, which only root may read: when root runs a program once,
    // the machine must not look like another one.
    std::vector<std::string> serialNumberFiles = {"/etc/machine-id", "/var/lib/dbus/machine-id"};
    std::vector<std::string> modelFiles = {"/sys/class/dmi/id/product_name",
                                           "/sys/firmware/devicetree/base/model"};
    /// The kernel's name of the hardware is the model where no file has one, as in containers and
    /// on small boards: without a model the settings of fans and sensors are reset at each start.
    bool usesKernelMachineName = true;
};
/// For tests; returns the previous sources.
MachineIdentitySources setMachineIdentitySources(MachineIdentitySources sources);

}  // namespace QRVPlatform
