#pragma once

namespace toolkit {

/// Style numbers of a message box: buttons plus icon, and which button is pressed by Enter if that is not the
/// first one. Windows: `MessageBox`, uType.
enum MessageStyle : int {
    OkOnly = 0,
    OkCancel = 1,
    YesNo = 4,
    Critical = 16,
    Exclamation = 48,
    Information = 64,
    YesNoInformation = 68,
    SecondButtonFirst = 256,
    NoOrYesExclamation = YesNo + Exclamation + SecondButtonFirst,
};

/// The button that closed a message box. Windows: the result of `MessageBox`.
enum MessageAnswer : int { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

} // namespace toolkit
