// Calls of the system that may take their time: a disk that writes slowly, a service that does not answer, a
// server that is silent.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace platform {

/// Runs a call and returns when it is done. May run it in another thread, and may give up waiting by an
/// exception; the call then goes on by itself.
using BlockingCallRunner = std::function<void(std::function<void()> call)>;

/// Without one, as in the beginning, calls run where they stand.
void setBlockingCallRunner(BlockingCallRunner runner);

/// Whether a call is being waited for. What handles events of the system then puts off whatever could touch
/// what the waiting service is working on.
bool isInBlockingCall();

void runBlocking(std::function<void()> call);

/// Runs a call that may block and returns its result. It owns all that it uses (a copy of a path, a
/// descriptor of its own): whoever waits for it may be gone before it is done. And it touches nothing of the
/// program: the services keep their state in one thread.
template <class Call>
std::invoke_result_t<Call&> blocking(Call call) {
    using Result = std::invoke_result_t<Call&>;
    const auto shared = std::make_shared<Call>(std::move(call));
    // By the plain pointer: the library's check of the other one would name the file of the call's lambda.
    Call* const plain = shared.get();
    if constexpr (std::is_void_v<Result>) {
        runBlocking([shared, plain] { (*plain)(); });
    } else {
        const auto result = std::make_shared<std::optional<Result>>();
        runBlocking([shared, plain, result] { result->emplace((*plain)()); });
        return std::move(**result);
    }
}

/// Lets that time pass.
void pauseFor(std::chrono::milliseconds time);

} // namespace platform
