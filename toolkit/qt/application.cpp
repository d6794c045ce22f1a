// The program as a Qt application: its event loop, its pump, its end.
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/held_events.h"
#include "toolkit/wait.h"
#include "toolkit/worker.h"

#include "platform/blocking.h"
#include "platform/device_events.h"
#include "toolkit/qt/end_signals.h"
#include "toolkit/qt/focus_frame.h"
#include "toolkit/qt/form.h"
#include "toolkit/qt/german_texts.h"
#include "toolkit/qt/held_input.h"
#include "toolkit/qt/picture.h"
#include "toolkit/qt/plugin_folders.h"
#include "toolkit/qt/program_style.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QSessionManager>
#include <QTimer>

#include <array>
#include <chrono>
#include <csignal>
#include <utility>

// The macro declares a function, which must not be in a namespace.
static void loadResources() {
    Q_INIT_RESOURCE(toolkit);
}

namespace toolkit {

namespace {

bool quitting = false;
bool handlingHeldEventsSoon = false;

void describe(QApplication& application) {
    QCoreApplication::setApplicationName(QStringLiteral("orvanta-usbtool"));
    QGuiApplication::setApplicationDisplayName({});
    // Flatpak gives every program's desktop file the name of its own.
    QGuiApplication::setDesktopFileName(
        qEnvironmentVariable("FLATPAK_ID", QCoreApplication::applicationName()));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(qt::iconOf(programIcon));
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &application,
                     [](QSessionManager&) { qt::requestProgramClose(); });
}

/// Another wait may have begun; its end asks anew.
void handleHeldEventsNow() {
    handlingHeldEventsSoon = false;
    if (eventsAreHeld()) return;
    handleHeldEvents();
}

/// Blocking calls of the services leave the window alive as long as there is an event loop.
class LivingWindow {
public:
    LivingWindow() { platform::setBlockingCallRunner(waitPainting); }
    LivingWindow(const LivingWindow&) = delete;
    LivingWindow& operator=(const LivingWindow&) = delete;
    ~LivingWindow() {
        platform::setBlockingCallRunner({});
        endWorker();
    }
};

} // namespace

Ending run(char* program, const std::function<void()>& start) {
    resetEnding();
    quitting = false;
    // Whoever reads the standard error output may go at any time. Started programs get the signal back.
    std::signal(SIGPIPE, SIG_IGN);
    loadResources();
    qt::distrustPluginsBesideTheProgram();
    int argumentCount = 1;
    std::array<char*, 2> arguments = {program, nullptr};
    QApplication application(argumentCount, arguments.data());
    QApplication::setStyle(new qt::ProgramStyle); // which the application owns
    describe(application);
    const auto focusFrame = std::make_unique<qt::FocusFrame>();
    qt::GermanTexts germanTexts;
    QCoreApplication::installTranslator(&germanTexts);
    qt::EndSignals endSignals;
    platform::setDeviceEventDelivery([](const std::function<void()>& message) { dispatch(message); });
    const LivingWindow livingWindow;
    // In the loop, so that a start which ends the program at once finds a loop to end.
    QTimer atOnce;
    atOnce.setSingleShot(true);
    QObject::connect(&atOnce, &QTimer::timeout, &application, [&start] { dispatch(start); });
    atOnce.start(0);
    if (!quitting) QApplication::exec();
    qt::releaseAllWindows();
    return ending();
}

void backend::pumpEvents(std::chrono::milliseconds longest) {
    handleHeldEventsNow(); // what came first comes first
    // With a limit it goes on until nothing is pending; without one it would look only once.
    QCoreApplication::processEvents(QEventLoop::AllEvents, static_cast<int>(longest.count()));
}

void backend::paintPending(std::chrono::milliseconds longest) {
    const qt::HeldInput held;
    QTimer end;
    end.setSingleShot(true);
    end.start(longest);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void backend::wakeUp() {
    QCoreApplication::eventDispatcher()->wakeUp();
}

void backend::handleHeldEventsSoon() {
    if (std::exchange(handlingHeldEventsSoon, true)) return;
    QMetaObject::invokeMethod(qApp, handleHeldEventsNow, Qt::QueuedConnection);
}

std::chrono::steady_clock::time_point backend::now() {
    return std::chrono::steady_clock::now();
}

void backend::quit() {
    quitting = true;
    // Not quit(): it would ask the windows, which never agree by themselves.
    QCoreApplication::exit(0);
}

} // namespace toolkit
