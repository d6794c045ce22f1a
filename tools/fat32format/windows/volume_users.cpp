#include "tools/fat32format/windows/volume_users.h"

#include <windows.h>

#include <restartmanager.h>

#include <algorithm>
#include <array>

namespace fat32format {

namespace {

using Names = std::vector<std::wstring>;

constexpr std::size_t mostFiles = 1000;
constexpr std::size_t mostFolders = 200;
constexpr ULONGLONG longestSearch = 2000; // milliseconds
constexpr std::size_t usualPrograms = 16;

/// Files below a folder, those of the upper folders first.
class FileSearch {
public:
    explicit FileSearch(std::wstring root) : folders_({std::move(root)}) {}

    Names run() {
        for (std::size_t i = 0; i < folders_.size() && hasTime(); ++i)
            list(std::wstring(folders_[i]));
        return files_;
    }

private:
    bool hasTime() const { return files_.size() < mostFiles && GetTickCount64() - start_ < longestSearch; }

    void list(const std::wstring& folder) {
        WIN32_FIND_DATAW found{};
        const HANDLE search = FindFirstFileExW((folder + L'*').c_str(), FindExInfoBasic, &found,
                                               FindExSearchNameMatch, nullptr, 0);
        if (search == INVALID_HANDLE_VALUE) return;
        do
            add(folder, found);
        while (hasTime() && FindNextFileW(search, &found) != FALSE);
        FindClose(search);
    }

    void add(const std::wstring& folder, const WIN32_FIND_DATAW& found) {
        const std::wstring name = found.cFileName;
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool isLink = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (!isFolder) {
            files_.push_back(folder + name);
        } else if (!isLink && name != L"." && name != L".." && folders_.size() < mostFolders) {
            folders_.push_back(folder + name + L'\\');
        }
    }

    std::vector<std::wstring> folders_;
    Names files_;
    ULONGLONG start_ = GetTickCount64();
};

/// The library's functions, which are there when all of them are.
class RestartManager {
public:
    RestartManager() {
        std::array<wchar_t, CCH_RM_SESSION_KEY + 1> key{};
        isOpen_ = start_ != nullptr && register_ != nullptr && list_ != nullptr && end_ != nullptr &&
                  start_(&session_, 0, key.data()) == ERROR_SUCCESS;
    }
    RestartManager(const RestartManager&) = delete;
    RestartManager& operator=(const RestartManager&) = delete;
    ~RestartManager() {
        if (isOpen_) end_(session_);
    }

    Names programsWith(const Names& files) {
        std::vector<LPCWSTR> paths;
        for (const std::wstring& file : files)
            paths.push_back(file.c_str());
        if (!isOpen_ || paths.empty() ||
            register_(session_, static_cast<UINT>(paths.size()), paths.data(), 0, nullptr, 0, nullptr) !=
                ERROR_SUCCESS)
            return {};
        std::vector<RM_PROCESS_INFO> programs(usualPrograms);
        UINT needed = 0;
        auto count = static_cast<UINT>(programs.size());
        DWORD reasons = 0;
        DWORD error = list_(session_, &needed, &count, programs.data(), &reasons);
        if (error == ERROR_MORE_DATA) {
            programs.resize(needed);
            count = needed;
            error = list_(session_, &needed, &count, programs.data(), &reasons);
        }
        if (error != ERROR_SUCCESS) return {};
        programs.resize(count);
        Names names;
        for (const RM_PROCESS_INFO& program : programs)
            names.emplace_back(program.strAppName);
        return names;
    }

private:
    SystemLibrary library_{L"rstrtmgr.dll"};
    decltype(&RmStartSession) start_ = library_.function<decltype(&RmStartSession)>("RmStartSession");
    decltype(&RmRegisterResources) register_ =
        library_.function<decltype(&RmRegisterResources)>("RmRegisterResources");
    decltype(&RmGetList) list_ = library_.function<decltype(&RmGetList)>("RmGetList");
    decltype(&RmEndSession) end_ = library_.function<decltype(&RmEndSession)>("RmEndSession");
    DWORD session_ = 0;
    bool isOpen_ = false;
};

} // namespace

std::vector<std::wstring> programsUsing(const std::wstring& root) {
    Names names = RestartManager().programsWith(FileSearch(root).run());
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    names.erase(std::remove(names.begin(), names.end(), std::wstring()), names.end());
    return names;
}

} // namespace fat32format
