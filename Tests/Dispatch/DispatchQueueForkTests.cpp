// SPDX-License-Identifier: MIT
// Serial queues and the end of the process.

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "Platform/Dispatch/Dispatch.h"
#include "Support/ChildProcess.h"

TEST(DispatchQueueProcess, AnExceptionFromAsyncWorkEndsTheProgram) {
    ChildProcess child([] {
        DispatchQueue queue("test.exception");
        queue.async([] { throw std::runtime_error("not swallowed"); });
        queue.sync([] {});
        return true;
    });
    EXPECT_TRUE(child.diedOf(SIGABRT));
}

TEST(DispatchQueueProcess, AProcessMayExitWhileAQueueIsAtWork) {
    ChildProcess child([]() -> bool {
        const Gate isAtWork;
        auto& queue = *new DispatchQueue("test.exit");
        queue.async([&] {
            isAtWork.open();
            for (;;) pause();
        });
        if (!isAtWork.wait()) return false;
        std::exit(0);
    });
    EXPECT_TRUE(child.succeeded());
}
