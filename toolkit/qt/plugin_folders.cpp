#include "toolkit/qt/plugin_folders.h"

#include "platform/program_folder.h"

#include <QCoreApplication>
#include <QStringList>

namespace toolkit::qt {

// Qt adds the program's folder when the application object is made. What has been taken out of the list by
// then it takes out again afterwards, but only what was in it: so the folder is put in first.
// https://doc.qt.io/qt-6/qcoreapplication.html#setLibraryPaths
void distrustPluginsBesideTheProgram() {
    constexpr const char* variable = "QT_PLUGIN_PATH";
    const bool wasSet = qEnvironmentVariableIsSet(variable);
    const QByteArray before = qgetenv(variable);
    const QByteArray own = QByteArray::fromStdString(platform::programFolder());
    qputenv(variable, before.isEmpty() ? own : before + ':' + own);
    QStringList folders = QCoreApplication::libraryPaths();
    folders.removeAll(QString::fromLocal8Bit(own));
    QCoreApplication::setLibraryPaths(folders);
    if (wasSet)
        qputenv(variable, before);
    else
        qunsetenv(variable);
}

} // namespace toolkit::qt
