#include "platform/windows/storage_device.h"

#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace platform::windows {

UniqueHandle openToAsk(char letter) {
    const std::string name = {'\\', '\\', '.', '\\', letter, ':'};
    return UniqueHandle(
        CreateFileA(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
}

StorageTexts storageTexts(HANDLE device) {
    STORAGE_PROPERTY_QUERY query{};
    query.PropertyId = StorageDeviceProperty;
    query.QueryType = PropertyStandardQuery;
    alignas(STORAGE_DEVICE_DESCRIPTOR) std::array<char, 1024> answer{};
    DWORD size = 0;
    if (DeviceIoControl(device, IOCTL_STORAGE_QUERY_PROPERTY, &query, sizeof query, answer.data(),
                        static_cast<DWORD>(answer.size()), &size, nullptr) == FALSE)
        return {};
    return storageTexts(std::span(answer).first(std::min<std::size_t>(size, answer.size())));
}

StorageTexts storageTexts(std::span<const char> answer) {
    STORAGE_DEVICE_DESCRIPTOR descriptor{};
    if (answer.size() < sizeof descriptor) return {};
    std::memcpy(&descriptor, answer.data(), sizeof descriptor);
    const std::string_view all(answer.data(), answer.size());
    const auto text = [all](DWORD start) {
        if (start == 0 || start >= all.size()) return std::string();
        const std::string_view rest = all.substr(start);
        return std::string(rest.substr(0, rest.find('\0')));
    };
    return {text(descriptor.VendorIdOffset), text(descriptor.ProductIdOffset),
            text(descriptor.SerialNumberOffset)};
}

} // namespace platform::windows
