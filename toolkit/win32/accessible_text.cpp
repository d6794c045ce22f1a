#include "toolkit/win32/accessible_text.h"

#include <ole2.h>

#include <oleacc.h>

#include <array>

namespace toolkit::win32 {

namespace {

/// The property for how changes are said, and its value for one after the other; not every compiler's headers
/// have them.
constexpr MSAAPROPID liveSetting{
    0xc12bcd8e, 0x2a8e, 0x4950, {0x8a, 0xe7, 0x36, 0x25, 0x11, 0x1d, 0x58, 0xeb}};
constexpr LONG polite = 1;

/// The system's service, or null. It stays until the thread's COM ends with the process. COM finds it where
/// the system has registered it, so its library is none that the program is linked with.
IAccPropServices* annotations() {
    static IAccPropServices* const service = []() -> IAccPropServices* {
        void* made = nullptr;
        const HRESULT result = CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                                IID_IAccPropServices, &made);
        return SUCCEEDED(result) ? static_cast<IAccPropServices*>(made) : nullptr;
    }();
    return service;
}

const MSAAPROPID& propertyOf(Spoken kind) {
    switch (kind) {
    case Spoken::Value:
        return PROPID_ACC_VALUE;
    case Spoken::Description:
        return PROPID_ACC_DESCRIPTION;
    case Spoken::Name:
        break;
    }
    return PROPID_ACC_NAME;
}

void annotate(HWND part, const MSAAPROPID& property, LONG value) {
    IAccPropServices* const service = annotations();
    if (service == nullptr) return;
    VARIANT number{};
    number.vt = VT_I4;
    number.lVal = value;
    service->SetHwndProp(part, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, property, number);
}

DWORD changeOf(Spoken kind) {
    switch (kind) {
    case Spoken::Value:
        return EVENT_OBJECT_VALUECHANGE;
    case Spoken::Description:
        return EVENT_OBJECT_DESCRIPTIONCHANGE;
    case Spoken::Name:
        break;
    }
    return EVENT_OBJECT_NAMECHANGE;
}

} // namespace

void speak(HWND part, Spoken kind, const std::wstring& text) {
    IAccPropServices* const service = annotations();
    if (service == nullptr) return;
    const auto client = static_cast<DWORD>(OBJID_CLIENT);
    if (SUCCEEDED(service->SetHwndPropStr(part, client, CHILDID_SELF, propertyOf(kind), text.c_str())))
        NotifyWinEvent(changeOf(kind), part, OBJID_CLIENT, CHILDID_SELF);
}

void speakAsProgressBar(HWND part) {
    annotate(part, PROPID_ACC_ROLE, ROLE_SYSTEM_PROGRESSBAR);
}

void speakChanges(HWND part) {
    annotate(part, liveSetting, polite);
}

void sayNow(HWND part, LONG child) {
    NotifyWinEvent(EVENT_OBJECT_LIVEREGIONCHANGED, part, OBJID_CLIENT, child);
}

void forgetSpoken(HWND part) {
    IAccPropServices* const service = annotations();
    if (service == nullptr) return;
    const std::array all = {PROPID_ACC_NAME, PROPID_ACC_VALUE, PROPID_ACC_DESCRIPTION, PROPID_ACC_ROLE,
                            liveSetting};
    service->ClearHwndProps(part, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, all.data(), all.size());
}

} // namespace toolkit::win32
