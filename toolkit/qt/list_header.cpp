#include "toolkit/qt/list_header.h"

#include <QAbstractItemModel>
#include <QStyle>

namespace toolkit::qt {

ListHeader::ListHeader(QWidget* list) : QHeaderView(Qt::Horizontal, list) {
    setStretchLastSection(false);
    setSectionsMovable(false);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
}

QString ListHeader::shown(int column) const {
    QString text = model()->headerData(column, orientation()).toString();
    const int margins = 2 * style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, this);
    if (fontMetrics().horizontalAdvance(text) + margins <= sectionSize(column)) return text;
    for (QString divided : parentWidget()->property("hyphenated").toStringList()) {
        const qsizetype hyphen = divided.indexOf(QLatin1Char('-'));
        if (hyphen < 0 || QString(divided).remove(hyphen, 1) != text) continue;
        return divided.insert(hyphen + 1, QLatin1Char('\n'));
    }
    return text;
}

void ListHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int column) const {
    QHeaderView::initStyleOptionForIndex(option, column);
    option->text = shown(column);
}

QSize ListHeader::sectionSizeFromContents(int column) const {
    const auto more = static_cast<int>(shown(column).count(QLatin1Char('\n')));
    return QHeaderView::sectionSizeFromContents(column) + QSize(0, more * fontMetrics().lineSpacing());
}

} // namespace toolkit::qt
