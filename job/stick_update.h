#pragma once

class cDrive;

namespace job {

/// The main job: puts the chosen firmware and channel list onto the stick that is shown. Asks first; what it
/// writes goes straight to its final name. Throws base::RuntimeError when no receiver is chosen or a file
/// cannot be written.
void cmdChoose_Click(cDrive& drive);

} // namespace job
