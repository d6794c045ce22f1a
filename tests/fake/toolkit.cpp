// The toolkit's backend: windows that only take note of what is done to them.

#include "fake.h"

#include "base/runtime_error.h"
#include "platform/file_check.h"
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/form.h"
#include "toolkit/message_box.h"
#include "toolkit/picture.h"

#include <algorithm>
#include <thread>

namespace fake {

namespace {

Computer theComputer;

class Window : public toolkit::FormView {
public:
    explicit Window(toolkit::Form& form) : form_(form), name_(form.name()) {}

    void show(toolkit::Property) override {}
    void open(FormView* owner) override {
        computer().windows.push_back("open " + name_);
        noteOwner(owner);
    }
    void openModal(FormView* owner) override {
        computer().windows.push_back("modal " + name_);
        noteOwner(owner);
        const auto user = computer().onModal;
        if (user) user(form_);
    }
    void close() override { computer().windows.push_back("close " + name_); }
    void restore() override { computer().windows.push_back("restore " + name_); }
    toolkit::WindowHandle handle() const override { return windowHandle; }
    bool isProgramActive() const override { return computer().active; }

private:
    void noteOwner(const FormView* owner) const {
        const auto* const window = dynamic_cast<const Window*>(owner);
        computer().owners[name_] = window == nullptr ? "" : window->name_;
    }

    toolkit::Form& form_;
    std::string name_;
};

struct FilePicture : base::PictureData {
    explicit FilePicture(std::string_view file) : path(file) {}
    std::int32_t handle() const noexcept override { return 1; }
    std::string path;
};

struct IconPicture : base::PictureData {
    explicit IconPicture(int resource) : number(resource) {}
    std::int32_t handle() const noexcept override { return number; }
    int number;
};

} // namespace

Computer& computer() {
    return theComputer;
}

bool enter(const std::string& operation) {
    theComputer.journal.push_back(operation);
    return theComputer.fails && theComputer.fails(operation);
}

std::string nameOf(const base::Picture& picture) {
    if (const auto* file = dynamic_cast<const FilePicture*>(picture.get())) return file->path;
    if (const auto* icon = dynamic_cast<const IconPicture*>(picture.get()))
        return "icon " + std::to_string(icon->number);
    return {};
}

void reset() {
    theComputer = Computer{};
    toolkit::resetEnding();
}

} // namespace fake

namespace toolkit {

base::Picture loadPicture(std::string_view path) {
    std::string contents;
    platform::check(platform::readWholeFile(path, contents), path);
    if (contents != "picture") throw base::RuntimeError(base::ErrorNumber::InvalidPicture, std::string(path));
    return std::make_shared<fake::FilePicture>(path);
}

base::Picture iconResource(int number) {
    if (!isIconResource(number)) throw base::RuntimeError(base::ErrorNumber::InvalidProcedureCall);
    return std::make_shared<fake::IconPicture>(number);
}

namespace backend {

std::unique_ptr<FormView> createFormView(Form& form) {
    return std::make_unique<fake::Window>(form);
}

int showMessage(std::string_view text, int style, std::string_view title) {
    fake::enter("message " + std::string(title));
    fake::computer().messages.push_back({std::string(text), style, std::string(title)});
    const auto answer = fake::computer().answer;
    const fake::Message message = fake::computer().messages.back();
    if (answer) return answer(message);
    return (style & YesNo) != 0 ? Yes : Ok;
}

void pumpEvents(std::chrono::milliseconds longest) {
    ++fake::computer().pumps;
    fake::computer().longestPump = longest;
    fake::enter("pump");
    const auto events = fake::computer().onPump;
    if (events) events();
}

void paintPending(std::chrono::milliseconds longest) {
    ++fake::computer().paints;
    const auto meanwhile = fake::computer().onPaint;
    if (meanwhile) meanwhile();
    std::this_thread::sleep_for(std::min(longest, std::chrono::milliseconds(1)));
}

void wakeUp() {
    ++fake::computer().wakeUps;
}

void handleHeldEventsSoon() {
    ++fake::computer().heldEventsAskedFor;
}

/// The tests are one after the other: the clock goes on from test to test.
std::chrono::steady_clock::time_point now() {
    static std::chrono::steady_clock::time_point time;
    time += fake::computer().clockStep;
    return time;
}

void quit() {
    ++fake::computer().quits;
}

} // namespace backend
} // namespace toolkit
