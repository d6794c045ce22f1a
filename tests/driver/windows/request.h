#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace probe {

/// A request cannot be carried out.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One line: what to do, then "key=value", with a tab in front of each. In a value \t, \n, \r and \\ stand
/// for a tab, a line feed, a carriage return and a backslash.
class Request {
public:
    explicit Request(std::string_view line);

    const std::string& what() const noexcept { return what_; }
    bool has(const std::string& key) const { return values_.count(key) != 0; }
    /// Empty when it is not given.
    std::string text(const std::string& key) const;
    int number(const std::string& key, int otherwise = 0) const;

private:
    std::string what_;
    std::map<std::string, std::string> values_;
};

} // namespace probe
