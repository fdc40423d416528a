// SPDX-License-Identifier: MIT
// Hosts follow the desktop's light or dark, which a portal tells on a bus.
#include <csignal>
#include <cstdlib>

#include "Desktop.h"

namespace {

struct Loop {
    const char* name;
    const char* program;
};

void PrintTo(const Loop& loop, std::ostream* stream) {
    *stream << loop.name;
}

constexpr Loop loops[] = {
#include "Followers.inc"
};

class DesktopAppearance : public testing::TestWithParam<Loop>, public Desktop {
  protected:
    void startHost() {
        host.emplace(GetParam().program);
        ASSERT_TRUE(host->says("made")) << host->output();
    }
    void expectState(const std::string& preference, const std::string& current) {
        const std::string name = "state " + std::to_string(++asked);
        EXPECT_TRUE(host->answers(name, name + ": " + preference + ", current " + current))
            << host->output();
    }
    /// The host's preference becomes this one, of which no handler is told.
    bool prefers(const std::string& preference) {
        return waitUntil([&] {
            const std::string name = "look " + std::to_string(++asked);
            host->tell(name);
            const std::string answer = host->lineOf(name + ": ");
            return answer.rfind(name + ": " + preference + ",", 0) == 0;
        });
    }
    static std::string stored() { return ToolSupport::run({"appearance", "get"}).output; }

    std::optional<Spoken> host;
    int asked = 0;
};

}  // namespace

TEST_P(DesktopAppearance, IsDark) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    expectState("dark", "Dark");
    EXPECT_EQ(host->finish().exitCode, 0);
    EXPECT_EQ(stored(), "Dark\n");
}

TEST_P(DesktopAppearance, IsLight) {
    startPortal({"value uint32 2", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop light")) << host->output();
    expectState("light", "Light");
    EXPECT_EQ(host->finish().exitCode, 0);
    EXPECT_EQ(stored(), "Light\n");
}

TEST_P(DesktopAppearance, WithoutPreferenceIsLightAndToldApart) {
    ASSERT_EQ(ToolSupport::run({"appearance", "set", "Dark"}).exitCode, 0);
    startPortal({"value uint32 0", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop none")) << host->output();
    expectState("none", "Light");
}

TEST_P(DesktopAppearance, OfALaterVersionIsNoPreference) {
    startPortal({"value uint32 7", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop none")) << host->output();
}

TEST_P(DesktopAppearance, IsFollowed) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    tellPortal({"value uint32 2", "changed"});
    ASSERT_TRUE(host->says("desktop light")) << host->output();
    expectState("light", "Light");
    tellPortal({"value uint32 1", "changed"});
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    expectState("dark", "Dark");
}

TEST_P(DesktopAppearance, IsAskedForOnlyWhenItChanges) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    ASSERT_TRUE(portal->says("asked ReadOne")) << portal->output();
    tellPortal({"value uint32 2", "other", "changed"});
    ASSERT_TRUE(host->says("desktop light")) << host->output();
    const std::string output = portal->output();
    const std::size_t second = output.find("asked", output.find("did other"));
    EXPECT_EQ(output.find("asked", second + 1), std::string::npos) << output;
}

TEST_P(DesktopAppearance, OfAnOldPortalIsFollowed) {
    startPortal({"old", "value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(portal->says("asked Read")) << portal->output();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    tellPortal({"value uint32 2", "changed"});
    ASSERT_TRUE(host->says("desktop light")) << host->output();
}

TEST_P(DesktopAppearance, StaysAsItIsWithoutABus) {
    ASSERT_EQ(ToolSupport::run({"appearance", "set", "Dark"}).exitCode, 0);
    startHost();
    expectState("none", "Dark");
    EXPECT_EQ(host->finish().output.find("desktop"), std::string::npos);
    EXPECT_EQ(stored(), "Dark\n");
}

TEST_P(DesktopAppearance, StaysAsItIsWithoutAnAddressOfABus) {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    unsetenv("XDG_RUNTIME_DIR");
    startHost();
    expectState("none", "none");
    EXPECT_EQ(host->finish().exitCode, 0);
}

TEST_P(DesktopAppearance, IsFoundOnTheBusOfTheRuntimeFolder) {
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    setenv("XDG_RUNTIME_DIR", std::filesystem::current_path().c_str(), 1);
    startPortal({"value uint32 1", "own"});
    startHost();
    EXPECT_TRUE(host->says("desktop dark")) << host->output();
}

TEST_P(DesktopAppearance, OfAPortalThatAppearsLater) {
    ASSERT_EQ(ToolSupport::run({"appearance", "set", "Dark"}).exitCode, 0);
    startPortal({"value uint32 2"});
    startHost();
    expectState("none", "Dark");
    tellPortal({"own"});
    ASSERT_TRUE(host->says("desktop light")) << host->output();
    expectState("light", "Light");
}

TEST_P(DesktopAppearance, StaysWhenThePortalEndsAndIsFollowedWhenItStartsAgain) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    portal.reset();
    ASSERT_TRUE(prefers("none")) << host->output();
    expectState("none", "Dark");
    startPortal({"value uint32 2", "own"});
    ASSERT_TRUE(host->says("desktop light")) << host->output();
    expectState("light", "Light");
}

TEST_P(DesktopAppearance, IsNotWrittenAgainWhenThePortalStartsAgain) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    tellPortal({"release"});
    ASSERT_TRUE(prefers("none")) << host->output();
    tellPortal({"own"});
    ASSERT_TRUE(prefers("dark")) << host->output();
    const std::string output = host->output();
    EXPECT_EQ(output.find("desktop"), output.rfind("desktop")) << output;
}

TEST_P(DesktopAppearance, StaysAsItIsWhenTheAnswerIsOfAWrongType) {
    ASSERT_EQ(ToolSupport::run({"appearance", "set", "Dark"}).exitCode, 0);
    for (const std::string wrong : {"'light'", "2", "[uint32 2]", "(uint32 2, uint32 2)", "true"}) {
        startPortal({"value " + wrong, "own"});
        startHost();
        ASSERT_TRUE(portal->says("asked ReadOne")) << portal->output();
        // A right answer after it is heard, and is the first one.
        tellPortal({"value uint32 1", "changed"});
        ASSERT_TRUE(host->says("desktop dark")) << host->output();
        const std::string output = host->finish().output;
        EXPECT_EQ(output.find("desktop"), output.rfind("desktop")) << wrong << ": " << output;
        portal.reset();
    }
}

TEST_P(DesktopAppearance, IsNoPreferenceWhenAnAnswerOfAWrongTypeFollows) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    tellPortal({"value 'light'", "changed"});
    EXPECT_TRUE(prefers("none")) << host->output();
    expectState("none", "Dark");
}

TEST_P(DesktopAppearance, StaysAsItIsWhenThePortalDoesNotKnowTheSetting) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"unknown", "own"}, {"old", "unknown", "own"}}) {
        startPortal(words);
        startHost();
        ASSERT_TRUE(portal->says(words.size() == 2 ? "asked ReadOne" : "asked Read"));
        expectState("none", "none");
        EXPECT_EQ(host->finish().exitCode, 0);
        portal.reset();
    }
}

