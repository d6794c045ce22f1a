#include "tests/driver/windows/common_controls.h"

#include "tests/driver/windows/remote.h"

#include <commctrl.h>

namespace probe {

namespace {

constexpr int characters = 1024; // of the longest text that is read

/// A record that a control fills, and behind it the text that it points to.
template <class Record>
class RemoteRecord {
public:
    explicit RemoteRecord(HWND window) : memory_(window, sizeof(Record) + characters * sizeof(wchar_t)) {}

    wchar_t* textAddress() const { return reinterpret_cast<wchar_t*>(memory_.address(sizeof(Record))); }
    LRESULT ask(HWND window, UINT message, WPARAM wParam) {
        memory_.write(&record, sizeof record);
        const LRESULT result = probe::ask(window, message, wParam, memory_.address());
        memory_.read(&record, sizeof record);
        return result;
    }
    std::wstring text() const { return memory_.text(sizeof(Record), characters); }

    Record record{};

private:
    RemoteMemory memory_;
};

std::wstring headerText(HWND header, int column) {
    RemoteRecord<HDITEMW> item(header);
    item.record.mask = HDI_TEXT;
    item.record.pszText = item.textAddress();
    item.record.cchTextMax = characters;
    item.ask(header, HDM_GETITEMW, static_cast<WPARAM>(column));
    return item.text();
}

std::wstring cellText(HWND list, int row, int column) {
    RemoteRecord<LVITEMW> item(list);
    item.record.iSubItem = column;
    item.record.pszText = item.textAddress();
    item.record.cchTextMax = characters;
    item.ask(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row));
    return item.text();
}

std::wstring panelText(const Part& panel) {
    const RemoteMemory memory(panel.handle, characters * sizeof(wchar_t));
    ask(panel.handle, SB_GETTEXTW, static_cast<WPARAM>(panel.panel), memory.address());
    return memory.text(0, characters);
}

RECT remoteRectangle(HWND window, UINT message, WPARAM wParam, const RECT& before) {
    RemoteMemory memory(window, sizeof(RECT));
    memory.write(&before, sizeof before);
    RECT rectangle{};
    if (ask(window, message, wParam, memory.address()) != 0) memory.read(&rectangle, sizeof rectangle);
    return rectangle;
}

/// Whoever made the tool gave it an owner and a number.
std::wstring toolTip(HWND owner, UINT_PTR number) {
    DWORD process = 0;
    GetWindowThreadProcessId(owner, &process);
    for (HWND tips = FindWindowExW(nullptr, nullptr, TOOLTIPS_CLASSW, nullptr); tips != nullptr;
         tips = FindWindowExW(nullptr, tips, TOOLTIPS_CLASSW, nullptr)) {
        DWORD other = 0;
        GetWindowThreadProcessId(tips, &other);
        if (other != process) continue;
        RemoteRecord<TTTOOLINFOW> tool(tips);
        tool.record.cbSize = sizeof tool.record;
        tool.record.hwnd = owner;
        tool.record.uId = number;
        tool.record.lpszText = tool.textAddress();
        tool.ask(tips, TTM_GETTEXTW, characters);
        if (std::wstring text = tool.text(); !text.empty()) return text;
    }
    return {};
}

} // namespace

ListContents contentsOf(HWND list) {
    ListContents contents;
    const HWND header = reinterpret_cast<HWND>(ask(list, LVM_GETHEADER));
    const int columns = static_cast<int>(ask(header, HDM_GETITEMCOUNT));
    for (int column = 0; column < columns; ++column) {
        contents.headers.push_back(headerText(header, column));
        contents.widths.push_back(
            static_cast<int>(ask(list, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column))));
    }
    const int rows = static_cast<int>(ask(list, LVM_GETITEMCOUNT));
    for (int row = 0; row < rows; ++row) {
        contents.rowToolTips.push_back(toolTip(list, static_cast<UINT_PTR>(row) + 1));
        std::vector<std::wstring>& cells = contents.rows.emplace_back();
        for (int column = 0; column < columns; ++column)
            cells.push_back(cellText(list, row, column));
    }
    contents.row = static_cast<int>(ask(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
    return contents;
}

RECT rowRectangle(HWND list, int row) {
    ask(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    RECT cell{};
    cell.left = LVIR_LABEL;
    return remoteRectangle(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), cell);
}

PanelContents contentsOf(const Part& panel) {
    const auto number = static_cast<WPARAM>(panel.panel);
    PanelContents contents;
    contents.text = panelText(panel);
    contents.toolTip = toolTip(panel.handle, number + 1);
    contents.rectangle = remoteRectangle(panel.handle, SB_GETRECT, number, {});
    return contents;
}

std::wstring toolTipOf(HWND control) {
    return toolTip(GetAncestor(control, GA_ROOT), reinterpret_cast<UINT_PTR>(control));
}

} // namespace probe
