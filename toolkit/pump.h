#pragma once

namespace toolkit {

/// Lets pending window events run, and returns when there are none left, or after 50 ms. Within 4 ms of the
/// last time it lets none run. Throws Unwind when the program ends in one of them. Windows: `PeekMessage`
/// until it finds nothing.
void DoEvents();

} // namespace toolkit
