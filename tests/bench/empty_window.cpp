// What the start of the program is compared with: a window of as many widgets, which is as large, and nothing
// behind them: empty_window COUNT [WIDTH HEIGHT]

#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include <cstdlib>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    if (argc != 2 && argc != 4) return EXIT_FAILURE;
    QWidget window;
    window.setObjectName(QStringLiteral("frmMain"));
    QGridLayout layout(&window);
    constexpr int columns = 6;
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        QWidget* widget = nullptr;
        if (i % 3 == 0)
            widget = new QLabel(QStringLiteral("Text"));
        else if (i % 3 == 1)
            widget = new QRadioButton(QStringLiteral("Wahl"));
        else
            widget = new QPushButton(QStringLiteral("Knopf"));
        layout.addWidget(widget, i / columns, i % columns);
    }
    if (argc == 4) window.resize(std::atoi(argv[2]), std::atoi(argv[3]));
    window.show();
    return QApplication::exec();
}
