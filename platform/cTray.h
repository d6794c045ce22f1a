#pragma once

#include "base/picture.h"
#include "platform/notify_icon.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// The program's icon in the notification area.
///
/// TrayIcon_Set has no caller in the program, so the record is never added and the shell refuses every change
/// of it: this is intended.
class cTray {
public:
    cTray() = default;
    cTray(const cTray&) = delete;
    cTray& operator=(const cTray&) = delete;
    ~cTray();

    /// The icon's picture, by reference. TrayIcon_Set takes its handle; a change shows with TrayIcon_Modify
    /// only.
    const base::Picture& TrayIcon_Icon() const noexcept { return icon_; }
    void TrayIcon_Icon(const base::Picture& icon) { icon_ = icon; }

    /// Adds the icon. `lhWnd` is the window that gets its mouse messages; of the tip 64 bytes count.
    void TrayIcon_Set(std::int32_t lhWnd, std::string_view sCaption);
    void TrayIcon_Delete();
    /// Changes tip and icon. With no value in `lIcon` the record keeps its icon, whose handle is handed back
    /// in it.
    void TrayIcon_Modify(std::string_view sCaption, std::optional<std::int32_t>& lIcon);
    void TrayIcon_Modify(std::string_view sCaption, std::optional<std::int32_t>&& lIcon = {}) {
        TrayIcon_Modify(sCaption, lIcon);
    }

    const platform::NotifyIconRecord& record() const noexcept { return record_; }

private:
    void setField(std::size_t offset, std::int32_t value);
    std::int32_t field(std::size_t offset) const;
    void setTip(std::string_view caption);

    platform::NotifyIconRecord record_{};
    base::Picture icon_;
    std::int32_t windowHandle_ = 0;
};
