#include "toolkit/win32/label_text.h"

#include "toolkit/win32/painting.h"
#include "toolkit/win32/texts.h"

#include <algorithm>
#include <map>
#include <vector>

namespace toolkit::win32 {

namespace {

struct Word {
    LONG line = 0;
    LONG column = 0;
    std::wstring text;
};

UINT alignment(LONG_PTR style) {
    switch (style & SS_TYPEMASK) {
    case SS_RIGHT:
        return DT_RIGHT;
    case SS_CENTER:
        return DT_CENTER;
    default:
        return DT_LEFT;
    }
}

UINT flagsOf(HWND label) {
    return alignment(GetWindowLongPtrW(label, GWL_STYLE)) | DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX |
           DT_EXPANDTABS;
}

bool hasColumns(HWND label) {
    constexpr BYTE pitches = 3;
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(label, WM_GETFONT, 0, 0)), sizeof font, &font);
    return (font.lfPitchAndFamily & pitches) == FIXED_PITCH;
}

std::vector<Word> wordsOf(const std::wstring& text) {
    std::vector<Word> words;
    LONG line = 0;
    LONG column = 0;
    bool inside = false;
    for (const wchar_t unit : text) {
        const bool blank = unit == L' ' || unit == L'\r' || unit == L'\n';
        if (!blank && !inside) words.push_back({line, column, {}});
        if (!blank) words.back().text += unit;
        inside = !blank;
        column = unit == L'\n' ? 0 : column + 1;
        if (unit == L'\n') ++line;
    }
    return words;
}

LONG widthOf(HDC context, const std::wstring& text) {
    SIZE size{};
    GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

/// As wide as a digit, and no word reaches the place of the blank behind it.
LONG cellWidth(HDC context, const std::vector<Word>& words) {
    LONG width = widthOf(context, L"0");
    for (const Word& word : words) {
        const auto characters = static_cast<LONG>(word.text.size());
        width = std::max(width, (widthOf(context, word.text) + characters - 1) / characters);
    }
    return width;
}

LONG heightOf(HDC context) {
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    return metrics.tmHeight;
}

SIZE columnsSize(HDC context, const std::vector<Word>& words) {
    SIZE size{};
    const LONG cell = cellWidth(context, words);
    for (const Word& word : words) {
        size.cx = std::max(size.cx, word.column * cell + widthOf(context, word.text));
        size.cy = (word.line + 1) * heightOf(context);
    }
    return size;
}

void paintColumns(HDC context, const std::vector<Word>& words, const RECT& room, COLORREF color) {
    const LONG cell = cellWidth(context, words);
    const LONG height = heightOf(context);
    for (const Word& word : words) {
        const LONG left = room.left + word.column * cell;
        const LONG top = room.top + word.line * height;
        drawText(context, word.text, {left, top, room.right, top + height},
                 DT_LEFT | DT_SINGLELINE | DT_NOPREFIX | DT_NOCLIP, color);
    }
}

/// A long text takes tens of milliseconds to break into lines, and is asked for again and again.
struct Known {
    std::wstring text;
    HFONT font = nullptr;
    UINT dpi = 0;
    std::map<LONG, SIZE> sizes; ///< by width
};

std::map<LONG, SIZE>& knownSizes(HWND label, const std::wstring& text) {
    static std::map<HWND, Known> all;
    Known& known = all[label];
    auto* const font = reinterpret_cast<HFONT>(SendMessageW(label, WM_GETFONT, 0, 0));
    const UINT dpi = GetDpiForWindow(label);
    if (known.text != text || known.font != font || known.dpi != dpi) known = {text, font, dpi, {}};
    return known.sizes;
}

SIZE measured(HWND label, const std::wstring& text, LONG width) {
    const Measuring measuring(label);
    if (hasColumns(label)) return columnsSize(measuring.get(), wordsOf(text));
    RECT needed{0, 0, width, 0};
    DrawTextW(measuring.get(), text.c_str(), static_cast<int>(text.size()), &needed,
              flagsOf(label) | DT_CALCRECT);
    return {needed.right, needed.bottom};
}

} // namespace

SIZE textSize(HWND label, LONG width) {
    const std::wstring text = windowText(label);
    if (text.empty()) return {};
    std::map<LONG, SIZE>& known = knownSizes(label, text);
    const auto found = known.find(width);
    return found != known.end() ? found->second : known[width] = measured(label, text, width);
}

LONG textHeight(HWND label, LONG width) {
    constexpr LONG longestFitting = 1000; // characters
    const LONG characters = GetWindowTextLengthW(label);
    if (characters <= longestFitting) return textSize(label, width).cy;
    TEXTMETRICW metrics{};
    GetTextMetricsW(Measuring(label).get(), &metrics);
    return (characters * metrics.tmAveCharWidth / std::max(width, LONG{1}) + 1) * metrics.tmHeight;
}

LONG lineHeight(HWND label) {
    return heightOf(Measuring(label).get());
}

void paintText(HWND label, HDC context, const RECT& room, COLORREF color, bool dots) {
    const ChosenFont font(context, label);
    const std::wstring text = windowText(label);
    if (hasColumns(label))
        paintColumns(context, wordsOf(text), room, color);
    else
        drawText(context, text, room, flagsOf(label) | (dots ? DT_END_ELLIPSIS : 0U), color);
}

} // namespace toolkit::win32
