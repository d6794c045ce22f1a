#pragma once

#include <cstdint>
#include <string>
#include <variant>

/// The platform's registry: every operation opens the key it needs, does one thing and closes the key again.
///
/// `Root` is one of the predefined keys of registry.h, a key path is relative to it. Every operation but
/// RegKeyCreate returns the platform's status, 0 for success. Text is UTF-8; the registry keeps it in the
/// ANSI code page.
class cRegistry {
public:
    /// A moment, as days since 30 December 1899.
    struct Date {
        double days = 0;
    };
    using Variant =
        std::variant<std::monostate, std::int16_t, std::int32_t, float, double, Date, bool, std::string>;

    /// 0 when the key can be opened for reading.
    std::int32_t RegKeyExist(std::uint32_t Root, const std::string& Key) const;

    /// 1 when the key has been created, 2 when it was there, 0 when both failed. Everything is on the disk
    /// afterwards; where that fails the key's handle stays open: this is intended.
    std::int32_t RegKeyCreate(std::uint32_t Root, const std::string& Newkey) const;

    /// A key with subkeys is not deleted.
    std::int32_t RegKeyDelete(std::uint32_t Root, const std::string& Key) const;

    /// Deletes a value. Succeeds also when there is no such value.
    std::int32_t RegFieldDelete(std::uint32_t Root, const std::string& Key, const std::string& Field) const;

    /// Writes an integer as REG_DWORD, text as REG_SZ; anything else is not written, which is a success, too.
    /// The status says nothing about the writing itself.
    std::int32_t RegValueSet(std::uint32_t Root, const std::string& Key, const std::string& Field,
                             const Variant& Value) const;

    /// Reads a value: REG_SZ as text with its NUL and one more blank at its end, which callers trim;
    /// REG_BINARY of up to 512 bytes as those bytes; REG_DWORD as a 32-bit integer. `Value` stays as it was
    /// for any other type and when the reading fails. Where it fails the key's handle stays open: this is
    /// intended.
    std::int32_t RegValueGet(std::uint32_t Root, const std::string& Key, const std::string& Field,
                             Variant& Value) const;
};
