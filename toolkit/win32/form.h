// The Windows side of forms.
#pragma once

namespace toolkit::win32 {

/// Takes all windows away for good and disconnects their forms, which may live on.
void releaseAllWindows();

} // namespace toolkit::win32
