#include "drive/drive_name.h"

namespace drive {

std::string driveName(std::string_view root) {
    std::string name(root.substr(0, 2));
    for (char& c : name)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return name;
}

} // namespace drive
