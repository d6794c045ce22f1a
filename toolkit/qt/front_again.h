#pragma once

#include <QPointer>
#include <QWidget>

namespace toolkit::qt {

/// After another window of the program has closed: puts the window in front, unless it goes as well, another
/// one is opened or the user turns to another one. Not every desktop sees to that by itself.
void comeBack(QWidget& window);

/// Whoever opens a window calls this: none that was to come back does so any more.
void nothingComesBack();

/// As long as it lives other windows come and go; then the one that was in front at first is it again.
class FrontAgain {
public:
    FrontAgain();
    FrontAgain(const FrontAgain&) = delete;
    FrontAgain& operator=(const FrontAgain&) = delete;
    ~FrontAgain();

private:
    QPointer<QWidget> front_;
};

} // namespace toolkit::qt
