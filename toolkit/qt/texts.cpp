#include "toolkit/qt/texts.h"

#include "toolkit/shown_text.h"

#include <QTextDocument>

namespace toolkit::qt {

QString lines(std::string_view text) {
    return fromUtf8(text).replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

QString plainToolTip(std::string_view text) {
    const QString plain = lines(shownTip(text));
    return Qt::mightBeRichText(plain) ? Qt::convertFromPlainText(plain) : plain;
}

QString withMnemonic(const QString& caption, const QString& accessKey) {
    const qsizetype letter = accessKey.isEmpty() ? -1 : caption.indexOf(accessKey, 0, Qt::CaseInsensitive);
    QString marked;
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (i == letter || caption[i] == QLatin1Char('&')) marked += QLatin1Char('&');
        marked += caption[i];
    }
    return marked;
}

int utf16Position(const QString& text, std::size_t character) {
    qsizetype position = 0;
    for (std::size_t i = 0; i < character && position < text.size(); ++i)
        position += text[position].isHighSurrogate() && position + 1 < text.size() ? 2 : 1;
    return static_cast<int>(position);
}

} // namespace toolkit::qt
