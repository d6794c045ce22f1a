#include "online/download.h"

#include "base/runtime_error.h"
#include "online/silence_note.h"
#include "online/transfer_progress.h"
#include "platform/file_check.h"
#include "platform/files.h"
#include "platform/http.h"
#include "platform/number_text.h"
#include "toolkit/pump.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace online {

namespace {

constexpr std::string_view agent = "Qentra:INET";
constexpr std::size_t readSize = 2048;

/// What the status bar says during a download.
struct Progress {
    int downtype;
    std::string_view name;
    std::string_view text;
    std::string_view toolTip;
    std::int16_t readsPerDot;
};

/// Firmware files are large and channel lists are small, hence the different rhythms.
constexpr std::array<Progress, 2> progressKinds = {{
    {1, "Firmware", "Firmware-Update ", "Firmwareupdate läuft...", 20},
    {2, "Settings", "Settings-Update ", "Settingsupdate läuft...", 2},
}};

const Progress* progressOf(std::string_view downtype) {
    const double number = platform::numberFromText(downtype);
    for (const Progress& kind : progressKinds)
        if (number == kind.downtype) return &kind;
    return nullptr;
}

/// Only the dots set the counter back, so a file that is fetched without them comes to its end here.
void count(std::int16_t& reads) {
    if (reads == std::numeric_limits<std::int16_t>::max())
        throw base::RuntimeError(base::ErrorNumber::Overflow);
    ++reads;
}

/// Room for the whole file from the start: a text that grows holds its contents twice again and again. What a
/// server announces is not to be trusted, so there is a limit, beyond which it grows after all.
void makeRoom(std::string& result, const platform::InternetRequest& request) {
    constexpr std::uint64_t largest = 512ULL * 1024 * 1024;
    result.reserve(static_cast<std::size_t>(std::min(request.announcedLength().value_or(0), largest)));
}

void checkRoom(const std::optional<Destination>& destination, std::uint64_t length) {
    if (destination && length > destination->room)
        throw base::RuntimeError(base::ErrorNumber::DiskFull, destination->path);
}

/// Where a download shows its progress, and how.
class ProgressDisplay {
public:
    ProgressDisplay(const Display& display, const Progress& kind)
        : panel_(display.panel),
          kind_(kind),
          text_(std::string(kind.text) + "."),
          progress_(display.bar, kind.name) {}

    /// Shows the dots up to now; every so many reads there is one more from the next read on.
    void show(std::int16_t& reads, std::uint64_t bytes, const platform::InternetRequest& request) {
        if (!isShown()) panel_.setGrowingText(text_, kind_.text.size());
        panel_.setEnabled(true);
        panel_.setToolTip(kind_.toolTip);
        if (progress_.isDue()) progress_.received(bytes, request.announcedLength());
        if (reads != kind_.readsPerDot) return;
        text_ += '.';
        reads = 0;
    }

private:
    /// Without a look at every dot: there are thousands, and it is asked after every read.
    bool isShown() const {
        return panel_.text().size() == text_.size() && panel_.text().starts_with(kind_.text);
    }

    toolkit::StatusPanel& panel_;
    const Progress& kind_;
    std::string text_;
    TransferProgress progress_;
};

Received download(toolkit::ProgressBar& bar, std::string_view URL, std::int32_t OpenType,
                  const std::optional<Destination>& destination, std::optional<ProgressDisplay> display) {
    std::int16_t reads = 0;
    std::string result;

    platform::InternetSession session(agent, OpenType);
    platform::InternetRequest request(session, URL, platform::internetFlagReload);
    SilenceNote note(bar, request);
    std::array<char, readSize> buffer{};
    for (;;) {
        count(reads);
        const std::size_t length = request.read(buffer);
        note.withdraw();
        if (result.empty()) checkRoom(destination, request.announcedLength().value_or(0));
        if (length == 0) break;
        if (result.empty()) makeRoom(result, request);
        result.append(buffer.data(), length);
        checkRoom(destination, result.size());
        if (!display) continue;
        display->show(reads, result.size(), request);
        toolkit::DoEvents();
    }
    return {std::move(result), request.complete(), request.announcedLength()};
}

Received download(const Display& display, std::string_view URL, std::string_view downtype,
                  std::int32_t OpenType, const std::optional<Destination>& destination) {
    const Progress* const progress = progressOf(downtype);
    std::optional<ProgressDisplay> shown;
    if (progress != nullptr) shown.emplace(display, *progress);
    Received received = download(display.bar, URL, OpenType, destination, std::move(shown));
    if (received.isCut() && progress == nullptr) received.contents.clear();
    return received;
}

} // namespace

std::string OpenURL(const Display& display, std::string_view URL, std::string_view downtype,
                    std::int32_t OpenType, const std::optional<Destination>& destination) {
    return download(display, URL, downtype, OpenType, destination).contents;
}

Received OpenFile(const Display& display, std::string_view URL, std::string_view downtype,
                  const Destination& destination) {
    return download(display, URL, downtype, 0, destination);
}

std::optional<std::string> OpenTextFile(toolkit::ProgressBar& bar, std::string_view URL) {
    Received result = download(bar, URL, 0, {}, {});
    if (result.isCut()) return std::nullopt;
    return std::move(result.contents);
}

bool FileExists(std::string_view Path) {
    const auto attributes = platform::fileAttributes(Path);
    return attributes && (*attributes & (platform::FileDirectory | platform::FileVolume)) == 0;
}

std::string ReadFile(std::string_view Path) {
    std::string contents;
    if (platform::fileLength(Path).value_or(0) != 0)
        platform::check(platform::readWholeFile(Path, contents), Path);
    return contents;
}

bool WriteFile(std::string_view Path, std::string_view Text, const platform::DriveIdentity& Drive) {
    if (FileExists(Path) && platform::fileLength(Path) == Text.size()) {
        const platform::FileResult same = platform::compareFile(Path, Text, Drive);
        if (same == platform::FileResult::Ok) return false;
        // What cannot be read, or has gone, may still be written.
        const bool mayBeWritten =
            same == platform::FileResult::DeviceIo || same == platform::FileResult::FileNotFound;
        if (!mayBeWritten) platform::check(same, Path);
    }
    platform::check(platform::writeWholeFile(Path, Text, Drive), Path);
    return true;
}

} // namespace online
