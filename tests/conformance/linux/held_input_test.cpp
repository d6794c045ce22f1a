// Keys that are pressed while a wait paints, on a real line of text.
#include "toolkit/qt/held_input.h"

#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/held_events.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QWindow>

#include <array>
#include <chrono>
#include <memory>
#include <string>

// What QtTest itself makes events with, exported by QtGui for that purpose.
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString& text, bool repeated,
                                    ushort count);

namespace {

class HeldInput : public testing::Test {
protected:
    static void SetUpTestSuite() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static std::array<char, 5> name{"test"};
        static std::array<char*, 2> arguments = {name.data(), nullptr};
        static int argumentCount = 1;
        application = std::make_unique<QApplication>(argumentCount, arguments.data());
    }
    static void TearDownTestSuite() { application.reset(); }

    void SetUp() override {
        line.show();
        line.activateWindow();
        line.setFocus();
        QCoreApplication::processEvents();
    }

    static void pressOn(QWindow* window, int key, const QString& text) {
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
            qt_handleKeyEvent(window, type, key, {}, text, false, 1);
    }

    void press(const char* characters) {
        for (const QChar character : QString::fromLatin1(characters))
            pressOn(line.windowHandle(), character.toUpper().unicode(), QString(character));
    }

    void pressInAWait(const char* characters) {
        const toolkit::HeldEvents held;
        const toolkit::qt::HeldInput input;
        press(characters);
    }

    static inline std::unique_ptr<QApplication> application;
    QLineEdit line;
};

} // namespace

TEST_F(HeldInput, ComesAfterTheWait) {
    pressInAWait("ab");
    EXPECT_EQ(line.text().toStdString(), "");
    toolkit::handleHeldEvents();
    EXPECT_EQ(line.text().toStdString(), "ab");
}

TEST_F(HeldInput, IsNotOvertakenByTheNextKey) {
    pressInAWait("a");
    press("b");
    EXPECT_EQ(line.text().toStdString(), "ab");
    toolkit::handleHeldEvents();
    press("c");
    EXPECT_EQ(line.text().toStdString(), "abc");
}

TEST_F(HeldInput, IsNotOvertakenByAnEventThatWasPostedInTheWait) {
    std::string text = "never asked";
    {
        const toolkit::HeldEvents held;
        const toolkit::qt::HeldInput input;
        press("ab");
        QMetaObject::invokeMethod(
            &line, [&] { text = line.text().toStdString(); }, Qt::QueuedConnection);
    }
    toolkit::backend::pumpEvents(std::chrono::milliseconds(0));
    EXPECT_EQ(text, "ab");
}

TEST_F(HeldInput, OfALaterWaitComesAfterIt) {
    pressInAWait("a");
    pressInAWait("b");
    toolkit::handleHeldEvents();
    EXPECT_EQ(line.text().toStdString(), "ab");
}

TEST_F(HeldInput, LeadsToAnotherWaitWithTheRest) {
    QObject::connect(&line, &QLineEdit::textEdited, &line, [this](const QString& text) {
        if (text == QLatin1String("a")) pressInAWait("c");
    });
    pressInAWait("ab");
    toolkit::handleHeldEvents();
    EXPECT_EQ(line.text().toStdString(), "abc");
}

/// Nobody presses a button twice because the window was late.
TEST_F(HeldInput, DoesNotWaitForTheEndOfABox) {
    QObject::connect(&line, &QLineEdit::textEdited, &line, [this] {
        QMessageBox box(&line);
        QTimer::singleShot(0, &box, &QDialog::reject);
        box.exec();
    });
    pressInAWait("ab");
    toolkit::handleHeldEvents();
    QCoreApplication::processEvents();
    EXPECT_EQ(line.text().toStdString(), "a");
}

/// What was held before the keys opens a box, and so the keys are still kept while it is open.
TEST_F(HeldInput, DoesNotKeepTheAnswerToABox) {
    bool answered = false;
    {
        const toolkit::HeldEvents held;
        const toolkit::qt::HeldInput input;
        toolkit::dispatch([&] {
            QMessageBox box(&line);
            QPushButton* const button = box.addButton(QMessageBox::Ok);
            QObject::connect(button, &QPushButton::clicked, &box, [&] { answered = true; });
            QTimer::singleShot(0, &box, [&] { pressOn(box.windowHandle(), Qt::Key_Return, "\r"); });
            QTimer::singleShot(2000, &box, &QDialog::reject);
            box.exec();
        });
        press("a");
    }
    QCoreApplication::processEvents(); // which nobody else does when the box is open
    EXPECT_TRUE(answered);
}
