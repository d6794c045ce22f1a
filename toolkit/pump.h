#pragma once

namespace toolkit {

/// Lets pending window events run, and returns when there are none left. Throws Unwind when the program ends
/// in one of them. Windows: `PeekMessage` until it finds nothing.
void DoEvents();

} // namespace toolkit
