// Mouse and keyboard, as they come from the machine: what is disabled, blocked or covered is deaf.
#pragma once

#include "tests/driver/windows/target.h"

#include <string>
#include <string_view>
#include <vector>

namespace probe {

/// Brings the window to the front, unless another one blocks it.
void activate(HWND window);

/// Clicks into the middle of a part; for what has a mark beside its text, onto the mark.
void clickPart(const Part& part, int clicks);

void clickRow(HWND list, int row, int clicks);

enum class MouseAction { Move, Press, Release };

struct MouseStep {
    MouseAction action = MouseAction::Move;
    POINT point{}; ///< in the part's own coordinates
};

void moveMouse(const Part& part, const std::vector<MouseStep>& steps, bool rightButton);

/// Gives a control the focus, as the Tab key does.
void focus(HWND control);

/// Opens a drop-down list and chooses the entry of that index with the keyboard.
void chooseEntry(HWND box, int index);

void typeText(std::wstring_view text);
/// Presses a key such as "Tab" or "Ctrl+V". Throws Failure for one that is not known.
void pressKey(std::string_view name);

/// Hands over a text as an input method does when it has been chosen.
void compose(std::wstring_view text);

} // namespace probe
