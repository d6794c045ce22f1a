#include "tests/conformance/windows/profile_generator.h"

namespace conformance {

namespace {

using Texts = std::vector<std::string>;

// Letters beyond ASCII come in one case only, and with bytes of all kinds.
const Texts keys = {"Dir",
                    "key",
                    "a b",
                    "Gr\xF6\xDF"
                    "e",
                    "k;1",
                    "#k",
                    "\x80\x81\xFE",
                    "[k",
                    "k]",
                    "\"k\"",
                    "a.b"};
const Texts values = {"",        "1",    "two words",    "C:\\a\\b", "\"quoted\"",
                      "'x'",     "x=y",  "; no comment", "[s]",      "\xE4\xF6\xFC\x80",
                      "\" z \"", "a\tb", "%PATH%",       "1,2,3",    "\"",
                      "==",      "-1"};
const Texts blanks = {"", "", "", " ", "\t", "  ", " \t ", "\v", "\f"};
const Texts lineEnds = {"\r\n", "\r\n", "\r\n", "\n", "\n", "\r"};
const Texts oddLines = {"",      "   ",      "; comment", "  ;x=1", ";[s]", "no sign",   "[open",
                        "# k=1", "\"text\"", "\t",        "]",      "[",    "text ; k=1"};

} // namespace

const Texts& ProfileGenerator::sections() {
    static const Texts names = {"Open",
                                "s",
                                "USB Tool",
                                "Gr\xFC\xDF"
                                "e",
                                "a]b",
                                "x y",
                                "[t",
                                "1",
                                "never there"};
    return names;
}

std::size_t ProfileGenerator::below(std::size_t limit) {
    return random_() % limit; // not a distribution, whose numbers are every library's own
}

std::string ProfileGenerator::anyCase(std::string text) {
    for (char& c : text) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter && oneIn(4)) c = static_cast<char>(c ^ 0x20);
    }
    return text;
}

std::string ProfileGenerator::sectionLine() {
    const std::size_t present = sections().size() - 1;
    const std::string name = anyCase(sections()[below(present)]);
    const std::string behind = oneIn(6) ? "; text" : oneOf(blanks);
    return oneOf(blanks) + "[" + oneOf(blanks) + name + oneOf(blanks) + "]" + behind;
}

std::string ProfileGenerator::keyLine() {
    const std::string key = anyCase(oneOf(keys));
    return oneOf(blanks) + key + oneOf(blanks) + "=" + oneOf(blanks) + oneOf(values) + oneOf(blanks);
}

std::string ProfileGenerator::line() {
    const std::size_t kind = below(10);
    if (kind < 3) return sectionLine();
    return kind < 8 ? keyLine() : oneOf(oddLines);
}

std::string ProfileGenerator::file() {
    std::string text;
    const std::size_t lines = below(26);
    const bool oneEnd = !oneIn(3);
    const std::string end = oneOf(lineEnds);
    for (std::size_t i = 0; i < lines; ++i) {
        text += line();
        const bool last = i + 1 == lines;
        if (!last || !oneIn(4)) text += oneEnd ? end : oneOf(lineEnds);
    }
    return text;
}

ProfileChange ProfileGenerator::change() {
    ProfileChange change{anyCase(oneOf(sections())), anyCase(oneOf(keys)), oneOf(values)};
    const std::size_t kind = below(8);
    if (kind < 2) change.value.reset();
    if (kind == 0) change.key.reset();
    return change;
}

} // namespace conformance
