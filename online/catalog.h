// The receiver catalog as the update server has it, and the choice among the receivers.
#pragma once

#include "window/main_window.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace online {

/// Names of the two files on the server, as an error names them.
constexpr const char* catalogFile = "usb-list.csv";
constexpr const char* newsFile = "usb-news.csv";

/// Line of a text whose lines are separated by CR LF, counted from 0. Throws base::RuntimeError
/// (SubscriptOutOfRange), which says where it is missing, when there is none. The result is part of `text`.
std::string_view GetLine(std::string_view text, std::size_t index, std::string_view where = "Serverdatei");

/// Field of a line whose fields are separated by ";", counted from 0; Windows-1252 in, UTF-8 out. Throws
/// base::RuntimeError (SubscriptOutOfRange), which says where it is missing, when there is none.
std::string fieldOf(std::string_view line, std::size_t index, std::string_view where = "Serverdatei");

/// Parses usb-list.csv (Windows-1252) into the window's catalog, enables what can be had, and chooses the
/// first receiver and channel list there are. Throws base::RuntimeError for a catalog that lacks lines or
/// fields, or a picture that cannot be loaded.
void LoadCatalog(window::MainWindow& window, std::string_view text);

/// The user, or LoadCatalog, chose a receiver.
void Firm_Option_Click(window::MainWindow& window, std::int16_t Index);

/// The user, or LoadCatalog, chose a kind of channel list.
void Sett_Option_Click(window::MainWindow& window, std::int16_t Index);

} // namespace online
