// The main window on a computer in memory, for every test that needs the whole of it.
#pragma once

#include "fake.h"
#include "title.h"

#include "app/frmMain.h"
#include "app/program.h"
#include "base/runtime_error.h"
#include "drive/cDrive.h"
#include "toolkit/dispatch.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>

namespace unit {

constexpr std::uint64_t MB = 1024 * 1024;
constexpr std::uint64_t GB = 1024 * MB;

/// Fields of the receiver catalog, by line.
using CatalogFields = std::array<std::array<std::string, 15>, 9>;

/// A catalog in which everything can be had: receiver i has the firmware "fw<i>.bin" of "date <i>" and the
/// channel lists "list<i>-<k>.txt" of "list date <i>-<k>".
CatalogFields fullCatalog();

/// The catalog as the server's file.
std::string fileOf(const CatalogFields& fields);

/// Addresses as they are built in: of a file on the update server, of the page that offers the program, and
/// of the distributor's.
std::string serverFile(const std::string& name);
std::string updatePage();
std::string sponsorPage();

/// Text of an error report.
/// With the advice that belongs to the number, unless another one is given.
std::string errorReport(base::ErrorNumber number, const std::string& subject = {}, std::string advice = {});

/// Number of a base::RuntimeError that the call throws; 0 when it throws none.
int errorOf(const std::function<void()>& call);

/// The program on a computer with the drives `C:` (fixed), `D:` (a stick of 4 GB, 1 GB of it used, with a
/// folder for its root) and `Z:`; the pictures and the two stick files in the program folder; a server with
/// all its files.
class ProgramRun {
public:
    ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;
    ~ProgramRun();

    static fake::Computer& computer() { return fake::computer(); }

    /// Adds a removable drive, with a folder for its root.
    static void plugIn(const std::string& root, std::uint64_t total = 4 * GB, std::uint64_t free = 3 * GB);
    static void pullOut(const std::string& root);
    static void putFile(const std::string& path, const std::string& contents);

    /// The program starts: the main window loads and shows.
    void start();
    /// Starts and lets the update check run.
    void startOnline();

    // Events, as the backend delivers them.
    static void event(const std::function<void()>& handler) { toolkit::dispatch(handler); }
    static void click(toolkit::Button& button);
    static void click(toolkit::OptionButton& button);
    static std::intptr_t message(std::uint32_t number, std::uintptr_t wParam = 0, std::intptr_t lParam = 0);
    static void deviceArrives();
    static void deviceGoes();
    void tick();
    void close();

    frmMain& window() { return *window_; }
    cDrive& drive() { return *program.Drive; }

    /// The program has ended, and with this status.
    static bool ended() { return computer().quits > 0; }
    static int status() { return toolkit::ending().status; }

    app::Program program;

private:
    std::unique_ptr<frmMain> window_;
};

/// A test in one run of the program.
class MainWindow : public testing::Test, protected ProgramRun {};

} // namespace unit
