#include "tests/driver/commands.h"

#include "tests/driver/heartbeat.h"
#include "tests/driver/input.h"
#include "tests/driver/inspect.h"
#include "tests/driver/mark.h"
#include "tests/driver/screenshot.h"
#include "tests/driver/watch.h"

#include <QApplication>
#include <QClipboard>
#include <QHash>
#include <QJsonArray>

#include <malloc.h>

namespace driver {

namespace {

Outcome failure(const QString& text) {
    return {{{QStringLiteral("error"), text}}, {}};
}

QString textOf(const QJsonObject& request, const char* key) {
    return request[QLatin1String(key)].toString();
}

/// Finds the part that a request is about and lets `act` say what to do with it.
template <typename Action>
Outcome onPart(const QJsonObject& request, Action act) {
    QWidget* part = findPart(textOf(request, "window"), textOf(request, "name"));
    if (part == nullptr) return failure(QStringLiteral("no part of the name ") + textOf(request, "name"));
    return act(*part);
}

Outcome listWindows(const QJsonObject&) {
    return {{{QStringLiteral("windows"), describeWindows()}}, {}};
}

Outcome get(const QJsonObject& request) {
    return onPart(request, [](QWidget& part) {
        return Outcome{{{QStringLiteral("part"), describe(part)}}, {}};
    });
}

Outcome all(const QJsonObject& request) {
    QWidget* window = findWindow(textOf(request, "window"));
    if (window == nullptr) return failure(QStringLiteral("no such window"));
    return {{{QStringLiteral("parts"), describeParts(*window)}}, {}};
}

Outcome click(const QJsonObject& request) {
    return onPart(request, [&request](QWidget& part) {
        const int clicks = request[QLatin1String("clicks")].toInt(1);
        return Outcome{{}, [target = QPointer(&part), clicks] { clickPart(target, clicks); }};
    });
}

/// Steps of a mouse over one part: [what, x, y] with "move", "press" or "release" as what.
Outcome mouse(const QJsonObject& request) {
    return onPart(request, [&request](QWidget& part) {
        QList<MouseStep> steps;
        for (const auto& value : request[QLatin1String("steps")].toArray()) {
            const QJsonArray step = value.toArray();
            const QString what = step[0].toString();
            const auto type = what == QLatin1String("press")     ? QEvent::MouseButtonPress
                              : what == QLatin1String("release") ? QEvent::MouseButtonRelease
                                                                 : QEvent::MouseMove;
            steps.append({type, QPoint(step[1].toInt(), step[2].toInt())});
        }
        const auto button =
            textOf(request, "button") == QLatin1String("right") ? Qt::RightButton : Qt::LeftButton;
        return Outcome{{}, [target = QPointer(&part), steps, button] { moveMouse(target, steps, button); }};
    });
}

Outcome clickRow(const QJsonObject& request) {
    return onPart(request, [&request](QWidget& part) {
        const int row = request[QLatin1String("row")].toInt();
        const int clicks = request[QLatin1String("clicks")].toInt(1);
        if (!rowRectangle(part, row).isValid()) return failure(QStringLiteral("no such row"));
        return Outcome{{}, [target = QPointer(&part), row, clicks] { clickListRow(target, row, clicks); }};
    });
}

Outcome choose(const QJsonObject& request) {
    return onPart(request, [&request](QWidget& part) {
        const int index = request[QLatin1String("index")].toInt();
        return Outcome{{}, [target = QPointer(&part), index] { chooseEntry(target, index); }};
    });
}

Outcome focus(const QJsonObject& request) {
    return onPart(request, [](QWidget& part) {
        part.activateWindow();
        part.setFocus(Qt::TabFocusReason);
        return Outcome{};
    });
}

/// Types into whatever has the focus.
Outcome type(const QJsonObject& request) {
    QStringList keys;
    for (const auto& key : request[QLatin1String("keys")].toArray())
        keys += key.toString();
    return {{}, [text = textOf(request, "text"), keys] { typeKeys(text, keys); }};
}

Outcome composeText(const QJsonObject& request) {
    return {{}, [shown = textOf(request, "shown"), text = textOf(request, "text")] { compose(shown, text); }};
}

Outcome drop(const QJsonObject& request) {
    return onPart(request, [&request](QWidget& part) {
        return Outcome{{{QStringLiteral("taken"), dropText(part, textOf(request, "text"))}}, {}};
    });
}

Outcome messageBox(const QJsonObject&) {
    return {{{QStringLiteral("box"), describeMessageBox()}}, {}};
}

Outcome answer(const QJsonObject& request) {
    QWidget* button = messageBoxButton(textOf(request, "button"));
    if (button == nullptr) return failure(QStringLiteral("no message box with that button"));
    return {{}, [target = QPointer(button)] { clickPart(target, 1); }};
}

Outcome close(const QJsonObject& request) {
    QWidget* window = findWindow(textOf(request, "window"));
    if (window == nullptr) return failure(QStringLiteral("no such window"));
    return {{}, [target = QPointer(window)] {
                if (target != nullptr) target->close();
            }};
}

Outcome resize(const QJsonObject& request) {
    QWidget* window = findWindow(textOf(request, "window"));
    if (window == nullptr) return failure(QStringLiteral("no such window"));
    window->resize(request[QLatin1String("width")].toInt(), request[QLatin1String("height")].toInt());
    return {};
}

Outcome screenshot(const QJsonObject& request) {
    if (!saveScreenshot(textOf(request, "window"), textOf(request, "path")))
        return failure(QStringLiteral("no picture"));
    return {};
}

/// How the window has been painted since the first time that this was asked.
Outcome heartbeat(const QJsonObject& request) {
    QWidget* window = findWindow(textOf(request, "window"));
    if (window == nullptr) return failure(QStringLiteral("no such window"));
    auto* mark = window->findChild<Heartbeat*>();
    if (mark == nullptr) mark = new Heartbeat(window);
    return {{{QStringLiteral("paints"), mark->paints()},
             {QStringLiteral("longestGap"), static_cast<double>(mark->longestGap()) / 1000}},
            {}};
}

/// Bytes that the program has asked of its heap and not given back.
Outcome allocated(const QJsonObject&) {
    const struct mallinfo2 heap = mallinfo2();
    return {{{QStringLiteral("bytes"), static_cast<double>(heap.uordblks + heap.hblkhd)}}, {}};
}

QPointer<Watch> lastWatch;

Outcome watch(const QJsonObject& request) {
    return onPart(request, [&request](QWidget& part) {
        delete lastWatch;
        lastWatch = new Watch(part, textOf(request, "key"), request[QLatin1String("value")]);
        return Outcome{};
    });
}

Outcome watched(const QJsonObject&) {
    if (lastWatch == nullptr) return failure(QStringLiteral("nothing is watched"));
    const std::optional<double> noted = lastWatch->noted();
    return {{{QStringLiteral("time"), noted ? QJsonValue(*noted) : QJsonValue()}}, {}};
}

Outcome mark(const QJsonObject&) {
    return {{{QStringLiteral("mark"), setMark()}}, {}};
}

Outcome marked(const QJsonObject&) {
    return {{{QStringLiteral("mark"), lastMark()}}, {}};
}

Outcome clipboard(const QJsonObject& request) {
    QApplication::clipboard()->setText(textOf(request, "text"));
    return {};
}

Outcome appearance(const QJsonObject& request) {
    if (request.contains(QLatin1String("dark"))) setDarkPalette(request[QLatin1String("dark")].toBool());
    if (request.contains(QLatin1String("fontSize"))) {
        QFont font = QApplication::font();
        font.setPointSizeF(request[QLatin1String("fontSize")].toDouble());
        QApplication::setFont(font);
    }
    return {};
}

} // namespace

Outcome perform(const QJsonObject& request) {
    static const QHash<QString, Outcome (*)(const QJsonObject&)> commands = {
        {QStringLiteral("allocated"), allocated},
        {QStringLiteral("heartbeat"), heartbeat},
        {QStringLiteral("watch"), watch},
        {QStringLiteral("watched"), watched},
        {QStringLiteral("mark"), mark},
        {QStringLiteral("marked"), marked},
        {QStringLiteral("windows"), listWindows},
        {QStringLiteral("get"), get},
        {QStringLiteral("all"), all},
        {QStringLiteral("click"), click},
        {QStringLiteral("clickRow"), clickRow},
        {QStringLiteral("choose"), choose},
        {QStringLiteral("focus"), focus},
        {QStringLiteral("type"), type},
        {QStringLiteral("compose"), composeText},
        {QStringLiteral("messageBox"), messageBox},
        {QStringLiteral("mouse"), mouse},
        {QStringLiteral("drop"), drop},
        {QStringLiteral("answer"), answer},
        {QStringLiteral("close"), close},
        {QStringLiteral("resize"), resize},
        {QStringLiteral("screenshot"), screenshot},
        {QStringLiteral("clipboard"), clipboard},
        {QStringLiteral("appearance"), appearance},
    };
    const auto command = commands.value(textOf(request, "do"));
    return command == nullptr ? failure(QStringLiteral("unknown request")) : command(request);
}

} // namespace driver
