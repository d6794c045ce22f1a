#include "toolkit/win32/form_window.h"

#include "toolkit/win32/dialog_template.h"
#include "toolkit/win32/focus_frame.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/presentation.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"
#include "toolkit/win32/window_class.h"
#include "toolkit/win32/window_part.h"

#include <algorithm>

namespace toolkit::win32 {

namespace {

constexpr UINT settleMessage = WM_APP + 1;
constexpr UINT rescaleMessage = WM_APP + 2;
constexpr UINT destroyMessage = WM_APP + 3;
constexpr UINT focusMessage = WM_APP + 4;

std::vector<std::unique_ptr<FormWindow>>& windows() {
    static std::vector<std::unique_ptr<FormWindow>> all;
    return all;
}

/// Handles of windows, the one that was active last at the end.
std::vector<HWND>& recentWindows() {
    static std::vector<HWND> handles;
    return handles;
}

bool isPushButton(HWND part) {
    return (SendMessageW(part, WM_GETDLGCODE, 0, 0) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
}

/// Where the keyboard is at first. Where the first part is a button anyway it is the main button, so that the
/// enter key means that one.
HWND firstPart(HWND dialog) {
    HWND const first = GetNextDlgTabItem(dialog, nullptr, FALSE);
    const LRESULT answer = SendMessageW(dialog, DM_GETDEFID, 0, 0);
    HWND const main = HIWORD(answer) == DC_HASDEFID ? GetDlgItem(dialog, LOWORD(answer)) : nullptr;
    return isPushButton(first) && main != nullptr && IsWindowEnabled(main) != FALSE ? main : first;
}

/// Only top-level windows hear of it.
void passToParts(HWND dialog, UINT message) {
    for (HWND part = GetWindow(dialog, GW_CHILD); part != nullptr; part = GetWindow(part, GW_HWNDNEXT))
        SendMessageW(part, message, 0, 0);
}

} // namespace

FormWindow::FormWindow(std::string name) : name_(std::move(name)) {}

FormWindow::~FormWindow() {
    for (const auto& menu : menus_)
        DestroyMenu(menu.second);
}

FormWindow& FormWindow::create(const std::string& name) {
    const std::wstring wideName = fromUtf8(name);
    registerWindowClass(wideName);
    DialogTemplate layout(wideName);
    for (;;) {
        FormWindow& window = *windows().emplace_back(new FormWindow(name));
        layout.create(procedure, reinterpret_cast<LPARAM>(&window));
        if (window.handle_ == nullptr) defectiveLayout(name, {});
        // Nobody could reach what does not fit: the large letters of a small screen have to be smaller.
        if (fitsScreen(window.handle_) || !layout.shrink(GetDpiForWindow(window.handle_))) return window;
        DestroyWindow(window.handle_);
    }
}

FormWindow* FormWindow::of(HWND handle) {
    const auto found = std::find_if(windows().begin(), windows().end(),
                                    [handle](const auto& w) { return w->handle_ == handle; });
    return found == windows().end() || handle == nullptr ? nullptr : found->get();
}

/// Right after a box has closed, or while another program is in front, none is active: then the one that was
/// it last is meant.
HWND FormWindow::front() {
    if (HWND const active = GetActiveWindow(); active != nullptr && IsWindowEnabled(active) != FALSE)
        return active;
    const auto& recent = recentWindows();
    const auto found = std::find_if(recent.rbegin(), recent.rend(), [](HWND window) {
        return IsWindowVisible(window) != FALSE && IsWindowEnabled(window) != FALSE;
    });
    return found == recent.rend() ? nullptr : *found;
}

void FormWindow::destroyAll() {
    while (!windows().empty())
        DestroyWindow(windows().back()->handle_);
}

void FormWindow::initialize(HWND handle) {
    handle_ = handle;
    recentWindows().push_back(handle);
    toolTips_ = std::make_unique<ToolTips>(handle);
    presentation_ = std::make_unique<Presentation>(handle, name_);
    focusFrame_ = std::make_unique<FocusFrame>(handle);
}

HMENU FormWindow::menu(const std::wstring& name) {
    const auto found =
        std::find_if(menus_.begin(), menus_.end(), [&name](const auto& menu) { return menu.first == name; });
    if (found != menus_.end()) return found->second;
    HMENU const loaded = LoadMenuW(GetModuleHandleW(nullptr), name.c_str());
    if (loaded != nullptr) menus_.emplace_back(name, loaded);
    return loaded;
}

void FormWindow::add(int number, std::unique_ptr<WindowPart> adaptor) {
    if (number != 0) parts_.emplace_back(number, adaptor.get());
    adaptors_.push_back(std::move(adaptor));
}

WindowPart* FormWindow::adaptorOf(int number) const {
    const auto found = std::find_if(parts_.begin(), parts_.end(),
                                    [number](const auto& part) { return part.first == number; });
    return found == parts_.end() ? nullptr : found->second;
}

void FormWindow::present(HWND owner) {
    if (IsWindowVisible(handle_) == FALSE && owner != nullptr) {
        SetWindowLongPtrW(handle_, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(owner));
        centreOver(handle_, owner);
    }
    const bool first = IsWindowVisible(handle_) == FALSE;
    ShowWindow(handle_, IsIconic(handle_) != FALSE ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(handle_);
    if (first) SendMessageW(handle_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(firstPart(handle_)), TRUE);
}

void FormWindow::frameFocus() {
    focusFrame_->surround(GetFocus());
}

void FormWindow::leave() {
    leaving_ = true;
    ShowWindow(handle_, SW_HIDE);
    if (busy_ == 0) postDestroy();
}

/// The dialog's own way would press whichever button looks like the default one. In an open list Enter
/// chooses.
bool FormWindow::handleEnter(const MSG& message) {
    if (message.message != WM_KEYDOWN || message.wParam != VK_RETURN) return false;
    if (SendMessageW(message.hwnd, CB_GETDROPPEDSTATE, 0, 0) != FALSE) return false;
    const Busy busy(*this);
    const auto report = onEnter; // a copy: the window may be closed while the wish is granted
    if (report) report(message.hwnd == handle_ ? 0 : GetDlgCtrlID(message.hwnd));
    return true;
}

bool FormWindow::handleHelp(const MSG& message) {
    if (message.message != WM_KEYDOWN || message.wParam != VK_F1) return false;
    const bool alone =
        GetKeyState(VK_CONTROL) >= 0 && GetKeyState(VK_SHIFT) >= 0; // with Alt it is another message
    if (alone && (HIWORD(message.lParam) & KF_REPEAT) == 0) report(onHelp);
    return true;
}

int FormWindow::showEnterButton(int number) const {
    const LRESULT answer = SendMessageW(handle_, DM_GETDEFID, 0, 0);
    SendMessageW(handle_, DM_SETDEFID, static_cast<WPARAM>(number), 0);
    return HIWORD(answer) == DC_HASDEFID ? LOWORD(answer) : 0;
}

void FormWindow::postDestroy() const {
    PostMessageW(handle_, destroyMessage, 0, 0);
}

void FormWindow::postSettle(WindowPart& adaptor) {
    PostMessageW(handle_, settleMessage, 0, reinterpret_cast<LPARAM>(&adaptor));
}

INT_PTR CALLBACK FormWindow::procedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(handle, DWLP_USER, lParam);
        reinterpret_cast<FormWindow*>(lParam)->initialize(handle);
        return FALSE; // the keyboard focus comes when the window is shown
    }
    auto* window = reinterpret_cast<FormWindow*>(GetWindowLongPtrW(handle, DWLP_USER));
    if (window == nullptr) return FALSE;
    if (message != WM_NCDESTROY) return window->received(message, wParam, lParam);
    SetWindowLongPtrW(handle, DWLP_USER, 0);
    std::erase(recentWindows(), handle);
    if (window->onDestroyed) window->onDestroyed();
    std::erase_if(windows(), [window](const auto& w) { return w.get() == window; });
    return FALSE;
}

INT_PTR FormWindow::received(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_COMMAND:
        return commanded(LOWORD(wParam), HIWORD(wParam));
    case WM_NOTIFY:
        return notified(*reinterpret_cast<const NMHDR*>(lParam));
    case WM_DRAWITEM:
        return drawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_CTLCOLORSTATIC: {
        auto* const part = reinterpret_cast<HWND>(lParam);
        if (focusFrame_->has(part)) return reinterpret_cast<INT_PTR>(focusFrame_->brush());
        const WindowPart* adaptor = adaptorOf(GetDlgCtrlID(part));
        return adaptor == nullptr ? FALSE : reinterpret_cast<INT_PTR>(adaptor->background());
    }
    case WM_CLOSE:
        requestClose();
        return TRUE;
    case WM_QUERYENDSESSION:
        return answer(TRUE);
    case WM_ENDSESSION:
        return wParam == FALSE ? FALSE : sessionEnds();
    case WM_SYSCOLORCHANGE:
        passToParts(handle_, message);
        [[fallthrough]];
    case WM_DPICHANGED:
    case WM_SETTINGCHANGE:
    case WM_THEMECHANGED:
        // After what the dialog itself makes of it.
        PostMessageW(handle_, rescaleMessage, 0, 0);
        return FALSE;
    case WM_ACTIVATE:
        if (LOWORD(wParam) != WA_INACTIVE) activated();
        return FALSE;
    case focusMessage:
        keepFocus();
        return TRUE;
    case rescaleMessage:
        rescale();
        return TRUE;
    case settleMessage:
        settle(reinterpret_cast<const WindowPart*>(lParam));
        return TRUE;
    case destroyMessage:
        if (leaving_ && busy_ == 0) DestroyWindow(handle_);
        return TRUE;
    default:
        return FALSE;
    }
}

