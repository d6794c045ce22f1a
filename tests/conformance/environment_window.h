// A window that the system tells about devices.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace conformance {

/// A window of this process, with a procedure of its own; it goes with this object. What cannot be arranged
/// throws std::exception.
class DeviceWindow {
public:
    DeviceWindow();
    DeviceWindow(const DeviceWindow&) = delete;
    DeviceWindow& operator=(const DeviceWindow&) = delete;
    ~DeviceWindow();

    std::intptr_t handle() const;

    /// Sends the message of a device that has come, or gone, where the system does not do so when
    /// conformance::Drives changes.
    void announce(bool arrived);

    /// Lets messages come until the condition holds; false when it does not come true in time.
    bool waitFor(const std::function<bool()>& condition);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace conformance
