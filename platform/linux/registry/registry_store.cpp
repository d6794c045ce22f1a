#include "platform/linux/registry/registry_store.h"

#include "platform/registry.h"

#include <algorithm>
#include <cerrno>

namespace platform::linux {

namespace {

constexpr std::string_view header = "orvanta-usbtool registry 1\n";

/// A file beyond this is not read, and none grows beyond it.
constexpr std::uint64_t largestFile = 256ULL * 1024 * 1024;
/// A file below this is never too long.
constexpr std::uint64_t smallFile = 64ULL * 1024;

std::int32_t statusOf(int error) {
    switch (error) {
    case 0:
        return RegistrySuccess;
    case EACCES:
    case EPERM:
    case EROFS:
        return RegistryAccessDenied;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return RegistryDiskFull;
    default:
        return RegistryIoFailed;
    }
}

/// Gives the lock back at the end of a scope.
class Unlock {
public:
    explicit Unlock(RegistryFile& file) : file_(file) {}
    Unlock(const Unlock&) = delete;
    Unlock& operator=(const Unlock&) = delete;
    ~Unlock() { file_.unlock(); }

private:
    RegistryFile& file_;
};

} // namespace

std::int32_t RegistryStore::read(const Look& look) {
    const int error = file_.lockShared();
    if (error == ENOENT) {
        forget();
        return look(tree_);
    }
    if (error != 0) return statusOf(error);
    const Unlock unlock(file_);
    const int readError = readNews();
    return readError != 0 ? statusOf(readError) : look(tree_);
}

std::int32_t RegistryStore::change(const Plan& plan) {
    int error = file_.lockExclusive();
    if (error == ENOENT) {
        // Only a change that is really made creates the file.
        forget();
        std::optional<RegistryRecord> record;
        const std::int32_t status = plan(tree_, record);
        if (status != RegistrySuccess || !record) return status;
        error = file_.lockOrCreate();
    }
    if (error != 0) return statusOf(error);
    const Unlock unlock(file_);
    return makeChange(plan);
}

std::int32_t RegistryStore::makeChange(const Plan& plan) {
    const int error = readNews();
    if (error != 0) return statusOf(error);
    std::optional<RegistryRecord> record;
    const std::int32_t status = plan(tree_, record);
    if (status != RegistrySuccess || !record) return status;
    if (damaged_) {
        const std::int32_t mended = mend();
        if (mended != RegistrySuccess) return mended;
    }
    return append(*record);
}

std::int32_t RegistryStore::flush() {
    const int error = file_.lockShared();
    if (error == ENOENT) return RegistrySuccess;
    if (error != 0) return statusOf(error);
    int syncError = readNews();
    // Nobody needs to wait for the disk with us: what matters is in the file already.
    file_.unlock();
    if (syncError == 0 && synced_ != position_) {
        syncError = file_.sync();
        if (syncError == 0) synced_ = position_;
    }
    return syncError == 0 ? RegistrySuccess : RegistryIoFailed;
}

/// Brings the tree up to date.
int RegistryStore::readNews() {
    if (file_.wasExchanged() || file_.size() < position_) forget();
    const std::uint64_t size = file_.size();
    if (size == position_) return 0;
    if (size > largestFile) return EOVERFLOW;
    const bool fromStart = position_ == 0;
    const bool wasDamaged = damaged_;
    const int error = readLines();
    if (error != 0 || fromStart || wasDamaged || !damaged_) return error;
    // Somebody has changed the file by other means than appending to it.
    forget();
    return readLines();
}

int RegistryStore::readLines() {
    std::string text;
    const int error = file_.readFrom(position_, text);
    if (error != 0) return error;
    std::string_view rest = text;
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        takeLine(rest.substr(0, end + 1));
        position_ += end + 1;
        rest.remove_prefix(end + 1);
    }
    if (position_ == 0 && !header.starts_with(rest)) damaged_ = true;
    return 0;
}

void RegistryStore::takeLine(std::string_view line) {
    if (position_ == 0 && line == header) return;
    const auto record = parseRegistryLine(line.substr(0, line.size() - 1));
    if (position_ == 0 || !record || !tree_.apply(*record)) damaged_ = true;
}

void RegistryStore::forget() {
    tree_ = RegistryTree();
    position_ = synced_ = needed_ = 0;
    damaged_ = false;
}

std::int32_t RegistryStore::mend() {
    const int error = file_.keepAside();
    if (error != 0) return RegistryCorrupt;
    const std::string contents = std::string(header) + tree_.lines();
    if (file_.replace(contents) != 0) return RegistryCorrupt;
    position_ = synced_ = needed_ = contents.size();
    damaged_ = false;
    return RegistrySuccess;
}

std::int32_t RegistryStore::append(const RegistryRecord& record) {
    const std::string text = (position_ == 0 ? std::string(header) : std::string()) + registryLine(record);
    if (position_ + text.size() > largestFile) return RegistryDiskFull;
    const int error = file_.writeAt(position_, text);
    if (error != 0) return statusOf(error);
    tree_.apply(record);
    position_ += text.size();
    compact();
    return RegistrySuccess;
}

/// Exchanges the file when more than half of it is history. That this may fail does not matter: the change is
/// made.
void RegistryStore::compact() {
    if (position_ <= std::max(smallFile, 2 * needed_)) return;
    const std::string contents = std::string(header) + tree_.lines();
    needed_ = contents.size();
    if (position_ <= 2 * needed_ || file_.replace(contents) != 0) return;
    position_ = synced_ = contents.size();
}

} // namespace platform::linux