void FormWindow::activated() {
    std::erase(recentWindows(), handle_);
    recentWindows().push_back(handle_);
    PostMessageW(handle_, focusMessage, 0, 0);
}

INT_PTR FormWindow::answer(LRESULT result) const {
    SetWindowLongPtrW(handle_, DWLP_MSGRESULT, result);
    return TRUE;
}

INT_PTR FormWindow::commanded(unsigned number, unsigned notification) {
    if (WindowPart* adaptor = adaptorOf(static_cast<int>(number)))
        adaptor->command(notification);
    else if (number == IDCANCEL && modal_)
        requestClose(); // Escape; the assistant has no way to cancel what it does
    return TRUE;
}

INT_PTR FormWindow::notified(const NMHDR& header) {
    WindowPart* adaptor = adaptorOf(GetDlgCtrlID(header.hwndFrom));
    if (adaptor == nullptr) return FALSE;
    const std::optional<LRESULT> result = adaptor->notified(header);
    return result ? answer(*result) : FALSE;
}

/// What no control claims is a line under a heading.
INT_PTR FormWindow::drawItem(const DRAWITEMSTRUCT& item) {
    if (WindowPart* adaptor = adaptorOf(static_cast<int>(item.CtlID)))
        adaptor->draw(item);
    else
        FillRect(item.hDC, &item.rcItem, GetSysColorBrush(COLOR_HIGHLIGHT));
    return TRUE;
}

