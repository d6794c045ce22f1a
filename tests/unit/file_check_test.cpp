// A failed file operation and the error that it ends the program with.

#include "main_window.h"

#include "platform/file_check.h"

#include <utility>

using base::ErrorNumber;
using platform::FileResult;

TEST(FileCheck, EveryFailureIsTheErrorOfItsName) {
    const std::pair<FileResult, ErrorNumber> known[] = {
        {FileResult::FileNotFound, ErrorNumber::FileNotFound},
        {FileResult::DeviceIo, ErrorNumber::DeviceIo},
        {FileResult::DiskFull, ErrorNumber::DiskFull},
        {FileResult::PermissionDenied, ErrorNumber::PermissionDenied},
        {FileResult::DiskNotReady, ErrorNumber::DiskNotReady},
        {FileResult::PathFileAccess, ErrorNumber::PathFileAccess},
        {FileResult::PathNotFound, ErrorNumber::PathNotFound},
    };
    for (const auto& [result, number] : known)
        EXPECT_EQ(platform::errorNumber(result), number);
}

TEST(FileCheck, ThrowsWithThePathUnlessAllIsWell) {
    EXPECT_EQ(unit::errorOf([] { platform::check(FileResult::Ok, "E:\\a"); }), 0);
    EXPECT_EQ(unit::errorOf([] { platform::check(FileResult::DiskFull, "E:\\a"); }), 61);
    try {
        platform::check(FileResult::PathNotFound, "E:\\a");
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.subject(), "E:\\a");
    }
}
