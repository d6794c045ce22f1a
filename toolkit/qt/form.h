// The Qt side of windows.
#pragma once

namespace toolkit::qt {

/// Reports a wish to close the program's main window: the end of the session, a signal. Without one the
/// program ends.
void requestProgramClose();

/// Takes all windows away for good and disconnects their forms, which may live on.
void releaseAllWindows();

} // namespace toolkit::qt
