#include "platform/notify_icon.h"
#include "base/little_endian.h"

#include "base/text.h"

#include <QIcon>
#include <QString>
#include <QSystemTrayIcon>

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace platform {

namespace {

/// Window and number of an icon.
using IconKey = std::pair<std::uint32_t, std::uint32_t>;

/// Emptied by the deletion of every icon; what is left goes with the process and its connection to the
/// desktop.
std::map<IconKey, std::unique_ptr<QSystemTrayIcon>>& icons() {
    static auto* const theIcons = new std::map<IconKey, std::unique_ptr<QSystemTrayIcon>>;
    return *theIcons;
}

std::uint32_t field(const NotifyIconRecord& record, std::size_t offset) {
    return static_cast<std::uint32_t>(base::littleEndian(record, offset, sizeof(std::uint32_t)));
}

QString tipOf(const NotifyIconRecord& record) {
    const std::string tip(record.begin() + notify_record::szTip, record.end());
    return QString::fromStdString(base::fromAnsi(tip.substr(0, tip.find('\0'))));
}

/// An icon's handle is the number of the program's resource.
QIcon iconOf(const NotifyIconRecord& record) {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icon/%1/%2.png").arg(field(record, notify_record::hIcon)).arg(size));
    return icon;
}

void showRecord(QSystemTrayIcon& icon, const NotifyIconRecord& record) {
    icon.setIcon(iconOf(record));
    icon.setToolTip(tipOf(record));
}

} // namespace

bool shellNotifyIcon(NotifyIcon message, const NotifyIconRecord& record) {
    const IconKey key{field(record, notify_record::hWnd), field(record, notify_record::uID)};
    const auto found = icons().find(key);
    const bool known = found != icons().end();
    if (message == NotifyIcon::Add) {
        if (known || !QSystemTrayIcon::isSystemTrayAvailable()) return false;
        auto icon = std::make_unique<QSystemTrayIcon>();
        showRecord(*icon, record);
        icon->show();
        icons().emplace(key, std::move(icon));
        return true;
    }
    if (!known) return false;
    if (message == NotifyIcon::Modify) showRecord(*found->second, record);
    if (message == NotifyIcon::Delete) icons().erase(found);
    return true;
}

} // namespace platform
