#include "window/receivers.h"

#include "base/runtime_error.h"

namespace window {

namespace {

std::size_t checked(int index, std::size_t count) {
    if (index < 0 || static_cast<std::size_t>(index) >= count)
        throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, {},
                                 "Es sind keine Angaben vom Server da. Prüfen Sie Ihren Internetanschluss, "
                                 "starten Sie das Programm "
                                 "neu, und warten Sie, bis \"Updates geladen.\" angezeigt wird.");
    return static_cast<std::size_t>(index);
}

} // namespace

std::size_t tableIndex(int receiver, int kind) {
    return checked(receiver, receiverCount) + receiverCount * checked(kind, settingsKinds);
}

const std::string& element(std::span<const std::string> texts, int index) {
    return texts[checked(index, texts.size())];
}

const std::string& element(const Catalog::Table& table, int receiver, int kind) {
    return table[tableIndex(receiver, kind)];
}

} // namespace window
