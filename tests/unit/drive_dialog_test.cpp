// The choice among several sticks.

#include "widgets/frmAuswahl.h"

#include "main_window.h"

using toolkit::ListView;
using unit::MainWindow;

class DriveDialog : public MainWindow {
protected:
    DriveDialog() {
        plugIn("E:\\");
        plugIn("F:\\");
        computer().drives["D:\\"].label = "FIRST";
        computer().drives["E:\\"].label = "SECOND";
        computer().drives["F:\\"].label = "";
        computer().onModal = [this](toolkit::Form& form) {
            ++shown;
            auto& dialog = dynamic_cast<frmAuswahl&>(form);
            const auto does = user; // which may be another one when it returns
            if (does) event([&] { does(dialog); });
        };
    }

    /// The program starts without an answer in its dialog; in the next one the user does that.
    void search(std::function<void(frmAuswahl&)> does) {
        start();
        shown = 0;
        computer().windows.clear();
        user = std::move(does);
        click(window().cmdSearch);
    }

    std::string chosen() { return window().lblLW.caption(); }

    std::function<void(frmAuswahl&)> user;
    int shown = 0;
};

TEST_F(DriveDialog, ShowsTheSticksInTheirOrder) {
    std::vector<ListView::Item> rows;
    search([&rows](frmAuswahl& dialog) { rows = dialog.ListView1.items(); });
    EXPECT_EQ(rows, (std::vector<ListView::Item>{{"D:\\", "FIRST"}, {"E:\\", "SECOND"}, {"F:\\", ""}}));
    EXPECT_EQ(computer().windows.front(), "modal frmAuswahl");
}

TEST_F(DriveDialog, TellsSticksApartBySizeAndFileSystem) {
    computer().drives["D:\\"].fileSystem = "FAT32";
    computer().drives["E:\\"].fileSystem = "exFAT";
    computer().drives["E:\\"].total = 512 * unit::MB;
    computer().drives["F:\\"].fileSystem = "";
    std::vector<std::string> tips;
    search([&tips](frmAuswahl& dialog) {
        for (std::size_t row = 0; row < dialog.ListView1.items().size(); ++row)
            tips.push_back(dialog.ListView1.itemToolTip(row));
    });
    EXPECT_EQ(tips, (std::vector<std::string>{"Größe: 4,00 GB, Dateisystem: FAT32",
                                              "Größe: 512 MB, Dateisystem: exFAT", "Größe: 4,00 GB"}));
}

TEST_F(DriveDialog, HasItsTexts) {
    search([](frmAuswahl& dialog) {
        EXPECT_EQ(dialog.caption(), "USB Stick Tool");
        EXPECT_EQ(fake::nameOf(dialog.icon()), "icon 103");
        EXPECT_EQ(dialog.Label1.caption(),
                  "Es wurden mehrere Laufwerke identifiziert.     Bitte wählen Sie ihr "
                  "gewünschtes Laufwerk aus.");
        EXPECT_EQ(dialog.cmdOK.caption(), "Verwenden");
        EXPECT_EQ(dialog.cmdCancel.caption(), "Abbruch");
    });
    EXPECT_EQ(shown, 1);
}

TEST_F(DriveDialog, HasTwoColumnsUnderAFlatHeader) {
    search([](frmAuswahl& dialog) {
        const ListView& list = dialog.ListView1;
        EXPECT_EQ(list.view(), ListView::Report);
        ASSERT_EQ(list.columns().size(), 2U);
        EXPECT_EQ(list.columns()[0].header, "Laufwerksbuchstabe");
        EXPECT_EQ(list.columns()[0].width, 1800);
        EXPECT_EQ(list.columns()[1].header, "Laufwerksbezeichnung");
        EXPECT_EQ(list.columns()[1].width, 2000);
        EXPECT_EQ(list.headerStyle() & ListView::HeaderButtons, 0U);
        EXPECT_EQ(list.selected(), 0);
    });
    EXPECT_EQ(shown, 1);
}

TEST_F(DriveDialog, RefusesEveryChangeOfTheHeaderAsLongAsItIsOpen) {
    search([](frmAuswahl& dialog) {
        EXPECT_TRUE(dialog.ListView1.headerNotify(ListView::HeaderItemChanging));
        EXPECT_FALSE(dialog.ListView1.headerNotify(-301));
        EXPECT_FALSE(dialog.ListView1.headerNotify(-320));
        dialog.closeRequested();
        EXPECT_FALSE(dialog.ListView1.headerNotify(ListView::HeaderItemChanging));
    });
    EXPECT_EQ(shown, 1);
}

TEST_F(DriveDialog, WithoutAClickTheFirstOneIsMeant) {
    search([this](frmAuswahl& dialog) {
        click(dialog.cmdOK);
        EXPECT_EQ(chosen(), "D:\\") << "before the dialog has closed";
        EXPECT_EQ(drive().p_GetDL_Count(), 1);
    });
    EXPECT_EQ(chosen(), "D:\\");
    EXPECT_EQ(computer().windows, (std::vector<std::string>{"modal frmAuswahl", "close frmAuswahl"}));
}

