// SPDX-License-Identifier: MIT
// The application of several processes follows the desktop's light or dark.
#include "Desktop.h"

namespace {

class MenubarAppearance : public testing::Test, public Desktop {
  protected:
    bool shows(const std::string& text) {
        return waitUntil([&] {
            const std::string output = launcher->output();
            const std::size_t place = output.rfind("\n", output.size() - 2);
            return output.find(text, place == std::string::npos ? 0 : place) != std::string::npos;
        });
    }
    std::optional<ToolSupport::RunningTool> launcher;
};

}  // namespace

TEST_F(MenubarAppearance, IsThatOfTheDesktop) {
    startPortal({"value uint32 1", "own"});
    launcher.emplace(QRV_MENUBAR_HOST, std::vector<std::string>{}, ToolSupport::Surroundings{});
    ASSERT_TRUE(shows("dark indigo")) << launcher->output() << launcher->errors();
    tellPortal({"value uint32 0", "changed"});
    ASSERT_TRUE(shows("light indigo")) << launcher->output() << launcher->errors();
    tellPortal({"value uint32 1", "changed"});
    EXPECT_TRUE(shows("dark indigo")) << launcher->output() << launcher->errors();
}

TEST_F(MenubarAppearance, IsSavedWhenItsProcessEnds) {
    startPortal({"value uint32 1", "own"});
    const ToolSupport::Surroundings none;
    ToolSupport::RunningTool process(QRV_MENUBAR_HOST, {"appearance"}, none);
    ASSERT_TRUE(portal->says("asked ReadOne")) << process.errors();
    ASSERT_TRUE(waitUntil([] {
        return ToolSupport::run({"appearance", "get"}).output == "Dark\n";
    }));
    process.send(SIGTERM);
    EXPECT_EQ(process.finish().exitCode, 0);
}
