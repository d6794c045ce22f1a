#include "widgets/frmAuswahl.h"

#include "toolkit/picture.h"

#include <utility>

namespace {

constexpr std::int32_t letterColumnWidth = 1800; // twips
constexpr std::int32_t labelColumnWidth = 2000;  // twips

} // namespace

frmAuswahl::frmAuswahl(std::vector<Candidate> candidates)
    : Form("frmAuswahl"), candidates_(std::move(candidates)) {
    for (Control* control : std::initializer_list<Control*>{&Label1, &ListView1, &cmdOK, &cmdCancel})
        add(*control);
    setCaption("USB Stick Tool");
    Label1.setCaption(
        "Es wurden mehrere Laufwerke identifiziert.     Bitte wählen Sie ihr gewünschtes Laufwerk aus.");
    cmdOK.setCaption("Verwenden");
    cmdCancel.setCaption("Abbruch");
    setDefaultButton(cmdOK);

    onLoad = [this] { Form_Load(); };
    onQueryUnload = [this] { ListView1.onHeaderNotify = {}; };
    ListView1.onItemClick = [this](std::size_t item) { selection_ = ListView1.items().at(item).front(); };
    ListView1.onDoubleClick = [this] { cmdOK_Click(); };
    cmdOK.onClick = [this] { cmdOK_Click(); };
    cmdCancel.onClick = [this] { unload(); };
}

void frmAuswahl::Form_Load() {
    listHelper_ = std::make_unique<cLV>();
    setIcon(toolkit::iconResource(toolkit::programIcon));
    ListView1.setView(toolkit::ListView::Report);
    ListView1.addColumn("Laufwerksbuchstabe", letterColumnWidth);
    ListView1.addColumn("Laufwerksbezeichnung", labelColumnWidth);
    listHelper_->FlatListView(ListView1, *this);

    for (const Candidate& candidate : candidates_) {
        const std::size_t row = ListView1.addItem(candidate.root);
        ListView1.setSubItem(row, 1, candidate.label);
        ListView1.setItemToolTip(row, candidate.facts);
    }
    if (!candidates_.empty()) selection_ = candidates_.front().root;
    ListView1.setSelected(0);

    // The columns keep their widths, wherever in the header it was tried.
    ListView1.onHeaderNotify = [](std::int32_t code) {
        return code == toolkit::ListView::HeaderItemChanging;
    };
}

void frmAuswahl::cmdOK_Click() {
    if (onChosen) onChosen(selection_);
    unload();
}
