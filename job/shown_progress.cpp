#include "job/shown_progress.h"

#include "online/transfer_progress.h"

namespace job {

ShownProgress::ShownProgress(window::MainWindow& window) : window_(window) {
    window_.prgUpdate.showBusy("Verbindung wird geprüft …");
}

ShownProgress::~ShownProgress() {
    if (!finished_) window_.prgUpdate.clear();
}

void ShownProgress::received(std::string_view name, const online::Received& file) {
    if (file.complete) return;
    if (!incomplete_.empty()) incomplete_ += ", ";
    incomplete_ += std::string(name) + " unvollständig (";
    incomplete_ += online::amount(file.contents.size(), file.announced) + ')';
}

void ShownProgress::writing() {
    window_.prgUpdate.showBusy("Wird auf den Stick geschrieben …");
}

void ShownProgress::verifying() {
    window_.prgUpdate.showBusy("Wird geprüft …");
}

void ShownProgress::finish(std::size_t files) {
    finished_ = true;
    if (incomplete_.empty())
        window_.showStickResult("Geprüft: " + std::to_string(files) + " Dateien stimmen überein.");
    else
        window_.prgUpdate.showText("Achtung: " + incomplete_ + ". Bitte das Update wiederholen.");
}

void ShownProgress::alert() {
    if (!incomplete_.empty()) window_.prgUpdate.alert();
}

} // namespace job
