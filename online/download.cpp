#include "online/download.h"

#include "base/runtime_error.h"
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
    std::string_view text;
    std::string_view toolTip;
    std::int16_t readsPerDot;
};

/// Firmware files are large and channel lists are small, hence the different rhythms.
constexpr std::array<Progress, 2> progressKinds = {{
    {1, "Firmware-Update ", "Firmwareupdate läuft...", 20},
    {2, "Settings-Update ", "Settingsupdate läuft...", 2},
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

/// What a download came to.
struct Download {
    std::string contents;
    bool cut = false; ///< some of the file had come, or been announced, and then no more
};

/// Where a download shows its progress, and how.
struct ProgressDisplay {
    toolkit::StatusPanel& panel;
    const Progress& kind;
    std::string text = std::string(kind.text) + ".";

    /// Shows the dots up to now; every so many reads there is one more from the next read on.
    void show(std::int16_t& reads) {
        panel.setText(text);
        panel.setEnabled(true);
        panel.setToolTip(kind.toolTip);
        if (reads != kind.readsPerDot) return;
        text += '.';
        reads = 0;
    }
};

Download download(std::string_view URL, std::int32_t OpenType, const std::optional<Destination>& destination,
                  std::optional<ProgressDisplay> display) {
    std::int16_t reads = 0;
    std::string result;

    platform::InternetSession session(agent, OpenType);
    platform::InternetRequest request(session, URL, platform::internetFlagReload);
    std::array<char, readSize> buffer{};
    for (;;) {
        count(reads);
        const std::size_t length = request.read(buffer);
        if (result.empty()) checkRoom(destination, request.announcedLength().value_or(0));
        if (length == 0) break;
        if (result.empty()) makeRoom(result, request);
        result.append(buffer.data(), length);
        checkRoom(destination, result.size());
        if (!display) continue;
        display->show(reads);
        toolkit::DoEvents();
    }
    const bool answered = !result.empty() || request.announcedLength();
    return {std::move(result), answered && !request.complete()};
}

} // namespace

std::string OpenURL(toolkit::StatusPanel& panel, std::string_view URL, std::string_view downtype,
                    std::int32_t OpenType, const std::optional<Destination>& destination) {
    const Progress* const progress = progressOf(downtype);
    std::optional<ProgressDisplay> display;
    if (progress != nullptr) display.emplace(ProgressDisplay{panel, *progress});
    Download result = download(URL, OpenType, destination, std::move(display));
    if (result.cut && progress == nullptr) return {};
    return std::move(result.contents);
}

std::optional<std::string> OpenTextFile(std::string_view URL) {
    Download result = download(URL, 0, {}, {});
    if (result.cut) return std::nullopt;
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

void WriteFile(std::string_view Path, std::string_view Text, const platform::DriveIdentity& Drive) {
    if (FileExists(Path) && platform::fileLength(Path) == Text.size() && ReadFile(Path) == Text) return;
    platform::check(platform::writeWholeFile(Path, Text, Drive), Path);
}

} // namespace online
