#include "toolkit/qt/presentation.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QStyle>

namespace toolkit::qt {

namespace {

constexpr qreal headingRatio = 1.08;
constexpr qreal titleRatio = 1.3;

void scale(QFont& font, qreal ratio) {
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * ratio);
    else
        font.setPixelSize(qRound(font.pixelSize() * ratio));
}

QFont styled(QFont font, const QString& style) {
    if (style == QLatin1String("fixed")) {
        font.setFamilies(QFontDatabase::systemFont(QFontDatabase::FixedFont).families());
        return font;
    }
    if (style == QLatin1String("title")) scale(font, titleRatio);
    if (style == QLatin1String("heading")) scale(font, headingRatio);
    font.setBold(true);
    return font;
}

void setRoom(QWidget& part) {
    const int characters = part.property("minimumCharacters").toInt();
    const int lines = part.property("minimumLines").toInt();
    const QFontMetrics metrics(part.font());
    if (characters > 0) part.setMinimumWidth(metrics.horizontalAdvance(QLatin1Char('0')) * characters);
    if (lines > 0) part.setMinimumHeight(metrics.lineSpacing() * lines);
}

/// Layouts inside of the grid take their spacing from it, where it is the same both ways.
void setColumnGap(const QWidget& part, int gap) {
    auto* grid = qobject_cast<QGridLayout*>(part.layout());
    if (grid == nullptr) return;
    const int usual = part.style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing, nullptr, &part);
    grid->setHorizontalSpacing(gap);
    for (QLayout* inner : grid->findChildren<QLayout*>(QString(), Qt::FindDirectChildrenOnly))
        inner->setSpacing(usual);
}

void setGaps(QWidget& part) {
    const int character = QFontMetrics(part.font()).horizontalAdvance(QLatin1Char('0'));
    if (const int gap = part.property("columnGap").toInt(); gap > 0) setColumnGap(part, gap * character);
    if (const int margin = part.property("margin").toInt(); margin > 0) {
        const int side = margin * character;
        const int edge = part.property("flat").toBool() ? character / 2 : side;
        part.layout()->setContentsMargins(side, edge, side, edge);
    }
}

} // namespace

void setProgramFont(QWidget& window) {
    const QString family = QStringLiteral("Tahoma");
    if (QFontDatabase::styles(family).isEmpty()) return; // without a list of all families
    QFont font = window.font();
    font.setFamilies({family});
    window.setFont(font);
}

void applyPresentation(QWidget& window) {
    for (QWidget* part : window.findChildren<QWidget*>()) {
        if (part->dynamicPropertyNames().isEmpty()) continue;
        const QString style = part->property("textStyle").toString();
        if (!style.isEmpty()) part->setFont(styled(window.font(), style));
        setRoom(*part);
        setGaps(*part);
        if (part->property("accent").toBool()) part->setForegroundRole(QPalette::Highlight);
    }
}

} // namespace toolkit::qt
