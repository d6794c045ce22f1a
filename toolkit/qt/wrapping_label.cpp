#include "toolkit/qt/wrapping_label.h"

#include "toolkit/qt/texts.h"

#include <QHelpEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>
#include <QtMath>

#include <algorithm>
#include <limits>

namespace toolkit::qt {

namespace {

constexpr int shortestLine = 12; ///< characters
constexpr int usualLine = 20;
constexpr std::size_t mostKnown = 4; ///< widths; a layout hardly asks for more

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

/// Adds the lines of a paragraph; false when there are as many as may be.
bool WrappingLabel::layOutParagraph(const QString& paragraph, Lines& lines) const {
    const QFontMetrics metrics(font());
    QTextLayout layout(paragraph, font(), this);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(lines.width);
        if (lines.shown.size() + 1 == maximumLines()) {
            // Hardly a character is narrower than a point.
            const QString rest = paragraph.mid(line.textStart());
            lines.shown += metrics.elidedText(rest.left(lines.width), Qt::ElideRight, lines.width);
            lines.cut = lines.shown.last() != rest;
            return false;
        }
        lines.shown += paragraph.mid(line.textStart(), line.textLength());
    }
    layout.endLayout();
    return true;
}

WrappingLabel::Lines WrappingLabel::layOut(int width) const {
    Lines lines{width, {}, false};
    const QStringList paragraphs = text().split(QLatin1Char('\n'));
    for (const QString& paragraph : paragraphs)
        if (!layOutParagraph(paragraph, lines)) {
            lines.cut = lines.cut || &paragraph != &paragraphs.last();
            break;
        }
    return lines;
}

/// A long text takes milliseconds to break into lines. Layouts ask for several widths, again and again, and
/// each of them again with every repaint.
const WrappingLabel::Lines& WrappingLabel::linesFor(int width) const {
    if (knownText_ != text() || knownFont_ != font()) {
        known_.clear();
        knownText_ = text();
        knownFont_ = font();
    }
    const auto found = std::find_if(known_.begin(), known_.end(),
                                    [width](const Lines& lines) { return lines.width == width; });
    if (found != known_.end()) {
        std::rotate(found, found + 1, known_.end());
    } else {
        if (known_.size() == mostKnown) known_.erase(known_.begin());
        known_.push_back(layOut(width));
    }
    return known_.back();
}

/// Layouts ask for no width at all, too.
int WrappingLabel::heightForWidth(int given) const {
    const auto lines = static_cast<int>(linesFor(qMax(given, minimumSizeHint().width())).shown.size());
    const QFontMetricsF metrics(font());
    const int lastLine = qCeil(metrics.ascent()) + qCeil(metrics.descent());
    return qMax(0, lines - 1) * QFontMetrics(font()).lineSpacing() + lastLine;
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
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty() || !linesFor(width()).cut)
        return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainToolTip(toUtf8(text())), this);
    return true;
}

void WrappingLabel::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, foregroundRole()));
    // Rounded up, or the dots of a capital umlaut are cut.
    const int ascent = qCeil(QFontMetricsF(font()).ascent());
    const int spacing = QFontMetrics(font()).lineSpacing();
    const QStringList& shown = linesFor(width()).shown;
    const int first = qMax(0, event->rect().top() / spacing - 1);
    for (int i = first; i < shown.size() && i * spacing <= event->rect().bottom(); ++i)
        painter.drawText(0, i * spacing + ascent, shown[i]);
}

} // namespace toolkit::qt
