#pragma once

namespace toolkit::qt {

/// Leaves the program's own folder out of those in which Qt looks for plugins: what lies there may have come
/// with a download. The system's folder and those of the user's QT_PLUGIN_PATH stay. To be called before the
/// application object is made, which looks for some at once.
void distrustPluginsBesideTheProgram();

} // namespace toolkit::qt
