// How much of a text is shown. A text may come from a server and be of any length; what lies behind these
// limits nobody reads, and the time that it takes to break it into lines is the window's.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace toolkit {

// Characters. A control keeps all of its text; its view gets so much of it.
constexpr std::size_t longestShownText = 4000;
constexpr std::size_t longestShownTip = 2000;
constexpr std::size_t longestShownMessage = 1500;
constexpr std::size_t longestMessageLine = 250;

/// The first characters of a UTF-8 text, none of them cut in two.
std::string_view shownText(std::string_view text, std::size_t characters = longestShownText);

/// The first `head` bytes of a text, dots, and as much of its end as fits; all of a text that does. `fits` is
/// asked of several texts. What does not fit without an end is cut at the right by who shows it.
std::string shownEnd(std::string_view text, std::size_t head,
                     const std::function<bool(const std::string&)>& fits);

/// A text for a tool tip; dots show that it is cut.
std::string shownTip(std::string_view text);

/// A text for a message box, lines separated by CR LF. Each line is cut by itself, so that a long one does
/// not push what follows out of the box, where the question is; dots show what is cut.
std::string shownMessage(std::string_view text);

} // namespace toolkit
