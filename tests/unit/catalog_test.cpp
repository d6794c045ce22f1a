// The receiver catalog and the option buttons it drives.

#include "main_window.h"

#include "online/catalog.h"

#include <algorithm>

using namespace online;
using unit::CatalogFields;
using unit::errorOf;
using unit::fullCatalog;
using unit::MainWindow;
using window::Catalog;
using window::element;

class CatalogTest : public MainWindow {
protected:
    void load(const CatalogFields& fields) { loadText(unit::fileOf(fields)); }

    void loadText(const std::string& text) {
        start();
        event([this, text] { LoadCatalog(window(), text); });
    }

    void expectOutOfRange(const std::string& where) {
        ASSERT_EQ(computer().messages.size(), 1U);
        EXPECT_TRUE(computer().messages[0].text.starts_with("Laufzeitfehler '9':"))
            << computer().messages[0].text;
        EXPECT_NE(computer().messages[0].text.find(":\r\n" + where + "\r\n"), std::string::npos)
            << computer().messages[0].text;
        EXPECT_NE(computer().messages[0].text.find("muss der Händler"), std::string::npos);
        EXPECT_EQ(status(), 1);
    }

    /// "x" for enabled, "-" for disabled, in upper case ("X", "=") when selected.
    template <typename Options>
    static std::string look(Options& options) {
        std::string text;
        for (std::size_t i = 0; i < options.size(); ++i)
            text +=
                options[i].enabled() ? (options[i].value() ? 'X' : 'x') : (options[i].value() ? '=' : '-');
        return text;
    }
    std::string receivers() { return look(window().Firm_Option); }
    std::string kinds() { return look(window().Sett_Option); }
    std::string picture() { return fake::nameOf(window().Image1.picture()); }

    /// A catalog without the firmware of these receivers.
    static CatalogFields without(std::initializer_list<std::size_t> rows) {
        CatalogFields fields = fullCatalog();
        for (const std::size_t row : rows)
            fields[row][2].clear();
        return fields;
    }
};

TEST_F(CatalogTest, EverythingIsDisabledBeforeItIsLoaded) {
    start();
    EXPECT_EQ(receivers(), "---------");
    EXPECT_EQ(kinds(), "-----");
}

TEST_F(CatalogTest, StoresEveryField) {
    load(fullCatalog());
    const Catalog& catalog = window().Receivers;
    for (std::int16_t i = 0; i < 9; ++i) {
        const std::string row = std::to_string(i);
        EXPECT_EQ(element(catalog.ReceiverName, i), "Receiver " + row);
        EXPECT_EQ(element(catalog.ReceiverPicture, i), "receiver" + row + ".bmp");
        EXPECT_EQ(element(catalog.FirmwareFile, i), "fw" + row + ".bin");
        EXPECT_EQ(element(catalog.FirmwareDate, i), "date " + row);
        EXPECT_EQ(element(catalog.FirmwareNote, i), "note " + row);
        for (std::int16_t k = 0; k < 5; ++k) {
            const std::string list = row + "-" + std::to_string(k);
            EXPECT_EQ(element(catalog.SettingsFile, i, k), "list" + list + ".txt");
            EXPECT_EQ(element(catalog.SettingsDate, i, k), "list date " + list);
            EXPECT_EQ(catalog.SettingsFile[static_cast<std::size_t>(i + 9 * k)], "list" + list + ".txt");
        }
    }
}

TEST_F(CatalogTest, PreselectsTheFirstReceiverAndChannelList) {
    load(fullCatalog());
    EXPECT_EQ(receivers(), "Xxxxxxxxx");
    EXPECT_EQ(kinds(), "Xxxxx");
    EXPECT_EQ(window().SelectedFirmware, 0);
    EXPECT_EQ(window().SelectedSettings, 0);
    EXPECT_EQ(picture(), "/opt/tool\\receiver0.bmp");
    EXPECT_EQ(window().lbl_firmstand.caption(), "Stand: date 0");
    EXPECT_EQ(window().lbl_Aenderung.caption(), "note 0");
    EXPECT_EQ(window().lbl_settstand.caption(), "Stand: list date 0-0");
    EXPECT_EQ(window().lbl_reihenfolge.caption(), window().ChannelOrder[0]);
}

TEST_F(CatalogTest, ReceiversWithoutFirmwareStayDisabled) {
    load(without({0, 1, 4}));
    EXPECT_EQ(receivers(), "--Xx-xxxx");
    EXPECT_EQ(window().SelectedFirmware, 2);
    EXPECT_EQ(picture(), "/opt/tool\\receiver2.bmp");
}

