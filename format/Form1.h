#pragma once

#include "format/drive_snapshot.h"
#include "platform/drive_identity.h"
#include "toolkit/button.h"
#include "toolkit/form.h"
#include "toolkit/label.h"
#include "toolkit/progress_bar.h"
#include "toolkit/timer.h"

#include <cstdint>
#include <string>

/// The assistant that formats a USB hard disk in three steps: without the disk, with it, and doing it. It
/// recognises the disk as the fixed drive that has come in between.
class Form1 : public toolkit::Form {
public:
    /// The main window, which the assistant shows again when it ends, must outlive it.
    explicit Form1(toolkit::Form& owner);

    toolkit::Label Label1{"Label1"};
    toolkit::Label Label2{"Label2"};
    toolkit::Label Label3{"Label3"};
    toolkit::Label lblDisk{"lblDisk"};           ///< which disk was found
    toolkit::ProgressBar prgFormat{"prgFormat"}; ///< while the formatter runs
    toolkit::Button Command1{"Command1"};
    toolkit::Button Command2{"Command2"};
    toolkit::Timer Timer1;

    void Form_Load();
    void Command1_Click();
    void Command2_Click();
    void Timer1_Timer();

private:
    enum State : std::int16_t { WithoutDisk = 0, WaitingForDisk = 1, DiskFound = 2 };

    void showFirstStep();
    void beginWaiting();
    void waitForDisk();
    bool isDiskThere() const;
    bool confirmFormat();
    void askAndFormat();
    void formatDrive();
    bool mayClose();
    void endAssistant();

    toolkit::Form& owner_;
    Module1::DriveSnapshot snapshot_;
    std::string drive_;            ///< the new disk, as in "E:"; empty until it is found
    platform::DriveIdentity disk_; ///< which one it is, whatever has its letter later
    std::int16_t state_ = WithoutDisk;
    bool asking_ = false;
    bool formatting_ = false;
    bool closed_ = false; ///< since the formatter was started
};
