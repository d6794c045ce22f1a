#pragma once

#include "app/program.h"

namespace drive {

/// Icon resources of the tray icon.
constexpr int noStickIcon = 103;
constexpr int stickIcon = 104;

/// Gives the tray icon that picture and the main window's title as its tip.
void showTrayIcon(app::Program& program, int icon);

} // namespace drive
