#pragma once

#include "tools/fat32format/linux/disk_facts.h"
#include "tools/fat32format/linux/link_table.h"
#include "tools/fat32format/system.h"

namespace fat32format {

/// The system as it is. Nothing is run by it.
class LinuxSystem : public System {
public:
    LinuxSystem();

    std::string tableProblem() override;
    std::optional<Target> targetOf(char letter) override;
    std::optional<Volume> inspect(const std::string& node) override;
    std::string systemsOwn() override;
    Opened open(const Volume& volume, Access access) override;
    bool unmount(const Mount& mount) override;
    std::uint32_t randomNumber() override;
    void print(const std::string& text) override;
    std::optional<std::string> readLine() override;

private:
    FactFolders folders_;
    LinkTable table_; ///< the same one from the beginning to the end
};

} // namespace fat32format
