// SPDX-License-Identifier: MIT
// Several processes with merging saves, one command at a time in any order, beside a model with
// plain maps: the file holds the last saved write of each key path in the order of the saves, and
// each process receives exactly what its stored tree changed by others.
//
// RC_PARAMS=max_success=5000 in the environment runs more sequences of commands.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <vector>

#include "MergingCommands.h"
#include "MergingModel.h"
#include "Platform/Files/Files.h"
#include "Support/StoreSupport.h"

using namespace MergingCommands;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t storeCount = 3;

class Comparison {
  public:
    Comparison() {
        static int number = 0;
        folder_ = fs::absolute("sequence-" + std::to_string(number++));
        setenv("XDG_CONFIG_HOME", folder_.c_str(), 1);
        for (std::size_t index = 0; index < storeCount; ++index) {
            hosts_.push_back(std::make_unique<HostProcess>());
            models_.emplace_back(file_);
        }
    }
    Comparison(const Comparison&) = delete;
    Comparison& operator=(const Comparison&) = delete;
    ~Comparison() {
        hosts_.clear();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void run(const Command& command) {
        if (!runsOnTheFile(command)) {
            const Answer expected = models_.at(command.store).run(command);
            const Answer actual = hosts_.at(command.store)->run(command);
            std::ostringstream shown;
            showValue(command, shown);
            RC_LOG() << shown.str() << "\n  is " << actual << "\n  not " << expected << '\n';
            RC_ASSERT(actual == expected);
        }
        const NSDictionary tree = StoreSupport::fileTree();
        RC_ASSERT(tree.isNull() == !file_.settings);
        RC_ASSERT(leavesOf(tree) == file_.settings.value_or(FlatSettings()));
    }

    /// Everything is saved and published; then each stored tree is the file.
    void settle() {
        run({Kind::LetSavesSucceed});
        for (std::size_t store = 0; store < storeCount; ++store)
            for (const Kind kind : {Kind::ReleaseSaves, Kind::Write, Kind::CommitBatch})
                run({kind, store, keyPathWithDefault, 1});
        for (std::size_t store = 0; store < storeCount; ++store) {
            run({Kind::Reload, store});
            run({Kind::Drain, store});
            const Answer answer = hosts_.at(store)->run({Kind::Drain, store});
            RC_ASSERT(answer.stored.value_or(FlatSettings()) == leavesOf(StoreSupport::fileTree()));
            RC_ASSERT(answer.received.empty());
        }
    }

  private:
    bool runsOnTheFile(const Command& command) {
        const std::string obstacle =
            QRVPlatform::filesBeside(QRVSettingsLocation()).temporary + "/inside";
        if (command.kind == Kind::LetSavesFail) {
            fs::create_directories(obstacle);
            file_.refusesSaves = true;
        } else if (command.kind == Kind::LetSavesSucceed) {
            fs::remove_all(fs::path(obstacle).parent_path());
            file_.refusesSaves = false;
        } else if (command.kind == Kind::DeleteFile) {
            if (!fs::remove(QRVSettingsLocation())) return true;
            file_.settings.reset();
            ++file_.version;
        } else {
            return false;
        }
        return true;
    }

    fs::path folder_;
    ModelFile file_;
    std::vector<ModelStore> models_;
    std::vector<std::unique_ptr<HostProcess>> hosts_;
};

rc::Gen<Command> anyCommand() {
    const auto kind = rc::gen::weightedElement<Kind>({{12, Kind::Write},
                                                      {5, Kind::Remove},
                                                      {3, Kind::WriteDictionary},
                                                      {1, Kind::WriteWhatNoFileCanHold},
                                                      {3, Kind::OpenBatch},
                                                      {4, Kind::CommitBatch},
                                                      {4, Kind::HoldSaves},
                                                      {5, Kind::ReleaseSaves},
                                                      {5, Kind::Reload},
                                                      {6, Kind::Drain},
                                                      {1, Kind::SaveObject},
                                                      {1, Kind::Import},
                                                      {1, Kind::LetSavesFail},
                                                      {2, Kind::LetSavesSucceed},
                                                      {1, Kind::DeleteFile}});
    return rc::gen::build<Command>(
        rc::gen::set(&Command::kind, kind),
        rc::gen::set(&Command::store, rc::gen::inRange<std::size_t>(0, storeCount)),
        rc::gen::set(&Command::keyPath, rc::gen::inRange<std::size_t>(0, keyPaths.size())),
        rc::gen::set(&Command::number, rc::gen::inRange(0, 6)));
}

}  // namespace

RC_GTEST_PROP(MergingModel, AnySequenceInSeveralProcessesGivesWhatTheModelGives, ()) {
    const auto commands =
        *rc::gen::scale(0.6, rc::gen::container<std::vector<Command>>(anyCommand()));
    Comparison comparison;
    for (const Command& command : commands) comparison.run(command);
    comparison.settle();
}
