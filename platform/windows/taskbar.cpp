#include "platform/taskbar.h"

#include <windows.h>

#include <shobjidl.h>

namespace platform {

namespace {

/// The system's list of what is in the taskbar, or null. It stays until the thread's COM ends with the
/// process.
ITaskbarList3* taskbar() {
    static ITaskbarList3* const list = []() -> ITaskbarList3* {
        void* made = nullptr;
        if (FAILED(
                CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3, &made)))
            return nullptr;
        auto* const found = static_cast<ITaskbarList3*>(made);
        if (SUCCEEDED(found->HrInit())) return found;
        found->Release();
        return nullptr;
    }();
    return list;
}

TBPFLAG stateOf(TaskbarProgress progress) {
    switch (progress) {
    case TaskbarProgress::KnownShare:
        return TBPF_NORMAL;
    case TaskbarProgress::UnknownShare:
        return TBPF_INDETERMINATE;
    case TaskbarProgress::None:
        break;
    }
    return TBPF_NOPROGRESS;
}

} // namespace

bool showInTaskbar(std::intptr_t window, TaskbarProgress progress, double share) {
    constexpr ULONGLONG all = 1000;
    ITaskbarList3* const list = taskbar();
    HWND const owner = GetAncestor(reinterpret_cast<HWND>(window), GA_ROOTOWNER);
    if (list == nullptr || owner == nullptr) return false;
    const HRESULT shown = list->SetProgressState(owner, stateOf(progress));
    if (progress != TaskbarProgress::KnownShare) return SUCCEEDED(shown);
    return SUCCEEDED(list->SetProgressValue(owner, static_cast<ULONGLONG>(share * all), all));
}

} // namespace platform
