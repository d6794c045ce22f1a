#pragma once

namespace driver {

/// Puts a mark behind all input so far, and tells its number. It is input itself: as long as the program
/// waits for something it waits, too.
int setMark();

/// The number of the last mark whose turn has come: what was done to the program before it has been handled,
/// or has opened a box or a dialog.
int lastMark();

} // namespace driver
