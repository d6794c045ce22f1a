// Texts on their way between the core (UTF-8, lines end in CR LF) and Qt.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace toolkit::qt {

inline QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string toUtf8(const QString& text) {
    return text.toStdString();
}

/// A text to show: Qt knows line feeds only.
QString lines(std::string_view text);

/// A tool tip that Qt shows as it stands, whatever looks like markup in it.
QString plainToolTip(std::string_view text);

/// A caption with the mnemonic letter marked for Qt. Every "&" of the caption itself is shown as such.
QString withMnemonic(const QString& caption, const QString& accessKey);

/// Position in UTF-16 units of the character (code point) of that number; the end of the text when it has
/// fewer.
int utf16Position(const QString& text, std::size_t character);

} // namespace toolkit::qt
