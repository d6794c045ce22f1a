#include "tests/driver/windows/provider/accessible_service.h"

#include "tests/driver/windows/provider/com_object.h"

#include <oleacc.h>

namespace provider {

namespace {

constexpr MSAAPROPID liveSetting{
    0xc12bcd8e, 0x2a8e, 0x4950, {0x8a, 0xe7, 0x36, 0x25, 0x11, 0x1d, 0x58, 0xeb}};

/// The window's property for what a screen reader asks for; null for what no test looks at.
const wchar_t* nameOf(const MSAAPROPID& property) {
    if (property == PROPID_ACC_NAME) return L"spoken.name";
    if (property == PROPID_ACC_VALUE) return L"spoken.value";
    if (property == PROPID_ACC_DESCRIPTION) return L"spoken.description";
    if (property == PROPID_ACC_ROLE) return L"spoken.role";
    if (property == liveSetting) return L"spoken.live";
    return nullptr;
}

HRESULT leave(HWND window, DWORD object, DWORD child, const MSAAPROPID& property, LONG_PTR value) {
    const wchar_t* const name = nameOf(property);
    if (name == nullptr || object != static_cast<DWORD>(OBJID_CLIENT) || child != CHILDID_SELF)
        return E_INVALIDARG;
    return SetPropW(window, name, reinterpret_cast<HANDLE>(value)) == FALSE ? E_FAIL : S_OK;
}

class Service : public ComObject<IAccPropServices, IID_IAccPropServices, false> {
public:
    STDMETHODIMP SetHwndProp(HWND window, DWORD object, DWORD child, MSAAPROPID property,
                             VARIANT value) override {
        return value.vt == VT_I4 ? leave(window, object, child, property, value.lVal) : E_INVALIDARG;
    }
    /// A text is a global atom, which has 255 characters at most.
    STDMETHODIMP SetHwndPropStr(HWND window, DWORD object, DWORD child, MSAAPROPID property,
                                LPCWSTR text) override {
        const ATOM atom = *text == 0 ? ATOM{} : GlobalAddAtomW(text);
        return *text != 0 && atom == 0 ? E_FAIL : leave(window, object, child, property, atom);
    }
    STDMETHODIMP ClearHwndProps(HWND window, DWORD, DWORD, const MSAAPROPID* properties, int count) override {
        for (int i = 0; i < count; ++i)
            if (const wchar_t* const name = nameOf(properties[i]); name != nullptr) RemovePropW(window, name);
        return S_OK;
    }

    STDMETHODIMP SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                               AnnoScope) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    STDMETHODIMP SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                   AnnoScope) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    STDMETHODIMP SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                    AnnoScope) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    STDMETHODIMP ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override {
        return E_NOTIMPL;
    }
};

} // namespace

IUnknown* makeAccessibleService() {
    return new Service;
}

} // namespace provider
