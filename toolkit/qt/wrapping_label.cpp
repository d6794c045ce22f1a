#include "toolkit/qt/wrapping_label.h"

#include "toolkit/qt/texts.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>
#include <QtMath>

#include <limits>

namespace toolkit::qt {

namespace {

constexpr int shortestLine = 12; ///< characters
constexpr int usualLine = 20;

} // namespace

WrappingLabel::WrappingLabel(QWidget* parent) : QLabel(parent) {
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int WrappingLabel::maximumLines() const {
    const int lines = property("maximumLines").toInt();
    return lines > 0 ? lines : std::numeric_limits<int>::max();
}

int WrappingLabel::layOut(int width, QPainter* painter, bool* cut) const {
    const QFontMetrics metrics(font());
    // Rounded up, or the dots of a capital umlaut are cut.
    const int ascent = qCeil(QFontMetricsF(font()).ascent());
    int count = 0;
    for (const QString& paragraph : text().split(QLatin1Char('\n'))) {
        QTextLayout layout(paragraph, font(), this);
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            const bool last = ++count == maximumLines();
            const QString rest = paragraph.mid(line.textStart());
            const QString shown = last ? metrics.elidedText(rest.left(width), Qt::ElideRight, width)
                                       : rest.left(line.textLength());
            if (painter != nullptr) painter->drawText(0, (count - 1) * metrics.lineSpacing() + ascent, shown);
            if (cut != nullptr && last) *cut = shown != rest;
            if (last) return count;
        }
        layout.endLayout();
    }
    return count;
}

/// Layouts ask again and again, and a long text takes milliseconds. They ask for no width at all, too.
int WrappingLabel::heightForWidth(int given) const {
    const int width = qMax(given, minimumSizeHint().width());
    if (known_.width != width || known_.text != text() || known_.font != font())
        known_ = {width, layOut(width, nullptr), text(), font()};
    const QFontMetricsF metrics(font());
    const int lastLine = qCeil(metrics.ascent()) + qCeil(metrics.descent());
    return qMax(0, known_.lines - 1) * QFontMetrics(font()).lineSpacing() + lastLine;
}

QSize WrappingLabel::sizeHint() const {
    const int width = qMax(minimumWidth(), QFontMetrics(font()).averageCharWidth() * usualLine);
    return {width, heightForWidth(qMax(width, this->width()))};
}

QSize WrappingLabel::minimumSizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.averageCharWidth() * shortestLine, metrics.lineSpacing()};
}

bool WrappingLabel::event(QEvent* event) {
    bool cut = false;
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) layOut(width(), nullptr, &cut);
    if (!cut) return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainToolTip(toUtf8(text())), this);
    return true;
}

void WrappingLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
    layOut(width(), &painter);
}

} // namespace toolkit::qt
