#include "main_window.h"

#include "build_choices.h"
#include "platform/cRegistry.h"
#include "platform/cTray.h"

namespace unit {

CatalogFields fullCatalog() {
    CatalogFields fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::string row = std::to_string(i);
        fields[i] = {"Receiver " + row, "receiver" + row + ".bmp", "fw" + row + ".bin", "date " + row,
                     "note " + row};
        for (std::size_t k = 0; k < 5; ++k) {
            fields[i][5 + 2 * k] = "list" + row + "-" + std::to_string(k) + ".txt";
            fields[i][6 + 2 * k] = "list date " + row + "-" + std::to_string(k);
        }
    }
    return fields;
}

std::string fileOf(const CatalogFields& fields) {
    std::string text;
    for (const auto& line : fields) {
        for (std::size_t i = 0; i < line.size(); ++i)
            text += (i == 0 ? "" : ";") + line[i];
        text += "\r\n";
    }
    return text;
}

std::string serverFile(const std::string& name) {
    return std::string(base::updateServer) + "/orvanta/download/" + name;
}

std::string updatePage() {
    return "http://" + std::string(base::updatePage);
}

std::string sponsorPage() {
    return "http://" + std::string(base::webHost) + "/index_link.php?ref=usbtool";
}

std::string errorReport(base::ErrorNumber number, const std::string& subject, std::string advice) {
    if (advice.empty()) advice = base::advice(number);
    return "Laufzeitfehler '" + std::to_string(static_cast<int>(number)) + "':\r\n\r\n" +
           base::description(number) + (subject.empty() ? "" : ":\r\n" + subject) +
           "\r\n\r\nWas ist zu tun:\r\n" + advice + "\r\n\r\nDas Programm wird beendet.";
}

int errorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const base::RuntimeError& error) {
        return static_cast<int>(error.number());
    }
    return 0;
}

ProgramRun::ProgramRun() {
    fake::reset();
    computer().drives["C:\\"] = {platform::DriveFixed, 100 * GB, 50 * GB, "SYSTEM", "ext4"};
    plugIn("D:\\");
    computer().drives["Z:\\"] = {platform::DriveRemote, 100 * GB, 50 * GB, "", "ext4"};
    for (const char* picture : {"file.bmp", "nofile.bmp"})
        putFile("/opt/tool\\" + std::string(picture), "picture");
    for (int i = 0; i < 9; ++i)
        putFile("/opt/tool\\receiver" + std::to_string(i) + ".bmp", "picture");
    putFile("/opt/tool\\autorun.inf", "[autorun]\r\n");
    putFile("/opt/tool\\orvantastick.ico", "icon");
    computer().web[serverFile("usb-version.txt")] = base::programVersion;
    computer().web[serverFile("usb-news.csv")] = "one;two;three;four\r\n";
    computer().web[serverFile("usb-list.csv")] = fileOf(fullCatalog());
    for (const auto& line : fullCatalog()) {
        computer().web[serverFile(line[2] + ".txt")] = "firmware " + line[2];
        for (std::size_t k = 0; k < 5; ++k)
            computer().web[serverFile(line[5 + 2 * k] + ".txt")] = "channels " + line[5 + 2 * k];
    }
}

ProgramRun::~ProgramRun() {
    window_.reset();
    program.Tray.reset();
    fake::reset();
}

void ProgramRun::plugIn(const std::string& root, std::uint64_t total, std::uint64_t free) {
    computer().drives[root] = {platform::DriveRemovable, total, free, "STICK", "FAT32"};
    computer().files[root] = {"", platform::FileDirectory};
}

void ProgramRun::pullOut(const std::string& root) {
    computer().drives.erase(root);
    std::erase_if(computer().files, [&root](const auto& file) { return file.first.starts_with(root); });
}

void ProgramRun::putFile(const std::string& path, const std::string& contents) {
    computer().files[path] = {contents, platform::FileArchive};
}

void ProgramRun::start() {
    event([this] {
        window_ = std::make_unique<frmMain>(program);
        window_->show();
    });
}

void ProgramRun::startOnline() {
    start();
    tick();
    computer().journal.clear();
    computer().fetched.clear();
    computer().writes.clear();
}

void ProgramRun::click(toolkit::Button& button) {
    event([&button] { button.click(); });
}

void ProgramRun::click(toolkit::OptionButton& button) {
    event([&button] { button.click(); });
}

std::intptr_t ProgramRun::message(std::uint32_t number, std::uintptr_t wParam, std::intptr_t lParam) {
    std::intptr_t result = 0;
    event([&] { result = computer().procedure(fake::windowHandle, number, wParam, lParam); });
    return result;
}

void ProgramRun::deviceArrives() {
    message(platform::deviceChangeMessage, platform::deviceArrival);
}

void ProgramRun::deviceGoes() {
    message(platform::deviceChangeMessage, platform::deviceRemoveComplete);
}

void ProgramRun::tick() {
    event([this] { window().Timer1.tick(); });
}

void ProgramRun::close() {
    event([this] { window().closeRequested(); });
}

} // namespace unit
