#include "platform/number_text.h"

#include "base/runtime_error.h"
#include "base/trim.h"
#include "platform/user_locale.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace platform {

namespace {

using base::ErrorNumber;
using base::RuntimeError;

/// The number with a point as its separator; a point that is not the user's separator makes it no number.
std::string withPoint(std::string_view text) {
    const std::string separator = decimalSeparator();
    std::string number(text);
    if (separator == ".") return number;
    if (number.find('.') != std::string::npos) return {};
    const std::size_t position = number.find(separator);
    return position == std::string::npos ? number : number.replace(position, separator.size(), ".");
}

} // namespace

std::string formatNumber(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const long long scaled = std::llround(value * scale);
    std::string digits = std::to_string(std::llabs(scaled));
    const auto fraction = static_cast<std::size_t>(decimals);
    if (digits.size() <= fraction) digits.insert(0, fraction + 1 - digits.size(), '0');
    digits.insert(digits.size() - fraction, decimalSeparator());
    if (scaled < 0) digits.insert(0, 1, '-');
    return digits;
}

double numberFromText(std::string_view text) {
    std::string number = withPoint(base::trim(text, " \t"));
    if (number.starts_with('+') && !number.starts_with("+-")) number.erase(0, 1);
    double value = 0;
    const char* const end = number.data() + number.size();
    const auto [next, error] = std::from_chars(number.data(), end, value);
    // What follows a number decides first: "324e324e" is no number, however large its beginning is.
    if (error == std::errc::invalid_argument || next != end)
        throw RuntimeError(ErrorNumber::TypeMismatch, std::string(text));
    if (error == std::errc::result_out_of_range) throw RuntimeError(ErrorNumber::Overflow, std::string(text));
    if (!std::isfinite(value)) throw RuntimeError(ErrorNumber::TypeMismatch, std::string(text));
    return value;
}

std::int16_t integer16FromText(std::string_view text) {
    const double value = roundHalfToEven(numberFromText(text));
    using Limits = std::numeric_limits<std::int16_t>;
    if (value < Limits::min() || value > Limits::max())
        throw RuntimeError(ErrorNumber::Overflow, std::string(text));
    return static_cast<std::int16_t>(value);
}

double roundHalfToEven(double value) {
    const double below = std::floor(value);
    const double rest = value - below;
    if (rest != 0.5) return rest < 0.5 ? below : below + 1;
    return std::fmod(below, 2.0) == 0 ? below : below + 1;
}

} // namespace platform
