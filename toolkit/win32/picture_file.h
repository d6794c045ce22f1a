// Picture files: the system decodes them, `OleLoadPicture` and `CreateIconFromResourceEx`.
#pragma once

#include "toolkit/win32/bitmap.h"

#include <windows.h>

#include <optional>
#include <string>

namespace toolkit::win32 {

/// Pixels of an icon.
Bitmap pixelsOf(HICON icon, int width, int height);

/// The picture that a bitmap, icon, JPEG or GIF file holds, the largest one of an icon; no value for anything
/// else.
std::optional<Bitmap> decodePicture(const std::string& contents);

} // namespace toolkit::win32