TEST_F(CatalogTest, PreselectsTheFirstChannelListThatThereIs) {
    CatalogFields fields = fullCatalog();
    fields[0][5].clear();
    fields[0][11].clear();
    load(fields);
    EXPECT_EQ(kinds(), "-Xx-x");
    EXPECT_EQ(window().SelectedSettings, 1);
    EXPECT_EQ(window().lbl_settstand.caption(), "Stand: list date 0-1");
    EXPECT_TRUE(window().lbl_reihenfolge.caption().starts_with("1. ARD      6. SAT 1\r\n"));
}

TEST_F(CatalogTest, AReceiverWithoutChannelListsSelectsNone) {
    CatalogFields fields = fullCatalog();
    for (const std::size_t field : {5U, 7U, 9U, 11U, 13U})
        fields[0][field].clear();
    load(fields);
    EXPECT_EQ(kinds(), "-----");
    EXPECT_EQ(window().SelectedSettings, -1);
    EXPECT_EQ(window().lbl_settstand.caption(), "");
    EXPECT_EQ(window().lbl_reihenfolge.caption(), "");
}

TEST_F(CatalogTest, NoFirmwareAtAllSelectsNothing) {
    load(without({0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(receivers(), "---------");
    EXPECT_EQ(window().SelectedFirmware, -1);
    EXPECT_EQ(window().SelectedSettings, -1);
    EXPECT_EQ(window().lbl_firmstand.caption(), "");
    EXPECT_EQ(window().lbl_settstand.caption(), "");
    EXPECT_EQ(picture(), "");
    EXPECT_FALSE(ended());
}

TEST_F(CatalogTest, ALastLineWithoutALineEndIsRead) {
    std::string text = unit::fileOf(fullCatalog());
    text.resize(text.size() - 2);
    loadText(text);
    EXPECT_EQ(window().Receivers.FirmwareFile[8], "fw8.bin");
    EXPECT_EQ(receivers(), "Xxxxxxxxx");
}

TEST_F(CatalogTest, ATenthLineAndASixteenthFieldAreIgnored) {
    CatalogFields fields = fullCatalog();
    for (auto& line : fields)
        line[14] += ";more;and more";
    loadText(unit::fileOf(fields) + "broken");
    EXPECT_FALSE(ended());
    EXPECT_EQ(window().Receivers.SettingsDate[8 + 9 * 4], "list date 8-4");
}

TEST_F(CatalogTest, EightLinesAreTheEnd) {
    std::string text = unit::fileOf(fullCatalog());
    text.resize(text.rfind("Receiver 8") - 2);
    loadText(text);
    expectOutOfRange("usb-list.csv, Zeile 9 fehlt");
}

TEST_F(CatalogTest, FourteenFieldsAreTheEnd) {
    std::string text = unit::fileOf(fullCatalog());
    text.erase(text.find(";list date 3-4"), std::string(";list date 3-4").size());
    loadText(text);
    expectOutOfRange("usb-list.csv, Zeile 4, Feld 15 fehlt");
}

TEST_F(CatalogTest, AnEmptyCatalogIsTheEnd) {
    loadText("");
    expectOutOfRange("usb-list.csv, Zeile 1, Feld 2 fehlt");
}

TEST_F(CatalogTest, LinesEndInBothCharacters) {
    std::string text = unit::fileOf(fullCatalog());
    std::erase(text, '\r');
    loadText(text);
    expectOutOfRange("usb-list.csv, Zeile 2 fehlt");
}

TEST_F(CatalogTest, IsInTheAnsiCodePage) {
    CatalogFields fields = fullCatalog();
    fields[0][4] = "Men\xFC f\xFCr \x80";
    load(fields);
    EXPECT_EQ(window().lbl_Aenderung.caption(), "Menü für €");
}

TEST_F(CatalogTest, AMissingPictureOfTheFirstReceiverIsTheEnd) {
    computer().files.erase("/opt/tool\\receiver0.bmp");
    load(fullCatalog());
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              unit::errorReport(base::ErrorNumber::FileNotFound, "/opt/tool\\receiver0.bmp"));
}

TEST_F(CatalogTest, OtherPicturesAreLoadedWhenTheirReceiverIsChosen) {
    computer().files["/opt/tool\\receiver5.bmp"].contents = "no picture";
    load(fullCatalog());
    EXPECT_FALSE(ended());
    click(window().Firm_Option[5]);
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              unit::errorReport(base::ErrorNumber::InvalidPicture, "/opt/tool\\receiver5.bmp"));
}

TEST_F(CatalogTest, ChoosingAReceiverShowsItAndKeepsTheKind) {
    load(fullCatalog());
    click(window().Sett_Option[3]);
    click(window().Firm_Option[7]);
    EXPECT_EQ(receivers(), "xxxxxxxXx");
    EXPECT_EQ(kinds(), "xxxXx");
    EXPECT_EQ(window().SelectedFirmware, 7);
    EXPECT_EQ(window().SelectedSettings, 3);
    EXPECT_EQ(picture(), "/opt/tool\\receiver7.bmp");
    EXPECT_EQ(window().lbl_firmstand.caption(), "Stand: date 7");
    EXPECT_EQ(window().lbl_Aenderung.caption(), "note 7");
    EXPECT_EQ(window().lbl_settstand.caption(), "Stand: list date 0-3")
        << "only a choice of the kind renews it";
}

TEST_F(CatalogTest, AReceiverThatLacksTheKindLosesItAndKeepsTheOrderInView) {
    CatalogFields fields = fullCatalog();
    fields[1][9].clear();
    load(fields);
    click(window().Sett_Option[2]);
    click(window().Firm_Option[1]);
    EXPECT_EQ(kinds(), "xx-xx");
    EXPECT_EQ(window().SelectedSettings, -1);
    EXPECT_EQ(window().lbl_settstand.caption(), "Stand: Nicht verfügbar");
    EXPECT_EQ(window().lbl_reihenfolge.caption(), window().ChannelOrder[2]);
}

TEST_F(CatalogTest, AKindThatComesBackIsNotSelected) {
    CatalogFields fields = fullCatalog();
    fields[1][5].clear();
    load(fields);
    click(window().Firm_Option[1]);
    click(window().Firm_Option[2]);
    EXPECT_EQ(kinds(), "xxxxx");
    EXPECT_EQ(window().SelectedSettings, -1);
    EXPECT_EQ(window().lbl_settstand.caption(), "Stand: Nicht verfügbar");
    click(window().Sett_Option[0]);
    EXPECT_EQ(kinds(), "Xxxxx");
    EXPECT_EQ(window().lbl_settstand.caption(), "Stand: list date 2-0");
}

TEST_F(CatalogTest, ChoosingAKindShowsItsDateAndOrder) {
    load(fullCatalog());
    click(window().Firm_Option[4]);
    for (const std::size_t k : {1U, 2U, 3U, 4U, 0U}) {
        click(window().Sett_Option[k]);
        EXPECT_EQ(window().SelectedSettings, static_cast<std::int16_t>(k));
        EXPECT_EQ(window().lbl_settstand.caption(), "Stand: list date 4-" + std::to_string(k));
        EXPECT_EQ(window().lbl_reihenfolge.caption(), window().ChannelOrder[k]);
    }
}

TEST_F(CatalogTest, DisabledButtonsCannotBeChosen) {
    load(without({3}));
    click(window().Firm_Option[3]);
    EXPECT_EQ(window().SelectedFirmware, 0);
}

TEST(Elements, OutsideOfTheirBoundsAreAnError) {
    const Catalog catalog;
    EXPECT_EQ(errorOf([&] { element(catalog.ReceiverName, -1); }), 9);
    EXPECT_EQ(errorOf([&] { element(catalog.ReceiverName, 9); }), 9);
    EXPECT_EQ(errorOf([&] { element(catalog.SettingsFile, 9, 0); }), 9);
    EXPECT_EQ(errorOf([&] { element(catalog.SettingsFile, -1, 0); }), 9);
    EXPECT_EQ(errorOf([&] { element(catalog.SettingsFile, 0, -1); }), 9);
    EXPECT_EQ(errorOf([&] { element(catalog.SettingsFile, 0, 5); }), 9);
    EXPECT_EQ(errorOf([&] { element(catalog.SettingsFile, 8, 4); }), 0);
}

TEST(Lines, AreSeparatedByBothCharacters) {
    EXPECT_EQ(GetLine("a\r\nb\nc\rd\r\n", 0), "a");
    EXPECT_EQ(GetLine("a\r\nb\nc\rd\r\n", 1), "b\nc\rd");
    EXPECT_EQ(GetLine("a\r\nb\r\n", 2), "");
    EXPECT_EQ(GetLine("", 0), "");
    EXPECT_EQ(errorOf([] { GetLine("a\r\nb", 2); }), 9);
}

TEST(Fields, AreSeparatedBySemicolonsOnly) {
    EXPECT_EQ(fieldOf("a;\"b;c\"", 1), "\"b");
    EXPECT_EQ(fieldOf("a;;", 2), "");
    EXPECT_EQ(errorOf([] { fieldOf("a;b", 2); }), 9);
}
