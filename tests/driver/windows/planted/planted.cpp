// A library that somebody has put where a program may take it for the system's: when it is loaded it leaves a
// file of its name and ".loaded" beside it, and has none of the functions that the program wants.
#include <windows.h>

#include <string>

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH) return TRUE;
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(instance, path, MAX_PATH);
    const std::wstring note = std::wstring(path) + L".loaded";
    CloseHandle(CreateFileW(note.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    return FALSE; // whoever wanted it goes on without
}
