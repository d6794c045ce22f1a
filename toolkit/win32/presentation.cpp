#include "toolkit/win32/presentation.h"

#include "toolkit/win32/resource_names.h"

#include <array>
#include <cwchar>
#include <string_view>
#include <utility>

namespace toolkit::win32 {

namespace {

enum class Style { Title, Heading, Strong, Step, Fixed };
constexpr std::array styles = {Style::Title, Style::Heading, Style::Strong, Style::Step, Style::Fixed};

struct Entry {
    std::string_view form;
    std::string_view part;
    Style style;
};

constexpr std::array entries = {
    Entry{"frmMain", "Label15", Style::Title},
    Entry{"frmMain", "Label16", Style::Heading},
    Entry{"frmMain", "Label17", Style::Heading},
    Entry{"frmMain", "Label18", Style::Heading},
    Entry{"frmMain", "Label19", Style::Heading},
    Entry{"frmMain", "cmdChoose", Style::Heading},
    Entry{"frmMain", "lblLW", Style::Strong},
    Entry{"frmMain", "lblCapSettings", Style::Strong},
    Entry{"frmMain", "lbl_firmstand", Style::Strong},
    Entry{"frmMain", "lbl_settstand", Style::Strong},
    Entry{"frmMain", "lbl_reihenfolge", Style::Fixed},
    Entry{"Form1", "Label1", Style::Title},
    Entry{"Form1", "Label3", Style::Step},
};

void setFace(LOGFONTW& description, const wchar_t* face) {
    std::wcsncpy(description.lfFaceName, face, LF_FACESIZE - 1);
}

int CALLBACK noteThatThereIsOne(const LOGFONTW*, const TEXTMETRICW*, DWORD, LPARAM found) {
    *reinterpret_cast<bool*>(found) = true;
    return 0;
}

bool hasFont(const wchar_t* face) {
    LOGFONTW description{};
    description.lfCharSet = DEFAULT_CHARSET;
    setFace(description, face);
    bool found = false;
    HDC const screen = GetDC(nullptr);
    EnumFontFamiliesExW(screen, &description, noteThatThereIsOne, reinterpret_cast<LPARAM>(&found), 0);
    ReleaseDC(nullptr, screen);
    return found;
}

LOGFONTW styled(LOGFONTW description, Style style) {
    switch (style) {
    case Style::Title:
        description.lfHeight = MulDiv(description.lfHeight, 130, 100);
        description.lfWeight = FW_BOLD;
        break;
    case Style::Heading:
        description.lfHeight = MulDiv(description.lfHeight, 108, 100);
        description.lfWeight = FW_BOLD;
        break;
    case Style::Strong:
        description.lfWeight = FW_BOLD;
        break;
    case Style::Step:
        description.lfWeight = FW_BOLD;
        setFace(description, L"Arial");
        break;
    case Style::Fixed:
        description.lfPitchAndFamily = FIXED_PITCH | FF_MODERN;
        setFace(description, hasFont(L"Consolas") ? L"Consolas" : L"Courier New");
        break;
    }
    return description;
}

} // namespace

Presentation::Presentation(HWND dialog, std::string form) : dialog_(dialog), form_(std::move(form)) {
    apply();
}

Presentation::~Presentation() {
    for (HFONT font : fonts_)
        DeleteObject(font);
}

void Presentation::apply() {
    LOGFONTW base{};
    auto* const dialogFont = reinterpret_cast<HFONT>(SendMessageW(dialog_, WM_GETFONT, 0, 0));
    if (GetObjectW(dialogFont, sizeof base, &base) == 0) return;
    const std::vector<HFONT> old = std::exchange(fonts_, {});
    for (const Style style : styles) {
        const LOGFONTW description = styled(base, style);
        fonts_.push_back(CreateFontIndirectW(&description));
    }
    for (const Entry& entry : entries) {
        HWND const part = entry.form == form_ ? GetDlgItem(dialog_, resourceNumber(entry.part)) : nullptr;
        HFONT const font = fonts_[static_cast<std::size_t>(entry.style)];
        if (part != nullptr)
            SendMessageW(part, WM_SETFONT, reinterpret_cast<WPARAM>(font), IsWindowVisible(dialog_));
    }
    for (HFONT font : old)
        DeleteObject(font);
}

} // namespace toolkit::win32
