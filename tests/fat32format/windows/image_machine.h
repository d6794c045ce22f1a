// A machine whose stick is an image file: Wine opens \\.\E: as the file that the link "e::" among its drives
// leads to, but answers none of a driver's questions for it.
#pragma once

#include "tests/fat32format/windows/stick.h"

namespace fat32format {

/// The image is the whole disk. `folder` holds the stick's text, stick.txt, which is read anew for each
/// question, and takes the record of what was done, stick.log.
class ImageMachine : public Machine {
public:
    explicit ImageMachine(std::wstring folder) : folder_(std::move(folder)) {}

    OpenedDevice open(const std::wstring& name, Rights rights) override;
    std::wstring targetOf(char letter) override;
    UINT driveType(char letter) override;
    std::string labelOf(char letter) override;
    std::optional<std::vector<std::wstring>> systemVolumes() override;
    std::vector<std::string> usersOf(char letter) override;
    void announce(char letter) override;
    void rest(std::chrono::milliseconds) override {} // nobody else has the image open

    Stick& stick();
    void tell(const std::string& deed);
    /// Counts a write; whether it fails.
    bool failsToWrite();

private:
    std::wstring folder_;
    Stick stick_;
    std::string text_ = "nothing has been read yet";
    int writes_ = 0;
};

} // namespace fat32format
