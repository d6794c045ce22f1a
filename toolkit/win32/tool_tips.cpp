#include "toolkit/win32/tool_tips.h"

#include "toolkit/shown_text.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/texts.h"

#include <commctrl.h>

namespace toolkit::win32 {

namespace {

constexpr int widestTip = 400;   ///< longer texts have several lines
constexpr int longestShown = 30; ///< seconds

} // namespace

ToolTips::ToolTips(HWND dialog)
    : dialog_(dialog),
      // It goes with the window that owns it.
      tips_(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                            CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, dialog, nullptr,
                            GetModuleHandleW(nullptr), nullptr)) {
    SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, scaled(dialog_, widestTip));
    SendMessageW(tips_, TTM_SETDELAYTIME, TTDT_AUTOPOP, MAKELPARAM(longestShown * 1000, 0));
}

void ToolTips::set(HWND part, std::string_view text) {
    setShown(part, fromUtf8(shownTip(text)));
}

void ToolTips::setShown(HWND part, const std::wstring& text) {
    texts_[part] = text;
    RECT whole{};
    GetClientRect(part, &whole);
    setTool(part, 0, whole, text);
    setTool(dialog_, reinterpret_cast<UINT_PTR>(part), placeIn(dialog_, part), text);
}

void ToolTips::setRegion(HWND part, int number, const RECT& region, std::string_view text) {
    setTool(part, static_cast<UINT_PTR>(number), region, fromUtf8(shownTip(text)));
}

void ToolTips::rescale() {
    SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, scaled(dialog_, widestTip));
    for (const auto& [part, text] : std::map(texts_))
        setShown(part, text);
}

void ToolTips::follow(const MSG& message) const {
    if (message.message < WM_MOUSEFIRST || message.message > WM_MOUSELAST) return;
    MSG copy = message;
    SendMessageW(tips_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&copy));
}

void ToolTips::setTool(HWND owner, UINT_PTR number, const RECT& region, std::wstring text) {
    bool& known = known_[{owner, number}];
    if (!known && text.empty()) return;
    TTTOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.hwnd = owner;
    tool.uId = number;
    tool.rect = region;
    tool.lpszText = text.data();
    if (known) SendMessageW(tips_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    known = !text.empty();
    if (known) SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

std::string designToolTip(HWND part) {
    const wchar_t* text = nullptr;
    const int length = LoadStringW(GetModuleHandleW(nullptr), static_cast<UINT>(GetDlgCtrlID(part)),
                                   reinterpret_cast<LPWSTR>(&text), 0);
    return length <= 0 ? std::string() : toUtf8({text, static_cast<std::size_t>(length)});
}

} // namespace toolkit::win32
