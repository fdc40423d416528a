// SPDX-License-Identifier: MIT
// Several processes that write to one settings file of this store, with merging saves unless
// BENCHMARK_WHOLE_TREES is in the environment.
#include "Measures/Together.h"
#include "Own/OwnStore.h"

namespace {

class TogetherStore : public OwnStore {
  public:
    explicit TogetherStore(const std::filesystem::path& folder) : OwnStore(folder) {
        const bool savesWholeTrees = std::getenv("BENCHMARK_WHOLE_TREES") != nullptr;
        QRVSettings::sharedSettings().setMergesSaves(!savesWholeTrees);
    }
};

}  // namespace

int main(int argc, char** argv) {
    return Measures::together<TogetherStore>(argc, argv);
}
