#pragma once

#include "app/program.h"

namespace drive {

/// Gives the tray icon that picture and the main window's title as its tip.
void showTrayIcon(app::Program& program, int icon);

} // namespace drive
