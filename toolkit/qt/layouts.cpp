#include "toolkit/qt/layouts.h"

#include "ui_Form1.h"
#include "ui_frmAuswahl.h"
#include "ui_frmMain.h"

#include <array>

namespace toolkit::qt {

namespace {

template <typename Layout>
void setUp(QWidget& window) {
    Layout().setupUi(&window);
}

struct Entry {
    std::string_view name;
    void (*setUp)(QWidget&);
};

constexpr std::array layouts = {
    Entry{"frmMain", setUp<Ui::frmMain>},
    Entry{"frmAuswahl", setUp<Ui::frmAuswahl>},
    Entry{"Form1", setUp<Ui::Form1>},
};

} // namespace

bool setUpLayout(std::string_view name, FormWindow& window) {
    for (const Entry& entry : layouts) {
        if (entry.name != name) continue;
        entry.setUp(window);
        return true;
    }
    return false;
}

} // namespace toolkit::qt
