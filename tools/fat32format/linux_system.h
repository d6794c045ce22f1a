#pragma once

#include "tools/fat32format/disk_facts.h"
#include "tools/fat32format/link_table.h"
#include "tools/fat32format/system.h"

namespace fat32format {

/// The system as it is.
class LinuxSystem : public System {
public:
    LinuxSystem();

    std::string tableProblem() override;
    std::optional<std::string> targetOf(char letter) override;
    std::optional<Volume> inspect(const std::string& node) override;
    std::optional<Volume> firstPartitionOf(const Volume& disk) override;
    std::uint64_t bytesWritten(const Volume& volume) override;
    bool isRoot() override;
    std::optional<std::string> findTool(const std::string& name) override;
    CommandResult run(const std::vector<std::string>& command, const std::string& input,
                      const std::function<void()>& meanwhile) override;
    bool unmount(const std::string& place) override;
    void settle() override;
    void print(const std::string& text) override;
    std::optional<std::string> readLine() override;

private:
    FactFolders folders_;
    LinkTable table_; ///< the same one from the beginning to the end
};

} // namespace fat32format
