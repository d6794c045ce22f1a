// What a backend implements; chosen when the program is linked. The core calls it through the functions of
// the other headers of this folder, never directly.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

namespace toolkit {

class Form;
class FormView;
struct Ending;

/// Sets the toolkit up, dispatches `start`, handles events until the program ends, and tells how it ended.
/// Called once, by main(). `program` is the name that the program was called by; nothing else of the command
/// line is for a toolkit.
Ending run(char* program, const std::function<void()>& start);

namespace backend {

/// Builds the window that the layout of the form's name describes, hidden, and binds every control of the
/// form to the part of the layout that bears its name. A control without one is a defect of the layout and
/// ends the program.
std::unique_ptr<FormView> createFormView(Form& form);

/// Shows the box, with all of the text, and handles events until it is answered. When the program ends
/// meanwhile the answer has no meaning.
int showMessage(std::string_view text, int style, std::string_view title);

/// Handles events until none is pending, or for so long.
void pumpEvents(std::chrono::milliseconds longest);

/// Paints what is to be painted, and lets windows be moved and minimised; waits for that for so long, or
/// until wakeUp(). Input, timers and messages of the system are not lost: they are handled where events are.
void paintPending(std::chrono::milliseconds longest);

/// Makes paintPending() return, also one that has not begun yet. The one function for every thread.
void wakeUp();

/// Has handleHeldEvents() called where events are handled next.
void handleHeldEventsSoon();

/// How late it is; it never gets earlier.
std::chrono::steady_clock::time_point now();

/// Makes every running event loop return.
void quit();

} // namespace backend
} // namespace toolkit
