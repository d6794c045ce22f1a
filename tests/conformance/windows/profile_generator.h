// Profiles made by chance, the same ones in every run.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace conformance {

/// What is to be written to a profile; without a value the key is deleted, without a key the section.
struct ProfileChange {
    std::string section;
    std::optional<std::string> key;
    std::optional<std::string> value;
};

class ProfileGenerator {
public:
    explicit ProfileGenerator(std::uint32_t seed) : random_(seed) {}

    /// A file of up to 25 lines with all that profiles have and many things they should not have.
    std::string file();

    ProfileChange change();

    /// Every section name that a file may have, and one that none has; each in one spelling.
    static const std::vector<std::string>& sections();

private:
    std::size_t below(std::size_t limit);
    bool oneIn(std::size_t count) { return below(count) == 0; }
    const std::string& oneOf(const std::vector<std::string>& texts) { return texts[below(texts.size())]; }
    std::string anyCase(std::string text);
    std::string sectionLine();
    std::string keyLine();
    std::string line();

    std::mt19937 random_;
};

} // namespace conformance
