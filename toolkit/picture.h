// Pictures out of files and out of the program.
#pragma once

#include "base/picture.h"

#include <string_view>

namespace toolkit {

/// Loads a bitmap, icon, JPEG or GIF file. Throws base::RuntimeError: FileNotFound, PathNotFound or another
/// file error when the file cannot be read, InvalidPicture when it is none of the four. Windows:
/// `OleLoadPicture`.
base::Picture loadPicture(std::string_view path);

// The program's icon resources.
constexpr int programIcon = 103;
constexpr int noStickIcon = programIcon; ///< of the tray icon
constexpr int stickIcon = 104;           ///< of the tray icon

/// One of the two icon resources. Windows: `LoadImage`. Throws base::RuntimeError (InvalidProcedureCall) for
/// a number that the program does not have.
base::Picture iconResource(int number);

/// Whether the program has an icon resource of that number.
constexpr bool isIconResource(int number) {
    return number == programIcon || number == stickIcon;
}

} // namespace toolkit
