// What the desktop is told of a job. Whether it shows that, only a desktop could tell.
#include "platform/notification.h"
#include "platform/taskbar.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

using namespace platform;

namespace {

class Desktop : public testing::Test {
protected:
    Desktop() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        window_ = CreateWindowExW(0, L"STATIC", L"test", WS_OVERLAPPEDWINDOW, 0, 0, 10, 10, nullptr, nullptr,
                                  nullptr, nullptr);
        part_ =
            CreateWindowExW(0, L"STATIC", L"part", WS_CHILD, 0, 0, 5, 5, window_, nullptr, nullptr, nullptr);
    }
    ~Desktop() override {
        DestroyWindow(window_);
        CoUninitialize();
    }

    std::intptr_t window() const { return reinterpret_cast<std::intptr_t>(window_); }
    std::intptr_t part() const { return reinterpret_cast<std::intptr_t>(part_); }

private:
    HWND window_;
    HWND part_;
};

} // namespace

TEST_F(Desktop, TheTaskbarTakesEveryState) {
    for (const TaskbarProgress progress :
         {TaskbarProgress::KnownShare, TaskbarProgress::UnknownShare, TaskbarProgress::None}) {
        EXPECT_TRUE(showInTaskbar(window(), progress, 0.5));
        EXPECT_TRUE(showInTaskbar(part(), progress, 1)) << "of the window that it is in";
    }
    EXPECT_FALSE(showInTaskbar(0, TaskbarProgress::KnownShare, 0.5)) << "no window";
}

TEST_F(Desktop, ANotificationIsTakenAgainAndAgain) {
    EXPECT_TRUE(showNotification(window(), "Update abgeschlossen", "Geprüft"));
    EXPECT_TRUE(showNotification(window(), std::string(300, 'x'), std::string(1000, 'x'))) << "it is cut";
    EXPECT_TRUE(showNotification(window(), "", ""));
}
