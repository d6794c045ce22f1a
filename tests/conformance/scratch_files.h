// Files as the tests see them from outside of the program, by the paths of the machine.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace conformance {

/// A native path of a name in UTF-8.
inline std::filesystem::path named(std::string_view name) {
    return {std::u8string(name.begin(), name.end())};
}

inline void put(const std::filesystem::path& file, std::string_view contents) {
    std::ofstream out(file, std::ios::binary);
    out.write(contents.data(), static_cast<std::streamsize>(contents.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
}

inline std::string get(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Number of files and folders in a folder.
inline std::ptrdiff_t entries(const std::filesystem::path& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

/// Makes a file read-only while it lives.
class ReadOnly {
public:
    explicit ReadOnly(std::filesystem::path file) : file_(std::move(file)) {
        set(std::filesystem::perm_options::remove);
    }
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;
    ~ReadOnly() { set(std::filesystem::perm_options::add); }

private:
    void set(std::filesystem::perm_options how) const {
        using std::filesystem::perms;
        std::error_code ignored;
        std::filesystem::permissions(file_, perms::owner_write | perms::group_write | perms::others_write,
                                     how, ignored);
    }

    std::filesystem::path file_;
};

/// Bytes of every value, so that nothing can be taken for text.
inline std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 31 + i / 256) % 256);
    return bytes;
}

} // namespace conformance
