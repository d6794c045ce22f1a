#include "widgets/frmAuswahl.h"

#include "drive/cDrive.h"
#include "toolkit/picture.h"

namespace {

constexpr std::int32_t letterColumnWidth = 1800; // twips
constexpr std::int32_t labelColumnWidth = 2000;  // twips

} // namespace

frmAuswahl::frmAuswahl(app::Program& program) : Form("frmAuswahl"), program_(program) {
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
    cDrive& drive = *program_.Drive;
    listHelper_ = std::make_unique<cLV>();
    setIcon(toolkit::iconResource(toolkit::programIcon));
    ListView1.setView(toolkit::ListView::Report);
    ListView1.addColumn("Laufwerksbuchstabe", letterColumnWidth);
    ListView1.addColumn("Laufwerksbezeichnung", labelColumnWidth);
    listHelper_->FlatListView(ListView1, *this);

    for (std::int32_t i = 0; i < drive.p_GetDL_Count(); ++i) {
        const std::string root = drive.p_GetDriveLetters(std::to_string(i));
        ListView1.setSubItem(ListView1.addItem(root), 1, drive.mp_GetDriveName(root));
    }
    selection_ = drive.p_GetDriveLetters("0");
    ListView1.setSelected(0);

    // The columns keep their widths, wherever in the header it was tried.
    ListView1.onHeaderNotify = [](std::int32_t code) {
        return code == toolkit::ListView::HeaderItemChanging;
    };
}

void frmAuswahl::cmdOK_Click() {
    program_.Drive->ChooseUSB_Info(selection_);
    unload();
}
