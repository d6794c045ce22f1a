// What the main window's buttons do with the stick.
#pragma once

#include <string>

class cDrive;

namespace drive {

/// Opens a folder in the desktop's file browser. Nothing happens when it does not exist, or is a file: what
/// is on a stick, nobody has asked to run.
void OpenDir(const cDrive& drive, const std::string& spath);

/// Writes the standard path into the profile file of the stick that is shown, and uses it from now on. False,
/// and nothing is told, when it could not be written.
bool SavePath(cDrive& drive);

/// The standard path as it is used, behind the stick's root.
std::string withoutLeadingBackslash(std::string path);

/// Opens the stick's standard folder, when the last scan found exactly one stick.
void cmdOpen_Click(const cDrive& drive);

/// Tool tip of the text box with the label, unless a label was refused.
extern const char* const labelToolTip;

/// Gives the stick the label in the text box; one of more than 11 characters is refused. One that the stick
/// does not take is told in the tool tip of the box, which then waits for another one.
void Command1_Click(cDrive& drive);

} // namespace drive
