#pragma once

#include <QString>

namespace driver {

/// Saves a window as a picture; without a window's name all that are on the screen, one above the other.
/// False when there is nothing to save or the file cannot be written.
bool saveScreenshot(const QString& window, const QString& path);

/// The desktop's colours: dark, or those that the program was started with.
void setDarkPalette(bool dark);

} // namespace driver