TEST_P(DesktopAppearance, IsWaitedForWithoutBlockingTheHost) {
    startPortal({"keep", "value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(portal->says("asked ReadOne")) << portal->output();
    expectState("none", "none");
    tellPortal({"answer"});
    EXPECT_TRUE(host->says("desktop dark")) << host->output();
}

TEST_P(DesktopAppearance, DoesNotBlockTheHostWhenTheBusDoesNotAnswer) {
    startBus();
    bus->send(SIGSTOP);
    startHost();
    expectState("none", "none");
    ASSERT_TRUE(host->answers("destroy", "destroyed")) << host->output();
    ASSERT_TRUE(host->answers("make", "made")) << host->output();
    expectState("none", "none");
    bus->send(SIGCONT);
    startPortal({"value uint32 1", "own"});
    EXPECT_TRUE(host->says("desktop dark")) << host->output();
}

TEST_P(DesktopAppearance, IsNoLongerWaitedForAfterTheAdapterIsDestroyed) {
    startPortal({"keep", "value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(portal->says("asked ReadOne")) << portal->output();
    ASSERT_TRUE(host->answers("destroy", "destroyed")) << host->output();
    tellPortal({"answer", "value uint32 2", "changed"});
    // The next adapter hears what the first one does not.
    ASSERT_TRUE(host->answers("make", "made")) << host->output();
    ASSERT_TRUE(host->says("desktop light")) << host->output();
    expectState("light", "Light");
    const ToolSupport::Outcome outcome = host->finish();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.find("desktop dark"), std::string::npos) << outcome.output;
}

TEST_P(DesktopAppearance, CanBeDestroyedAtOnce) {
    startPortal({"value uint32 1", "own"});
    startHost();
    for (int count = 0; count < 20; ++count) {
        ASSERT_TRUE(host->answers("destroy", "destroyed")) << host->output();
        ASSERT_TRUE(host->answers("make", "made")) << host->output();
    }
    ASSERT_TRUE(prefers("dark")) << host->output();
    EXPECT_EQ(host->finish().exitCode, 0);
}

TEST_P(DesktopAppearance, StaysWhenTheBusEnds) {
    startPortal({"value uint32 1", "own"});
    startHost();
    ASSERT_TRUE(host->says("desktop dark")) << host->output();
    bus->send(SIGKILL);
    ASSERT_TRUE(prefers("none")) << host->output();
    expectState("none", "Dark");
    EXPECT_EQ(host->finish().exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(Loop, DesktopAppearance, testing::ValuesIn(loops),
                         [](const testing::TestParamInfo<Loop>& loop) { return loop.param.name; });
