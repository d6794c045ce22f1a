#include "platform/cRegistry.h"

#include "base/little_endian.h"
#include "base/text.h"
#include "platform/registry.h"

using namespace platform;

namespace {

constexpr std::uint32_t readRight = RegistryQueryValue + RegistryEnumerateSubKeys + RegistryNotify; // 25
constexpr std::uint32_t fullRight =
    readRight + RegistrySetValue + RegistryCreateSubKey + RegistryCreateLink; // 63

constexpr std::uint32_t longestBinary = 512;
constexpr std::uint32_t dwordSize = 4;

std::string bytesOf(std::int32_t number) {
    std::string bytes(dwordSize, '\0');
    base::putLittleEndian(bytes, 0, dwordSize, static_cast<std::uint32_t>(number));
    return bytes;
}

/// Writes a variant by its type; of most types there is nothing to write.
struct ValueWriter {
    RegistryKey key;
    std::string name;

    void operator()(std::int16_t number) const { regSetValue(key, name, RegistryDword, bytesOf(number)); }
    void operator()(std::int32_t number) const { regSetValue(key, name, RegistryDword, bytesOf(number)); }
    void operator()(const std::string& text) const {
        regSetValue(key, name, RegistryText, base::toAnsi(text) + '\0');
    }
    template <typename Other>
    void operator()(const Other& /*value*/) const {}
};

/// Queries the value once, or twice, by its type, and hands it back; the status of the last query.
struct ValueReader {
    RegistryKey key;
    std::string name;

    std::int32_t read(cRegistry::Variant& value) const {
        std::uint32_t type = RegistryNone;
        std::uint32_t size = 0;
        const std::int32_t status = regQueryValue(key, name, type, nullptr, size);
        if (status != RegistrySuccess) return status;
        if (type == RegistryText) return readText(size, value);
        if (type == RegistryBinary) return readBinary(value);
        if (type == RegistryDword) return readDword(value);
        return status;
    }

private:
    /// The text keeps the buffer's last blank behind its NUL: this is intended.
    std::int32_t readText(std::uint32_t size, cRegistry::Variant& value) const {
        std::string buffer(std::size_t{size} + 1, ' ');
        const std::int32_t status = query(buffer);
        if (status == RegistrySuccess) value = base::fromAnsi(buffer);
        return status;
    }

    std::int32_t readBinary(cRegistry::Variant& value) const {
        std::string buffer(longestBinary, ' ');
        std::uint32_t size = longestBinary;
        const std::int32_t status = query(buffer, size);
        if (status == RegistrySuccess) value = buffer.substr(0, size);
        return status;
    }

    std::int32_t readDword(cRegistry::Variant& value) const {
        std::string buffer(dwordSize, '\0');
        const std::int32_t status = query(buffer);
        if (status == RegistrySuccess)
            value = static_cast<std::int32_t>(base::littleEndian(buffer, 0, dwordSize));
        return status;
    }

    std::int32_t query(std::string& buffer) const {
        auto size = static_cast<std::uint32_t>(buffer.size());
        return query(buffer, size);
    }

    std::int32_t query(std::string& buffer, std::uint32_t& size) const {
        std::uint32_t type = RegistryNone;
        return regQueryValue(key, name, type, buffer.data(), size);
    }
};

} // namespace

std::int32_t cRegistry::RegKeyExist(std::uint32_t Root, const std::string& Key) const {
    RegistryKey key = 0;
    const std::int32_t status = regOpenKey(Root, base::toAnsi(Key), readRight, key);
    if (status == RegistrySuccess) regCloseKey(key);
    return status;
}

std::int32_t cRegistry::RegKeyCreate(std::uint32_t Root, const std::string& Newkey) const {
    RegistryKey key = 0;
    RegistryDisposition disposition{};
    if (regCreateKey(Root, base::toAnsi(Newkey), registryNonVolatile, fullRight, key, disposition) !=
        RegistrySuccess)
        return 0;
    // A key that could not be flushed is not closed: this is intended.
    if (regFlushKey(key) == RegistrySuccess) regCloseKey(key);
    return static_cast<std::int32_t>(disposition);
}

std::int32_t cRegistry::RegKeyDelete(std::uint32_t Root, const std::string& Key) const {
    return regDeleteKey(Root, base::toAnsi(Key));
}

std::int32_t cRegistry::RegFieldDelete(std::uint32_t Root, const std::string& Key,
                                       const std::string& Field) const {
    RegistryKey key = 0;
    const std::int32_t status = regOpenKey(Root, base::toAnsi(Key), fullRight, key);
    if (status != RegistrySuccess) return status;
    regDeleteValue(key, base::toAnsi(Field));
    return regCloseKey(key);
}

std::int32_t cRegistry::RegValueSet(std::uint32_t Root, const std::string& Key, const std::string& Field,
                                    const Variant& Value) const {
    RegistryKey key = 0;
    const std::int32_t status = regOpenKey(Root, base::toAnsi(Key), fullRight, key);
    if (status != RegistrySuccess) return status;
    std::visit(ValueWriter{key, base::toAnsi(Field)}, Value);
    return regCloseKey(key);
}

std::int32_t cRegistry::RegValueGet(std::uint32_t Root, const std::string& Key, const std::string& Field,
                                    Variant& Value) const {
    RegistryKey key = 0;
    std::int32_t status = regOpenKey(Root, base::toAnsi(Key), readRight, key);
    if (status != RegistrySuccess) return status;
    status = ValueReader{key, base::toAnsi(Field)}.read(Value);
    // After a failed query the key is not closed: this is intended.
    return status == RegistrySuccess ? regCloseKey(key) : status;
}
