#pragma once

#include <windows.h>

#include <string>

namespace toolkit::win32 {

/// What a screen reader is told of a part instead of what its native control tells.
enum class Spoken { Name, Value, Description };

/// Has screen readers say that of a part. It needs COM in this thread; a system without the service for it
/// (as Wine) leaves the part as it is.
/// https://learn.microsoft.com/windows/win32/api/oleacc/nf-oleacc-iaccpropservices-sethwndpropstr
void speak(HWND part, Spoken kind, const std::wstring& text);

/// Has them call the part a progress bar.
void speakAsProgressBar(HWND part);

/// Makes the part one whose new text screen readers say wherever the user is; see sayNow().
/// https://learn.microsoft.com/windows/win32/winauto/uiauto-live-regions
void speakChanges(HWND part);

/// Has them say a part's text, or that of its child of that number, as soon as they have said what comes
/// before.
void sayNow(HWND part, LONG child = CHILDID_SELF);

/// To be called before the part goes: what was set is not the window's, but the service's.
void forgetSpoken(HWND part);

} // namespace toolkit::win32
