// The icons of the desktop's notification area.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace platform {

/// What to do with the icon. Windows: the first argument of `Shell_NotifyIconA`.
enum class NotifyIcon : std::uint32_t { Add = 0, Modify = 1, Delete = 2 };

/// Layout of the record, in bytes: eight fields' offsets and the size of the whole (`NOTIFYICONDATA` of a
/// 32-bit system; numbers have their lowest byte first).
namespace notify_record {
constexpr std::size_t cbSize = 0;
constexpr std::size_t hWnd = 4;
constexpr std::size_t uID = 8;
constexpr std::size_t uFlags = 12;
constexpr std::size_t uCallbackMessage = 16;
constexpr std::size_t hIcon = 20;
constexpr std::size_t szTip = 24;
constexpr std::size_t tipLength = 64;
constexpr std::size_t size = 88;
} // namespace notify_record

using NotifyIconRecord = std::array<std::uint8_t, notify_record::size>;

/// Adds, changes or removes the icon that the record's window and number name; its tip is ANSI text. False
/// when there is nothing to change or to remove, when the icon is there already, or when the desktop has no
/// notification area. Windows: `Shell_NotifyIconA`,
/// https://learn.microsoft.com/windows/win32/api/shellapi/nf-shellapi-shell_notifyicona
bool shellNotifyIcon(NotifyIcon message, const NotifyIconRecord& record);

} // namespace platform
