// SPDX-License-Identifier: MIT
// `CC_SHA1` of MachineIdentity.h, by libmd.

#include <sha1.h>

#include "Platform/Machine/MachineIdentity.h"

namespace QRVPlatform {

SHA1Digest CC_SHA1(std::string_view bytes) {
    static_assert(SHA1_DIGEST_LENGTH == std::tuple_size_v<SHA1Digest>);
    SHA1_CTX context;
    SHA1Digest digest{};
    SHA1Init(&context);
    SHA1Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    SHA1Final(digest.data(), &context);
    return digest;
}

}  // namespace QRVPlatform
