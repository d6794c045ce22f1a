#pragma once

#include <windows.h>

#include <objbase.h>

namespace platform::windows {

/// While it lives this thread may use COM and what is built on it, as the shell and the directory service.
/// https://learn.microsoft.com/windows/win32/api/combaseapi/nf-combaseapi-coinitializeex
class ComApartment {
public:
    ComApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }

private:
    HRESULT result_;
};

} // namespace platform::windows
