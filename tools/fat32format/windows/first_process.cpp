#include "tools/fat32format/windows/first_process.h"

#include "tools/fat32format/formatter.h"
#include "tools/fat32format/windows/message_pipe.h"
#include "tools/fat32format/windows/security.h"

#include <ntsecapi.h>

#include <algorithm>
#include <array>
#include <utility>

namespace fat32format {

using platform::windows::UniqueHandle;

namespace {

constexpr DWORD largestStatus = 255; // what is above is an error of the system's, or a crash

constexpr auto noStart = "The formatter cannot be started as administrator: Windows error ";
constexpr auto refused = "Windows was not allowed to start the formatter as administrator. "
                         "Nothing has been changed.\n";
constexpr auto noPipe =
    "The way to the formatter with an administrator's rights cannot be made: Windows error ";
constexpr auto nobody = "The formatter with an administrator's rights does not answer. "
                        "Nothing has been changed.\n";
constexpr auto stranger =
    "Another program has taken the place of the formatter with an administrator's rights. "
    "Nothing has been changed.\n";
constexpr auto brokenOff = "The formatter with an administrator's rights has broken off. "
                           "If it had begun to write, the drive has to be formatted again.\n";

std::string withNumber(const char* text, DWORD number) {
    return text + std::to_string(number) + ".\n";
}

/// By the user, or by a policy that asks nobody.
bool isRefusal(DWORD error) {
    constexpr std::array refusals = {ERROR_CANCELLED, ERROR_ACCESS_DENIED, ERROR_ACCESS_DISABLED_BY_POLICY};
    return std::find(refusals.begin(), refusals.end(), static_cast<LONG>(error)) != refusals.end();
}

class FirstProcess {
public:
    FirstProcess(Dialogue& dialogue, std::chrono::milliseconds patience)
        : dialogue_(dialogue), patience_(static_cast<DWORD>(patience.count())) {}

    int run(const Options& options, const Start& start) {
        std::uint64_t number = 0;
        if (RtlGenRandom(&number, sizeof number) == FALSE) return fail(withNumber(noPipe, GetLastError()));
        pipe_ = pipeForOneOther(pipeName(number), longestMessage);
        if (!pipe_) return fail(withNumber(noPipe, GetLastError()));
        letAdministratorsSeeThisProcess();
        Started started = start(parametersFor(options, number));
        if (isRefusal(started.error)) return fail(refused, Status::NotAuthorised);
        if (!started.process) return fail(withNumber(noStart, started.error));
        process_ = std::move(started.process);
        return waitForOther() ? goOn() : whyNobodyCame();
    }

private:
    int fail(const std::string& sentence, Status status = Status::Failed) {
        dialogue_.print(sentence);
        return static_cast<int>(status);
    }

    /// False when the process ends without coming, or time is up.
    bool waitForOther() {
        const UniqueHandle arrival(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        OVERLAPPED operation{};
        operation.hEvent = arrival.get();
        if (ConnectNamedPipe(pipe_.get(), &operation) != FALSE || GetLastError() == ERROR_PIPE_CONNECTED)
            return true;
        if (GetLastError() != ERROR_IO_PENDING) return false;
        const std::array either = {arrival.get(), process_.get()};
        WaitForMultipleObjects(static_cast<DWORD>(either.size()), either.data(), FALSE, patience_);
        DWORD none = 0;
        CancelIoEx(pipe_.get(), &operation);
        return GetOverlappedResult(pipe_.get(), &operation, &none, TRUE) != FALSE;
    }

    /// It may have refused by itself, with a status that tells why.
    int whyNobodyCame() {
        pipe_.close(); // it comes too late now
        return fail(nobody);
    }

    int goOn() {
        ULONG id = 0;
        if (GetNamedPipeClientProcessId(pipe_.get(), &id) == FALSE || id != GetProcessId(process_.get()))
            return fail(stranger);
        return speak() ? statusOfOther() : fail(brokenOff);
    }

    /// For the second process, until it has said all; false when it does not come to that.
    bool speak() {
        MessagePipe pipe(std::move(pipe_));
        while (const auto message = pipe.receive()) {
            switch (message->kind) {
            case Message::Kind::Print:
                dialogue_.print(message->text);
                break;
            case Message::Kind::Ask:
                if (!answer(pipe)) return false;
                break;
            case Message::Kind::End:
                return true;
            case Message::Kind::Line:
                return false;
            }
        }
        return false;
    }

    /// What cannot be sent is no "y" in any case.
    bool answer(MessagePipe& pipe) {
        const auto line = dialogue_.readLine();
        return (line && pipe.send({Message::Kind::Line, *line})) || pipe.send({Message::Kind::End, {}});
    }

    int statusOfOther() {
        DWORD status = 0;
        if (WaitForSingleObject(process_.get(), patience_) != WAIT_OBJECT_0 ||
            GetExitCodeProcess(process_.get(), &status) == FALSE || status > largestStatus)
            return fail(brokenOff);
        return static_cast<int>(status);
    }

    Dialogue& dialogue_;
    DWORD patience_; ///< milliseconds
    UniqueHandle pipe_;
    UniqueHandle process_;
};

} // namespace

std::wstring parametersFor(const Options& options, std::uint64_t pipe) {
    std::wstring parameters = L"-c" + std::to_wstring(options.sectorsPerCluster) + L" ";
    parameters += {static_cast<wchar_t>(options.letter), L':'};
    if (options.anyBus) parameters += L" --any-bus";
    return parameters + L" --pipe=" + std::to_wstring(pipe);
}

std::wstring pipeName(std::uint64_t number) {
    return L"\\\\.\\pipe\\orvanta-fat32format-" + std::to_wstring(number);
}

int formatElevated(const Options& options, Dialogue& dialogue, const Start& start,
                   std::chrono::milliseconds patience) {
    return FirstProcess(dialogue, patience).run(options, start);
}

} // namespace fat32format
