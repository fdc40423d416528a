// SPDX-License-Identifier: MIT
#pragma once

// What tells this machine and its model from others. Any thread; nothing is remembered between
// calls.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace QRVPlatform {

/// A serial number of this machine that every user may read and that does not change; empty when
/// the system has none.
std::optional<std::string> platformSerialNumber();

/// The model of this machine, 127 bytes of ASCII at most (a byte that is none becomes `?`). Empty
/// when the text is longer, or nothing tells the model.
std::optional<std::string> hardwareModel();

using SHA1Digest = std::array<std::uint8_t, 20>;
SHA1Digest CC_SHA1(std::string_view bytes);

/// Where the two texts come from: the first file that holds text. White space around it, and what
/// follows a zero byte, do not count.
struct MachineIdentitySources {
    // The serial number of the board is for root only, and a program that root runs once must not
    // make another machine of this one.
    std::vector<std::string> serialNumberFiles = {"/etc/machine-id", "/var/lib/dbus/machine-id"};
    std::vector<std::string> modelFiles = {"/sys/class/dmi/id/product_name",
                                           "/sys/firmware/devicetree/base/model"};
    /// Where no file tells the model, as in containers and on small boards, the kernel's name of
    /// the hardware does: without a model the settings of fans and sensors are reset at each start.
    bool usesKernelMachineName = true;
};
/// For tests; returns the sources before.
MachineIdentitySources setMachineIdentitySources(MachineIdentitySources sources);

}  // namespace QRVPlatform
