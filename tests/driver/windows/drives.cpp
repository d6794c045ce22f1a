#include "tests/driver/windows/drives.h"

#include <dbt.h>

#include <chrono>
#include <future>
#include <thread>

namespace probe {

void sendVolumeEvent(HWND window, WPARAM event, const std::string& letters) {
    constexpr auto longEnough = std::chrono::milliseconds(300);
    std::promise<void> dealtWith;
    const std::future<void> end = dealtWith.get_future();
    std::thread([window, event, letters, promise = std::move(dealtWith)]() mutable {
        DEV_BROADCAST_VOLUME volume{};
        volume.dbcv_size = sizeof volume;
        volume.dbcv_devicetype = DBT_DEVTYP_VOLUME;
        for (const char letter : letters)
            volume.dbcv_unitmask |= DWORD{1} << (letter - 'A');
        SendMessageW(window, WM_DEVICECHANGE, event, reinterpret_cast<LPARAM>(&volume));
        promise.set_value();
    }).detach();
    end.wait_for(longEnough);
}

std::string driveLetters() {
    std::string letters;
    const DWORD used = GetLogicalDrives();
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        if ((used >> (letter - 'A') & 1) != 0) letters += letter;
    return letters;
}

} // namespace probe
