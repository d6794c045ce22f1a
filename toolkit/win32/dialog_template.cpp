#include "toolkit/win32/dialog_template.h"

namespace toolkit::win32 {

namespace {

/// Of the parts of an extended template the size of the letters comes behind the fixed ones, the menu, the
/// class and the title. https://learn.microsoft.com/windows/win32/dlgbox/dlgtemplateex
constexpr std::size_t fixedWords = 13;

/// Nine points at the resolution of 96.
constexpr int smallestLetters = 12;

constexpr int pointsPerInch = 72;

/// A menu, a class or a title: nothing, a number behind a mark, or a text that ends in 0.
std::size_t behindName(const std::vector<WORD>& words, std::size_t at) {
    constexpr WORD numberFollows = 0xFFFF;
    if (at < words.size() && words[at] == numberFollows) return at + 2;
    while (at < words.size() && words[at] != 0)
        ++at;
    return at + 1;
}

} // namespace

DialogTemplate::DialogTemplate(const std::wstring& name) {
    HMODULE const program = GetModuleHandleW(nullptr);
    HRSRC const resource = FindResourceW(program, name.c_str(), RT_DIALOG);
    HGLOBAL const loaded = resource == nullptr ? nullptr : LoadResource(program, resource);
    const auto* const first = loaded == nullptr ? nullptr : static_cast<const WORD*>(LockResource(loaded));
    if (first == nullptr) return;
    words_.assign(first, first + SizeofResource(program, resource) / sizeof(WORD));
    points_ = behindName(words_, behindName(words_, behindName(words_, fixedWords)));
}

HWND DialogTemplate::create(DLGPROC procedure, LPARAM parameter) const {
    if (words_.empty()) return nullptr;
    return CreateDialogIndirectParamW(GetModuleHandleW(nullptr),
                                      reinterpret_cast<const DLGTEMPLATE*>(words_.data()), nullptr, procedure,
                                      parameter);
}

bool DialogTemplate::shrink(unsigned dpi) {
    if (points_ >= words_.size()) return false;
    const int points = words_[points_] - 1;
    if (MulDiv(points, static_cast<int>(dpi), pointsPerInch) < smallestLetters) return false;
    words_[points_] = static_cast<WORD>(points);
    return true;
}

} // namespace toolkit::win32
