#include "platform/cTray.h"

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
    const auto bits = static_cast<std::uint32_t>(value);
    for (std::size_t i = 0; i < 4; ++i)
        record_.at(offset + i) = static_cast<std::uint8_t>((bits >> (8 * i)) & 0xFF);
}

std::int32_t cTray::field(std::size_t offset) const {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i)
        bits |= std::uint32_t{record_.at(offset + i)} << (8 * i);
    return static_cast<std::int32_t>(bits);
}

/// The text and its NUL come first, blanks fill the rest; a text that fills the field leaves no room for the
/// NUL.
void cTray::setTip(std::string_view caption) {
    std::string tip = base::toAnsi(caption) + '\0';
    tip.resize(notify_record::tipLength, ' ');
    std::transform(tip.begin(), tip.end(), record_.begin() + notify_record::szTip,
                   [](char c) { return static_cast<std::uint8_t>(c); });
}