/// The first window is the main window.
INT_PTR FormWindow::sessionEnds() {
    if (windows().front().get() == this) report(onSessionEnd);
    return TRUE;
}

void FormWindow::requestClose() {
    report(onCloseRequested);
}

void FormWindow::report(const std::function<void()>& onWish) {
    const auto wish = onWish; // a copy: the window may be closed while the wish is granted
    const Busy busy(*this);
    if (wish) wish();
}

/// Messages can be sent by anybody.
void FormWindow::settle(const WindowPart* named) {
    const auto found = std::find_if(adaptors_.begin(), adaptors_.end(),
                                    [named](const auto& adaptor) { return adaptor.get() == named; });
    if (found != adaptors_.end()) (*found)->settle();
}

/// The part that had the keyboard when the window was left may have been disabled since: no key would have an
/// effect.
void FormWindow::keepFocus() const {
    HWND const focus = GetFocus();
    if (GetActiveWindow() != handle_ || IsIconic(handle_) != FALSE) return;
    if (focus != nullptr && focus != handle_ && IsWindowEnabled(focus) != FALSE) return;
    if (HWND const part = firstPart(handle_))
        SendMessageW(handle_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(part), TRUE);
}

void FormWindow::rescale() {
    presentation_->apply();
    toolTips_->rescale();
    for (const auto& adaptor : adaptors_)
        adaptor->rescale();
    if (onRescaled) onRescaled();
    RedrawWindow(handle_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

} // namespace toolkit::win32
