#pragma once

#include <QProxyStyle>

namespace toolkit::qt {

/// The desktop's style, but for what not everybody could see in it: disabled texts, which say what to do
/// (contrast 4.5), and the outlines of what can be clicked or filled in (3). The focus is framed by
/// FocusFrame.
class ProgramStyle : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void polish(QPalette& palette) override;
    using QProxyStyle::polish;
};

} // namespace toolkit::qt
