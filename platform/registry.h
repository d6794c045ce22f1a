// The registry: keys in a tree below the predefined ones, each with named values. All text here is in the
// ANSI code page, one character a byte, and ends at its first NUL; the data of a value is bytes. Names of
// keys and values match regardless of case and keep the case they were created with.
//
// A path has names separated by `\` and is relative to an open key; the empty path is that key itself. Every
// function returns a status, 0 for success. Windows:
// https://learn.microsoft.com/windows/win32/sysinfo/registry-functions
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// What the functions return; other numbers of
/// https://learn.microsoft.com/windows/win32/debug/system-error-codes may come, too.
enum RegistryStatus : std::int32_t {
    RegistrySuccess = 0,
    RegistryFileNotFound = 2, ///< no such key, or no such value
    RegistryAccessDenied =
        5, ///< the handle lacks the right; the key has subkeys; the store may not be written
    RegistryInvalidHandle = 6,
    RegistryInvalidParameter = 87,
    RegistryDiskFull = 112,
    RegistryBadPathName = 161, ///< the path begins with `\`
    RegistryMoreData = 234,    ///< the buffer is too small
    RegistryCorrupt = 1015,    ///< the store is damaged and could not be mended
    RegistryIoFailed = 1016,   ///< the store could not be read or written
    RegistryKeyDeleted = 1018, ///< the handle's key has been deleted
};

/// An open key, or a predefined one. A handle has 32 significant bits on every system:
/// https://learn.microsoft.com/windows/win32/winprog64/interprocess-communication
using RegistryKey = std::uint32_t;

/// https://learn.microsoft.com/windows/win32/sysinfo/predefined-keys
constexpr RegistryKey registryClassesRoot = 0x80000000U;
constexpr RegistryKey registryCurrentUser = 0x80000001U;
constexpr RegistryKey registryLocalMachine = 0x80000002U;
constexpr RegistryKey registryUsers = 0x80000003U;

/// Rights that a handle can have, to be added up. Windows:
/// https://learn.microsoft.com/windows/win32/sysinfo/registry-key-security-and-access-rights
enum RegistryRight : std::uint32_t {
    RegistryQueryValue = 1,
    RegistrySetValue = 2,
    RegistryCreateSubKey = 4,
    RegistryEnumerateSubKeys = 8,
    RegistryNotify = 16,
    RegistryCreateLink = 32,
};

/// Types of values. Windows: https://learn.microsoft.com/windows/win32/sysinfo/registry-value-types
enum RegistryValueType : std::uint32_t {
    RegistryNone = 0,
    RegistryText = 1,   ///< REG_SZ, by custom with a NUL at the end that is part of the data
    RegistryBinary = 3, ///< REG_BINARY
    RegistryDword = 4,  ///< REG_DWORD, lowest byte first
};

enum RegistryDisposition : std::uint32_t {
    RegistryCreatedNewKey = 1,
    RegistryOpenedExistingKey = 2,
};

/// The only option of a key that is supported everywhere: it stays when the computer is shut down.
constexpr std::uint32_t registryNonVolatile = 0;

/// Opens a key. The caller closes `opened`; a predefined key with an empty path gives itself, which need not
/// be closed. Windows: `RegOpenKeyExA`,
/// https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regopenkeyexa
std::int32_t regOpenKey(RegistryKey key, std::string_view path, std::uint32_t rights, RegistryKey& opened);

/// Opens a key and creates it before, with those above it, when it is missing: all of them or none. A name
/// has 1 to 255 characters. The rights of the handle `key` do not matter. No class, no security attributes.
/// Windows: `RegCreateKeyExA`, https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regcreatekeyexa
std::int32_t regCreateKey(RegistryKey key, std::string_view path, std::uint32_t options, std::uint32_t rights,
                          RegistryKey& opened, RegistryDisposition& disposition);

/// Returns when every change of the registry up to now is on the disk, which no other function promises.
/// Windows: `RegFlushKey`, https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regflushkey
std::int32_t regFlushKey(RegistryKey key);

/// Gives a handle back. Closing a predefined key does nothing and succeeds.
/// Windows: `RegCloseKey`, https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regclosekey
std::int32_t regCloseKey(RegistryKey key);

/// Deletes a key and its values; refused with RegistryAccessDenied while it has subkeys. Handles of it that
/// are still open are good for closing only. The rights of the handle `key` do not matter. Windows:
/// `RegDeleteKeyA`, https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regdeletekeya
std::int32_t regDeleteKey(RegistryKey key, std::string_view path);

/// Deletes a value; needs RegistrySetValue.
/// Windows: `RegDeleteValueA`, https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regdeletevaluea
std::int32_t regDeleteValue(RegistryKey key, std::string_view name);

/// Sets a value, the key's default one with an empty name; needs RegistrySetValue. Of the data all bytes are
/// stored as they are; the NUL of a text is to be among them. Windows: `RegSetValueExA`,
/// https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regsetvalueexa
std::int32_t regSetValue(RegistryKey key, std::string_view name, std::uint32_t type, std::string_view data);

/// Reads a value; needs RegistryQueryValue. `size` is the size of the buffer `data` before and that of the
/// value's data afterwards, in bytes, also when the buffer is too small (RegistryMoreData; its contents are
/// undefined then) or null (only type and size are asked for, which succeeds). `type` and `size` stay as they
/// were when there is no value. Windows: `RegQueryValueExA`,
/// https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-regqueryvalueexa
std::int32_t regQueryValue(RegistryKey key, std::string_view name, std::uint32_t& type, char* data,
                           std::uint32_t& size);

/// Number of handles this process has opened and not closed. For diagnosis and tests; Windows: counted by the
/// service itself.
std::size_t openRegistryHandles();

} // namespace platform
