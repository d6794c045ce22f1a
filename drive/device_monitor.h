#pragma once

class cDrive;

namespace drive {

/// A device was plugged in: the drives are scanned and the stick is shown; with `open` its standard folder is
/// opened, too.
void deviceArrived(cDrive& drive, bool open);

/// A device was pulled out: no stick is shown, even when another one is still there, until the next arrival
/// or search.
void deviceRemoved(cDrive& drive);

} // namespace drive
