#include "toolkit/qt/columns_label.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <vector>

namespace toolkit::qt {

namespace {

struct Word {
    int line = 0;
    qsizetype column = 0;
    QString text;
};

std::vector<Word> wordsOf(const QString& text) {
    std::vector<Word> words;
    int number = 0;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const auto isBlank = [](QChar letter) { return letter.isSpace(); };
        for (auto end = line.begin(); end != line.end();) {
            const auto begin = std::find_if_not(end, line.end(), isBlank);
            end = std::find_if(begin, line.end(), isBlank);
            if (begin != end)
                words.push_back({number, begin - line.begin(), line.mid(begin - line.begin(), end - begin)});
        }
        ++number;
    }
    return words;
}

} // namespace

/// As wide as a digit, and no word reaches the place of the blank behind it.
qreal ColumnsLabel::cellWidth() const {
    const QFontMetricsF metrics(font());
    qreal width = metrics.horizontalAdvance(QLatin1Char('0'));
    for (const Word& word : wordsOf(text()))
        width = qMax(width, metrics.horizontalAdvance(word.text) / static_cast<qreal>(word.text.size()));
    return width;
}

QSize ColumnsLabel::sizeHint() const {
    qsizetype columns = 0;
    const QStringList lines = text().split(QLatin1Char('\n'));
    for (const QString& line : lines)
        columns = qMax(columns, line.size());
    const auto height = static_cast<int>(lines.size()) * QFontMetrics(font()).lineSpacing();
    return {qMax(minimumWidth(), qCeil(static_cast<qreal>(columns) * cellWidth())),
            qMax(minimumHeight(), height)};
}

void ColumnsLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
    const QFontMetrics metrics(font());
    const qreal cell = cellWidth();
    for (const Word& word : wordsOf(text()))
        painter.drawText(QPointF(static_cast<qreal>(word.column) * cell,
                                 word.line * metrics.lineSpacing() + metrics.ascent()),
                         word.text);
}

} // namespace toolkit::qt
