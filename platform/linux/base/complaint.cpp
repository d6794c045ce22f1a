#include "platform/linux/base/complaint.h"

#include "platform/linux/base/descriptor_io.h"

#include <unistd.h>

namespace platform::linux {

void Complaint::tell(std::string_view text) {
    if (text == last_) return;
    last_ = text;
    if (!text.empty()) (void)writeAll(STDERR_FILENO, "orvanta-usbtool: " + last_ + "\n");
}

} // namespace platform::linux
