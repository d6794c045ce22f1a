#include "toolkit/qt/german_texts.h"

#include <array>
#include <string_view>

namespace toolkit::qt {

namespace {

struct Entry {
    std::string_view context;
    std::string_view source;
    const char* german;
};

constexpr std::array entries = {
    Entry{"QLineEdit", "&Undo", "&Rückgängig"},
    Entry{"QLineEdit", "&Redo", "&Wiederherstellen"},
    Entry{"QLineEdit", "Cu&t", "&Ausschneiden"},
    Entry{"QLineEdit", "&Copy", "&Kopieren"},
    Entry{"QLineEdit", "&Paste", "&Einfügen"},
    Entry{"QLineEdit", "Delete", "Löschen"},
    Entry{"QLineEdit", "Select All", "Alles auswählen"},
    Entry{"QScrollBar", "Scroll here", "Hierher verschieben"},
    Entry{"QScrollBar", "Top", "Anfang"},
    Entry{"QScrollBar", "Bottom", "Ende"},
    Entry{"QScrollBar", "Page up", "Eine Seite nach oben"},
    Entry{"QScrollBar", "Page down", "Eine Seite nach unten"},
    Entry{"QScrollBar", "Scroll up", "Nach oben"},
    Entry{"QScrollBar", "Scroll down", "Nach unten"},
    Entry{"QScrollBar", "Left edge", "Linker Rand"},
    Entry{"QScrollBar", "Right edge", "Rechter Rand"},
    Entry{"QScrollBar", "Page left", "Eine Seite nach links"},
    Entry{"QScrollBar", "Page right", "Eine Seite nach rechts"},
    Entry{"QScrollBar", "Scroll left", "Nach links"},
    Entry{"QScrollBar", "Scroll right", "Nach rechts"},
    Entry{"QShortcut", "Ctrl", "Strg"},
    Entry{"QShortcut", "Shift", "Umschalt"},
};

} // namespace

QString GermanTexts::translate(const char* context, const char* source, const char*, int) const {
    for (const Entry& entry : entries)
        if (entry.context == context && entry.source == source) return QString::fromUtf8(entry.german);
    return {};
}

} // namespace toolkit::qt
