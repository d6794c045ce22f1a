#include "toolkit/qt/program_style.h"

#include "toolkit/contrast.h"
#include "toolkit/qt/colors.h"

#include <QAbstractButton>
#include <QGroupBox>
#include <QPainter>
#include <QStyleOptionButton>

namespace toolkit::qt {

namespace {

constexpr int lightestButton = 150; ///< percent of the palette's; styles shade their buttons

constexpr qreal rounding = 2;

Color colorOf(const QPalette& palette, QPalette::ColorRole role) {
    return toColor(palette.color(role));
}

QColor outlineColor(const QPalette& palette) {
    const Color window = colorOf(palette, QPalette::Window);
    return toQt(readable(window, colorOf(palette, QPalette::WindowText),
                         {window, colorOf(palette, QPalette::Base), colorOf(palette, QPalette::Button)},
                         markContrast));
}

void drawOutline(QStyle::PrimitiveElement element, const QStyleOption& option, QPainter& painter) {
    const QRectF place = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outlineColor(option.palette), 1));
    painter.setBrush(Qt::NoBrush);
    if (element == QStyle::PE_IndicatorRadioButton)
        painter.drawEllipse(place);
    else
        painter.drawRoundedRect(place, rounding, rounding);
    painter.restore();
}

/// Qt gives what it blends over many lines to threads, in pieces of 64 lines. For a colour that is more to
/// wait for than to do, and the first of them have to be started.
void blend(QPainter& painter, const QRect& place, const QColor& color) {
    constexpr int lines = 64;
    for (int top = place.top(); top <= place.bottom(); top += lines)
        painter.fillRect(place.left(), top, place.width(), qMin(lines, place.bottom() + 1 - top), color);
}

/// Each but for its corners.
void blendEdges(QPainter& painter, const QRect& place, const QColor& color) {
    const QRect across = place.adjusted(1, 0, -1, 0);
    const QRect down = place.adjusted(0, 1, 0, -1);
    blend(painter, QRect(across.topLeft(), QSize(across.width(), 1)), color);
    blend(painter, QRect(across.bottomLeft(), QSize(across.width(), 1)), color);
    blend(painter, QRect(down.topLeft(), QSize(1, down.height())), color);
    blend(painter, QRect(down.topRight(), QSize(1, down.height())), color);
}

bool isFusionGroup(const QStyle& style, QStyle::PrimitiveElement element) {
    return element == QStyle::PE_FrameGroupBox && style.name() == QLatin1String("fusion");
}

/// Where Fusion's picture of a frame is drawn, below the title; its first line and column are empty.
QRect groupFrame(const QStyleOption& option, const QGroupBox& group) {
    constexpr int aboveFrame = 3;
    const int indicator = group.style()->pixelMetric(QStyle::PM_IndicatorHeight, &option, &group);
    const bool titled = group.isCheckable() || !group.title().isEmpty();
    const int title = titled ? qMax(indicator, option.fontMetrics.height()) : 0;
    return option.rect.adjusted(1, title + aboveFrame + 1, 0, 0);
}

/// What Fusion's picture of a frame shows: a tint, an outline, and the outline's shadow inside of it. Fusion
/// reads it from a file and stretches it, pixel by pixel.
void drawGroupFrame(QPainter& painter, const QRect& frame) {
    const QRect inside = frame.adjusted(1, 1, -1, -1);
    blend(painter, inside, QColor(0, 0, 0, 3));
    blendEdges(painter, inside, QColor(0, 0, 0, 4));
    blendEdges(painter, frame, QColor(117, 117, 117, 50));
    for (const QPoint corner :
         {inside.topLeft(), inside.topRight(), inside.bottomLeft(), inside.bottomRight()})
        painter.fillRect(QRect(corner, QSize(1, 1)), QColor(93, 93, 93, 28));
}

bool hasOutline(QStyle::PrimitiveElement element) {
    return element == QStyle::PE_PanelButtonCommand || element == QStyle::PE_FrameLineEdit ||
           element == QStyle::PE_IndicatorCheckBox || element == QStyle::PE_IndicatorRadioButton;
}

} // namespace

void ProgramStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    if (element == PE_FrameFocusRect && qobject_cast<const QAbstractButton*>(widget) != nullptr) return;
    const auto* const group = qobject_cast<const QGroupBox*>(widget);
    if (group != nullptr && isFusionGroup(*baseStyle(), element))
        return drawGroupFrame(*painter, groupFrame(*option, *group));
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (hasOutline(element) && (option->state & State_Enabled) != 0) drawOutline(element, *option, *painter);
}

void ProgramStyle::polish(QPalette& palette) {
    QProxyStyle::polish(palette);
    const Color window = toColor(palette.color(QPalette::Active, QPalette::Window));
    const QColor button = palette.color(QPalette::Active, QPalette::Button);
    const Color shining = toColor(button.lighter(lightestButton));
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text}) {
        const Color faint = toColor(palette.color(QPalette::Disabled, role));
        const Color strong = toColor(palette.color(QPalette::Active, role));
        const Color seen = readable(faint, strong, {window, toColor(button), shining}, textContrast);
        palette.setColor(QPalette::Disabled, role, toQt(seen));
    }
}

} // namespace toolkit::qt
