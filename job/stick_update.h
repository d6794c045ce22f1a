#pragma once

class frmMain;

namespace job {

/// The main job: puts the chosen firmware and channel list onto the stick. Asks first; what it writes goes
/// straight to its final name. Throws base::RuntimeError when no receiver is chosen or a file cannot be
/// written.
void cmdChoose_Click(frmMain& window);

} // namespace job
