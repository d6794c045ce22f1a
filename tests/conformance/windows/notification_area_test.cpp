// Icons in a notification area of the test's own: under Wine it is the window of the class "Shell_TrayWnd",
// which gets each change as a message with a record of Wine's own. What an icon's tip says can be read there.
#include "base/text.h"
#include "platform/notify_icon.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <optional>

using namespace platform;

namespace {

/// The beginning of Wine's record, which is the same for all programs of its kind.
struct WineRecord {
    LONG window;
    UINT number;
    UINT flags;
    UINT message;
    WCHAR tip[128];
};

struct Received {
    ULONG_PTR what = 0;
    WineRecord record{};
};

std::optional<Received> lastReceived;

LRESULT CALLBACK areaProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_COPYDATA) return DefWindowProcA(window, message, wParam, lParam);
    const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
    Received received;
    received.what = data->dwData;
    if (data->cbData >= sizeof received.record)
        std::memcpy(&received.record, data->lpData, sizeof received.record);
    lastReceived = received;
    return TRUE;
}

class NotificationArea : public testing::Test {
protected:
    void SetUp() override {
        lastReceived.reset();
        WNDCLASSA description{};
        description.lpfnWndProc = areaProcedure;
        description.hInstance = GetModuleHandleA(nullptr);
        description.lpszClassName = "Shell_TrayWnd";
        RegisterClassA(&description);
        window_ = CreateWindowA("Shell_TrayWnd", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                description.hInstance, nullptr);
        ASSERT_NE(window_, nullptr);
    }
    void TearDown() override { DestroyWindow(window_); }

    NotifyIconRecord record(const std::string& tip) const {
        NotifyIconRecord record{};
        const auto handle = reinterpret_cast<std::uintptr_t>(window_);
        for (std::size_t i = 0; i < 4; ++i)
            record.at(notify_record::hWnd + i) = static_cast<std::uint8_t>((handle >> (8 * i)) & 0xFFU);
        record[notify_record::cbSize] = notify_record::size;
        record[notify_record::uID] = 1;
        record[notify_record::uFlags] = NIF_MESSAGE | NIF_TIP;
        record[notify_record::uCallbackMessage + 1] = 2; // WM_MOUSEMOVE
        const std::string ansi = base::toAnsi(tip);
        std::copy(ansi.begin(), ansi.end(), record.begin() + notify_record::szTip);
        return record;
    }

    LONG handle() const { return static_cast<LONG>(reinterpret_cast<std::intptr_t>(window_)); }

private:
    HWND window_ = nullptr;
};

} // namespace

TEST_F(NotificationArea, AnIconIsAddedChangedAndRemoved) {
    const NotifyIconRecord icon = record("Orvanta");
    ASSERT_TRUE(shellNotifyIcon(NotifyIcon::Add, icon));
    ASSERT_TRUE(lastReceived);
    EXPECT_EQ(lastReceived->what, static_cast<ULONG_PTR>(NIM_ADD));
    EXPECT_EQ(lastReceived->record.window, handle());
    EXPECT_EQ(lastReceived->record.number, 1U);
    EXPECT_EQ(lastReceived->record.message, static_cast<UINT>(WM_MOUSEMOVE));
    EXPECT_TRUE(shellNotifyIcon(NotifyIcon::Modify, icon));
    EXPECT_EQ(lastReceived->what, static_cast<ULONG_PTR>(NIM_MODIFY));
    EXPECT_TRUE(shellNotifyIcon(NotifyIcon::Delete, icon));
    EXPECT_EQ(lastReceived->what, static_cast<ULONG_PTR>(NIM_DELETE));
}

TEST_F(NotificationArea, ATipKeepsItsLetters) {
    ASSERT_TRUE(shellNotifyIcon(NotifyIcon::Add, record("Größe ä ß €")));
    ASSERT_TRUE(lastReceived);
    EXPECT_STREQ(static_cast<const WCHAR*>(lastReceived->record.tip), L"Größe ä ß €");
}

TEST_F(NotificationArea, OfATipThatFillsItsFieldTheLastCharacterGoes) {
    ASSERT_TRUE(shellNotifyIcon(NotifyIcon::Add, record(std::string(notify_record::tipLength, 'x'))));
    ASSERT_TRUE(lastReceived);
    EXPECT_EQ(std::wstring(static_cast<const WCHAR*>(lastReceived->record.tip)),
              std::wstring(notify_record::tipLength - 1, L'x'));
}
