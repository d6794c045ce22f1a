#include "base/runtime_error.h"

#include <algorithm>
#include <array>
#include <utility>

namespace base {

namespace {

struct Error {
    ErrorNumber number;
    const char* description;
    const char* advice;
};

constexpr const char* startAgain =
    "Starten Sie das Programm neu. Tritt der Fehler wieder auf, melden Sie ihn dem Händler Ihres Receivers.";
constexpr const char* installAgain =
    "Die Datei gehört zum Programm. Installieren Sie das Programm neu, oder entpacken Sie sein Archiv noch "
    "einmal vollständig.";
constexpr const char* installPicturesAgain =
    "Das Bild gehört zum Programm. Installieren Sie das Programm neu, oder entpacken Sie sein Archiv noch "
    "einmal vollständig. Tritt der Fehler wieder auf, melden Sie ihn dem Händler Ihres Receivers.";
constexpr const char* plugInAgain =
    "Der Stick wurde abgezogen, ausgetauscht oder antwortet nicht. Schließen Sie ihn an, starten Sie das "
    "Programm neu, und wiederholen Sie das Update.";

constexpr std::array<Error, 15> errors = {{
    {ErrorNumber::InvalidProcedureCall, "Ungültiger Prozeduraufruf oder ungültiges Argument", startAgain},
    {ErrorNumber::Overflow, "Überlauf", startAgain},
    {ErrorNumber::SubscriptOutOfRange, "Index außerhalb des gültigen Bereichs", startAgain},
    {ErrorNumber::DivisionByZero, "Division durch Null", startAgain},
    {ErrorNumber::TypeMismatch, "Typen unverträglich", startAgain},
    {ErrorNumber::LibraryNotLoaded, "Fehler beim Laden einer DLL", installAgain},
    {ErrorNumber::FileNotFound, "Datei nicht gefunden", installAgain},
    {ErrorNumber::DeviceIo, "E/A-Fehler auf dem Gerät",
     "Der Stick hat nicht alles angenommen. Wiederholen Sie das Update, und nehmen Sie einen anderen Stick, "
     "wenn der Fehler wieder auftritt."},
    {ErrorNumber::DiskFull, "Datenträger voll",
     "Auf dem Stick ist zu wenig Platz. Löschen Sie Dateien, die Sie nicht brauchen, oder nehmen Sie einen "
     "größeren Stick, und wiederholen Sie das Update."},
    {ErrorNumber::PermissionDenied, "Zugriff verweigert",
     "Heben Sie den Schreibschutz des Sticks oder der Datei auf, schließen Sie andere Programme, die ihn "
     "benutzen, und wiederholen Sie das Update."},
    {ErrorNumber::DiskNotReady, "Datenträger nicht bereit", plugInAgain},
    {ErrorNumber::PathFileAccess, "Fehler beim Zugriff auf Pfad/Datei",
     "Die Datei kann unter diesem Namen nicht angelegt werden. Ist dort ein Ordner gleichen Namens, benennen "
     "Sie ihn um; sonst melden Sie den Namen dem Händler Ihres Receivers."},
    {ErrorNumber::PathNotFound, "Pfad nicht gefunden",
     "Unter diesem Namen kann es keine Datei geben, oder der Stick wurde abgezogen. Schließen Sie ihn an, "
     "starten Sie das Programm neu, und wiederholen Sie das Update. Tritt der Fehler wieder auf, melden Sie "
     "den Namen dem Händler Ihres Receivers."},
    {ErrorNumber::InvalidPicture, "Ungültiges Bild", installPicturesAgain},
    {ErrorNumber::ControlNotFound, "Steuerelement nicht gefunden", startAgain},
}};

const Error* find(ErrorNumber number) {
    const auto* const found = std::find_if(errors.begin(), errors.end(),
                                           [number](const Error& error) { return error.number == number; });
    return found == errors.end() ? nullptr : found;
}

} // namespace

const char* description(ErrorNumber number) {
    const Error* const error = find(number);
    return error != nullptr ? error->description : "Unbekannter Fehler";
}

const char* advice(ErrorNumber number) {
    const Error* const error = find(number);
    return error != nullptr ? error->advice : startAgain;
}

RuntimeError::RuntimeError(ErrorNumber number, std::string subject, std::string advice)
    : std::runtime_error(description(number)),
      number_(number),
      subject_(std::move(subject)),
      advice_(advice.empty() ? base::advice(number) : std::move(advice)) {}

} // namespace base
