#include "platform/notify_icon.h"
#include "base/little_endian.h"

#include "base/text.h"
#include "platform/windows/ansi_text.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <string>

namespace platform {

namespace {

std::uint32_t field(const NotifyIconRecord& record, std::size_t offset) {
    return static_cast<std::uint32_t>(base::littleEndian(record, offset, sizeof(std::uint32_t)));
}

/// A handle has 32 significant bits, which are sign-extended:
/// https://learn.microsoft.com/windows/win32/winprog64/interprocess-communication
template <class Handle>
Handle handle(const NotifyIconRecord& record, std::size_t offset) {
    return reinterpret_cast<Handle>(
        static_cast<std::intptr_t>(static_cast<std::int32_t>(field(record, offset))));
}

/// The record's tip may fill its field without a NUL; the native one may not.
void storeTip(const NotifyIconRecord& record, NOTIFYICONDATAA& data) {
    const std::string tip(record.begin() + notify_record::szTip, record.end());
    const std::string ansi = windows::nearestAnsi(base::fromAnsi(tip.substr(0, tip.find('\0'))));
    std::copy_n(ansi.begin(), std::min(ansi.size(), notify_record::tipLength - 1), std::begin(data.szTip));
}

} // namespace

bool shellNotifyIcon(NotifyIcon message, const NotifyIconRecord& record) {
    NOTIFYICONDATAA data{};
    data.cbSize = NOTIFYICONDATAA_V1_SIZE;
    data.hWnd = handle<HWND>(record, notify_record::hWnd);
    data.uID = field(record, notify_record::uID);
    data.uFlags = field(record, notify_record::uFlags);
    data.uCallbackMessage = field(record, notify_record::uCallbackMessage);
    data.hIcon = handle<HICON>(record, notify_record::hIcon);
    storeTip(record, data);
    return Shell_NotifyIconA(static_cast<DWORD>(message), &data) != FALSE;
}

} // namespace platform
