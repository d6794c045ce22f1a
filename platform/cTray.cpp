#include "platform/cTray.h"

#include "base/little_endian.h"
#include "base/text.h"

#include <algorithm>
#include <string>

using namespace platform;

namespace {

constexpr std::int32_t iconNumber = 1;
constexpr std::int32_t messageIconAndTip = 1 + 2 + 4;
constexpr std::int32_t mouseMoveMessage = 0x200;

} // namespace

cTray::~cTray() {
    TrayIcon_Delete();
}

void cTray::TrayIcon_Set(std::int32_t lhWnd, std::string_view sCaption) {
    record_ = {};
    windowHandle_ = lhWnd;
    setField(notify_record::cbSize, static_cast<std::int32_t>(notify_record::size));
    setField(notify_record::hWnd, lhWnd);
    setField(notify_record::uID, iconNumber);
    setField(notify_record::uFlags, messageIconAndTip);
    setField(notify_record::uCallbackMessage, mouseMoveMessage);
    setField(notify_record::hIcon, icon_ == nullptr ? 0 : icon_->handle());
    setTip(sCaption);
    shellNotifyIcon(NotifyIcon::Add, record_);
}

void cTray::TrayIcon_Delete() {
    shellNotifyIcon(NotifyIcon::Delete, record_);
}

void cTray::TrayIcon_Modify(std::string_view sCaption, std::optional<std::int32_t>& lIcon) {
    setField(notify_record::hWnd, windowHandle_);
    setField(notify_record::cbSize, static_cast<std::int32_t>(notify_record::size));
    if (!lIcon) lIcon = field(notify_record::hIcon);
    setField(notify_record::hIcon, *lIcon);
    setTip(sCaption);
    shellNotifyIcon(NotifyIcon::Modify, record_);
}

void cTray::setField(std::size_t offset, std::int32_t value) {
    base::putLittleEndian(record_, offset, sizeof value, static_cast<std::uint32_t>(value));
}

std::int32_t cTray::field(std::size_t offset) const {
    return static_cast<std::int32_t>(base::littleEndian(record_, offset, sizeof(std::int32_t)));
}

/// The text and its NUL come first, blanks fill the rest; a text that fills the field leaves no room for the
/// NUL.
void cTray::setTip(std::string_view caption) {
    std::string tip = base::toAnsi(caption) + '\0';
    tip.resize(notify_record::tipLength, ' ');
    std::transform(tip.begin(), tip.end(), record_.begin() + notify_record::szTip,
                   [](char c) { return static_cast<std::uint8_t>(c); });
}
