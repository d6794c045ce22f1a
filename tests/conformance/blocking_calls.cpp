// In the program, calls that may block run in another thread (toolkit/wait.h). So they do in all of these
// tests.
#include "platform/blocking.h"

#include <gtest/gtest.h>

#include <exception>
#include <thread>

namespace {

void runInAnotherThread(const std::function<void()>& call) {
    std::exception_ptr error;
    std::thread thread([&] {
        try {
            call();
        } catch (...) { // for the thread that waits
            error = std::current_exception();
        }
    });
    thread.join();
    if (error) std::rethrow_exception(error);
}

class BlockingCalls : public testing::Environment {
    void SetUp() override { platform::setBlockingCallRunner(runInAnotherThread); }
    void TearDown() override { platform::setBlockingCallRunner({}); }
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new BlockingCalls);

} // namespace