TEST_F(DriveDialog, AClickChooses) {
    search([](frmAuswahl& dialog) {
        dialog.ListView1.click(2);
        dialog.ListView1.click(1);
        EXPECT_TRUE(dialog.loaded());
        click(dialog.cmdOK);
    });
    EXPECT_EQ(chosen(), "E:\\");
    EXPECT_EQ(window().txtDT_Cap.text(), "SECOND");
}

TEST_F(DriveDialog, ADoubleClickChoosesAndConfirms) {
    search([](frmAuswahl& dialog) {
        dialog.ListView1.click(2);
        dialog.ListView1.doubleClick();
        EXPECT_FALSE(dialog.loaded());
    });
    EXPECT_EQ(chosen(), "F:\\");
}

TEST_F(DriveDialog, CancelledItChangesNothingAndTheSearchTakesTheFirst) {
    for (const bool closeBox : {false, true}) {
        search([this, closeBox](frmAuswahl& dialog) {
            dialog.ListView1.click(1);
            window().lblLW.setCaption("before");
            if (closeBox)
                dialog.closeRequested();
            else
                click(dialog.cmdCancel);
            EXPECT_EQ(chosen(), "before");
            EXPECT_EQ(drive().p_GetDL_Count(), 3);
        });
        EXPECT_EQ(chosen(), "D:\\");
        EXPECT_EQ(drive().p_GetDT_Count(), 3);
    }
}

TEST_F(DriveDialog, SticksThatGoWhileItAsksAreNotShown) {
    for (const bool cancelled : {false, true}) {
        search([cancelled](frmAuswahl& dialog) {
            for (const char* root : {"D:\\", "E:\\", "F:\\"})
                pullOut(root);
            click(cancelled ? dialog.cmdCancel : dialog.cmdOK);
        });
        EXPECT_EQ(window().StatusBar1.panel(1).text(), "No Stick");
        EXPECT_EQ(window().cmdChoose.caption(), "USB Stick einstecken");
        EXPECT_FALSE(window().cmdChoose.enabled());
        for (const char* root : {"D:\\", "E:\\", "F:\\"})
            plugIn(root);
    }
}

TEST_F(DriveDialog, EveryTimeItIsANewOne) {
    search([](frmAuswahl& dialog) {
        dialog.ListView1.click(1);
        click(dialog.cmdOK);
    });
    user = [](frmAuswahl& dialog) {
        EXPECT_EQ(dialog.ListView1.selected(), 0);
        EXPECT_EQ(dialog.ListView1.items().size(), 3U);
        click(dialog.cmdOK);
    };
    click(window().cmdSearch);
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(chosen(), "D:\\");
}

TEST_F(DriveDialog, AsksAlreadyWhileTheProgramLoads) {
    user = [](frmAuswahl& dialog) {
        dialog.ListView1.click(1);
        click(dialog.cmdOK);
    };
    start();
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(chosen(), "E:\\");
    EXPECT_EQ(computer().windows,
              (std::vector<std::string>{"modal frmAuswahl", "close frmAuswahl", "open frmMain"}));
}

TEST_F(DriveDialog, AnArrivalInsideOfItAsksAgainAndBothAnswersCount) {
    start();
    event([this] { window().chkAuto.setValue(1); });
    shown = 0;
    user = [this](frmAuswahl& outer) {
        user = [](frmAuswahl& inner) {
            EXPECT_EQ(inner.ListView1.items().size(), 4U);
            inner.ListView1.click(3);
            click(inner.cmdOK);
        };
        plugIn("G:\\");
        deviceArrives();
        EXPECT_EQ(chosen(), "G:\\");
        outer.ListView1.click(1);
        click(outer.cmdOK);
    };
    click(window().cmdSearch);
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(chosen(), "E:\\");
    EXPECT_FALSE(ended());
}

TEST_F(DriveDialog, CancelledAfterAnArrivalTheOtherChoiceStays) {
    start();
    event([this] { window().chkAuto.setValue(1); });
    user = [this](frmAuswahl& outer) {
        user = [](frmAuswahl& inner) {
            inner.ListView1.click(2);
            click(inner.cmdOK);
        };
        deviceArrives();
        click(outer.cmdCancel);
    };
    click(window().cmdSearch);
    EXPECT_EQ(chosen(), "F:\\");
}

TEST_F(DriveDialog, ClosingTheMainWindowInsideOfItTouchesNothing) {
    search([this](frmAuswahl&) { close(); });
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 0);
}

TEST_F(DriveDialog, AnErrorInItsAnswerIsReported) {
    search([](frmAuswahl& dialog) {
        computer().files.erase("/opt/tool\\file.bmp");
        click(dialog.cmdOK);
    });
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 1);
    EXPECT_EQ(computer().messages.back().text,
              unit::errorReport(base::ErrorNumber::FileNotFound, "/opt/tool\\file.bmp"));
}
