#include "base/runtime_error.h"

#include <utility>

namespace base {

const char* description(ErrorNumber number) {
    switch (number) {
    case ErrorNumber::InvalidProcedureCall:
        return "Ungültiger Prozeduraufruf oder ungültiges Argument";
    case ErrorNumber::Overflow:
        return "Überlauf";
    case ErrorNumber::SubscriptOutOfRange:
        return "Index außerhalb des gültigen Bereichs";
    case ErrorNumber::DivisionByZero:
        return "Division durch Null";
    case ErrorNumber::TypeMismatch:
        return "Typen unverträglich";
    case ErrorNumber::FileNotFound:
        return "Datei nicht gefunden";
    case ErrorNumber::DeviceIo:
        return "E/A-Fehler auf dem Gerät";
    case ErrorNumber::DiskFull:
        return "Datenträger voll";
    case ErrorNumber::PermissionDenied:
        return "Zugriff verweigert";
    case ErrorNumber::DiskNotReady:
        return "Datenträger nicht bereit";
    case ErrorNumber::PathFileAccess:
        return "Fehler beim Zugriff auf Pfad/Datei";
    case ErrorNumber::PathNotFound:
        return "Pfad nicht gefunden";
    case ErrorNumber::InvalidPicture:
        return "Ungültiges Bild";
    case ErrorNumber::ControlNotFound:
        return "Steuerelement nicht gefunden";
    }
    return "Unbekannter Fehler";
}

RuntimeError::RuntimeError(ErrorNumber number, std::string subject)
    : std::runtime_error(description(number)), number_(number), subject_(std::move(subject)) {}

} // namespace base
