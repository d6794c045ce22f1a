// Everything that can fail in the job fails once; everything that can happen in its pumps happens once.

#include "main_window.h"

#include <algorithm>

using platform::FileResult;
using unit::serverFile;
using Texts = std::vector<std::string>;

namespace {

/// A run of the program that is ready for the job; every file of the job takes several reads.
class JobRun : public unit::ProgramRun {
public:
    JobRun() {
        for (auto& [url, contents] : computer().web)
            if (url.ends_with(".txt.txt") || url.ends_with(".bin.txt")) contents.append(5000, 'x');
        startOnline();
    }

    void update() { click(window().cmdChoose); }
};

bool isStickOperation(const std::string& step) {
    return step.starts_with("write ") || step.starts_with("copy ") || step.starts_with("load ") ||
           step.starts_with("compare ") || step.starts_with("settle ");
}

bool isOperation(const std::string& step) {
    return isStickOperation(step) || step.starts_with("fetch ") || step.starts_with("read ");
}

/// What of a journal can fail.
Texts operationsOf(const Texts& journal) {
    Texts operations;
    std::copy_if(journal.begin(), journal.end(), std::back_inserter(operations), isOperation);
    return operations;
}

/// Makes the operation with that number fail, counted from 0.
void failAt(std::size_t number) {
    fake::computer().fails = [number, count = std::size_t{0}](const std::string& step) mutable {
        return isOperation(step) && count++ == number;
    };
}

Texts goodRun() {
    JobRun run;
    run.update();
    return operationsOf(JobRun::computer().journal);
}

int pumpsOfAGoodRun() {
    JobRun run;
    const int before = JobRun::computer().pumps;
    run.update();
    return JobRun::computer().pumps - before;
}

/// Does something at the pump with that number of the job, counted from 1.
void atPump(int number, const std::function<void()>& happening) {
    const int last = JobRun::computer().pumps + number;
    JobRun::computer().onPump = [last, happening] {
        if (JobRun::computer().pumps == last) happening();
    };
}

} // namespace

TEST(StickUpdateEveryFault, IsOneErrorReportAndNothingIsWrittenAfterIt) {
    const Texts operations = goodRun();
    ASSERT_EQ(std::count_if(operations.begin(), operations.end(), isStickOperation), 13);
    for (const FileResult failure :
         {FileResult::DiskFull, FileResult::PermissionDenied, FileResult::DiskNotReady,
          FileResult::PathNotFound, FileResult::DeviceIo}) {
        for (std::size_t i = 0; i < operations.size(); ++i) {
            if (!isStickOperation(operations[i])) continue;
            SCOPED_TRACE(operations[i]);
            JobRun run;
            failAt(i);
            JobRun::computer().failure = failure;
            run.update();

            const bool settling = operations[i].starts_with("settle ");
            const int number = settling ? 57 : static_cast<int>(failure);
            ASSERT_EQ(JobRun::computer().messages.size(), 2U) << "the question and the report";
            EXPECT_TRUE(
                JobRun::computer().messages[1].text.starts_with("Laufzeitfehler '" + std::to_string(number)))
                << JobRun::computer().messages[1].text;
            EXPECT_EQ(JobRun::status(), 1);
            EXPECT_TRUE(toolkit::ending().atOnce);
            EXPECT_TRUE(JobRun::computer().shellCalls.empty());
            const Texts done = operationsOf(JobRun::computer().journal);
            EXPECT_EQ(done,
                      Texts(operations.begin(), operations.begin() + static_cast<std::ptrdiff_t>(i) + 1));
        }
    }
}

TEST(StickUpdateEveryFault, OfADownloadGivesWhatCameBeforeIt) {
    const Texts operations = goodRun();
    int tried = 0;
    for (std::size_t i = 0; i < operations.size(); ++i) {
        if (isStickOperation(operations[i])) continue;
        SCOPED_TRACE(operations[i] + " " + std::to_string(i));
        ++tried;
        JobRun run;
        failAt(i);
        run.update();
        ASSERT_EQ(JobRun::computer().messages.size(), 2U);
        EXPECT_FALSE(JobRun::ended());
        if (operations[i].ends_with("usb-list.csv")) { // which counts only as a whole
            EXPECT_EQ(JobRun::computer().messages[1].title, "Verbindungs-Fehler");
            EXPECT_TRUE(JobRun::computer().writes.empty());
        } else {
            EXPECT_EQ(JobRun::computer().messages[1].title, "Update erfolgreich");
            EXPECT_EQ(JobRun::computer().writes.size(), 4U);
            const std::string& full = JobRun::computer().web[serverFile("fw0.bin.txt")];
            EXPECT_TRUE(full.starts_with(JobRun::computer().files["D:\\fw0.bin"].contents));
        }
    }
    EXPECT_GE(tried, 9);
}

TEST(StickUpdateEveryPump, MayEndTheProgram) {
    const int pumps = pumpsOfAGoodRun();
    ASSERT_EQ(pumps, 8) << "two for the capacity, three for each file";
    for (int i = 1; i <= pumps; ++i) {
        SCOPED_TRACE(i);
        JobRun run;
        Texts writesBefore;
        atPump(i, [&] {
            run.close();
            writesBefore = JobRun::computer().writes;
        });
        run.update();
        EXPECT_EQ(JobRun::computer().writes, writesBefore) << "nothing is written after the end";
        EXPECT_TRUE(JobRun::computer().shellCalls.empty());
        EXPECT_TRUE(JobRun::ended());
        EXPECT_EQ(JobRun::status(), 0);
        EXPECT_FALSE(toolkit::ending().atOnce);
        EXPECT_EQ(JobRun::computer().files.count("/opt/tool\\Settings.ini"), 1U);
    }
}

TEST(StickUpdateEveryPump, MayBringAnArrival) {
    for (int i = 1; i <= pumpsOfAGoodRun(); ++i) {
        SCOPED_TRACE(i);
        JobRun run;
        JobRun::event([&] { run.window().chkAuto.setValue(1); });
        atPump(i, [] {
            JobRun::plugIn("E:\\");
            JobRun::deviceArrives();
        });
        run.update();
        EXPECT_FALSE(JobRun::ended());
        EXPECT_EQ(JobRun::computer().messages.back().title, "Update erfolgreich");
        EXPECT_EQ(JobRun::computer().writes,
                  (Texts{"D:\\fw0.bin", "D:\\list0-0.txt", "D:\\autorun.inf", "D:\\orvantastick.ico"}))
            << "the files reach the stick that was confirmed";
    }
}

TEST(StickUpdateEveryPump, MayBringARemovalThatIsNotTheSticks) {
    const int pumps = pumpsOfAGoodRun();
    for (int i = 1; i <= pumps; ++i) {
        SCOPED_TRACE(i);
        JobRun run;
        JobRun::event([&] { run.window().chkAuto.setValue(1); });
        atPump(i, [] { JobRun::deviceGoes(); });
        run.update();
        if (i == 1) { // No stick is shown any more when the free space is looked at.
            EXPECT_TRUE(JobRun::computer().messages.empty());
            EXPECT_TRUE(JobRun::computer().writes.empty());
            EXPECT_FALSE(JobRun::ended());
        } else {
            EXPECT_EQ(JobRun::computer().messages.back().title, "Update erfolgreich");
            EXPECT_EQ(JobRun::computer().writes.size(), 4U);
        }
    }
}

TEST(StickUpdateEveryPump, MayLoseTheStick) {
    const int pumps = pumpsOfAGoodRun();
    for (int i = 1; i <= pumps; ++i) {
        SCOPED_TRACE(i);
        JobRun run;
        JobRun::event([&] { run.window().chkAuto.setValue(1); });
        atPump(i, [] {
            JobRun::pullOut("D:\\");
            JobRun::deviceGoes();
            JobRun::computer().failure = FileResult::DiskNotReady;
            JobRun::computer().fails = [](const std::string& step) {
                return step.starts_with("write D:") || step.starts_with("copy D:") ||
                       step.starts_with("compare D:") || step.starts_with("settle D:");
            };
        });
        run.update();
        EXPECT_TRUE(JobRun::computer().shellCalls.empty());
        if (i == 1) {
            EXPECT_TRUE(JobRun::computer().messages.empty()) << "not even asked";
            continue;
        }
        ASSERT_FALSE(JobRun::computer().messages.empty());
        EXPECT_TRUE(JobRun::computer().messages.back().text.starts_with("Laufzeitfehler '71':"));
        EXPECT_EQ(JobRun::status(), 1);
    }
}

TEST(StickUpdateEveryPump, MayBringAnotherStick) {
    const int pumps = pumpsOfAGoodRun();
    for (int i = 1; i <= pumps; ++i) {
        SCOPED_TRACE(i);
        JobRun run;
        Texts writesBefore;
        atPump(i, [&] {
            JobRun::computer().drives["D:\\"].medium = "another";
            writesBefore = JobRun::computer().writes;
        });
        run.update();
        EXPECT_TRUE(JobRun::computer().messages.back().text.starts_with("Laufzeitfehler '71':"));
        EXPECT_EQ(JobRun::computer().writes, writesBefore) << "nothing is written to it";
        EXPECT_TRUE(JobRun::computer().settled.empty());
        EXPECT_EQ(JobRun::status(), 1);
    }
}

/// The job itself does not look between its last comparison and the write; the write does.
TEST(StickUpdateEveryWrite, IsToldWhichDriveIsMeant) {
    for (const char* step : {"load /opt/tool\\autorun.inf", "load /opt/tool\\orvantastick.ico"}) {
        SCOPED_TRACE(step);
        JobRun run;
        JobRun::computer().fails = [step](const std::string& operation) {
            if (operation == step) JobRun::computer().drives["D:\\"].medium = "another";
            return false;
        };
        run.update();
        EXPECT_TRUE(JobRun::computer().messages.back().text.starts_with("Laufzeitfehler '71':"));
        EXPECT_TRUE(JobRun::computer().settled.empty());
    }
}

TEST(StickUpdateEveryPump, MayBringASecondClick) {
    const int pumps = pumpsOfAGoodRun();
    for (int i = 1; i <= pumps; ++i) {
        SCOPED_TRACE(i);
        JobRun run;
        atPump(i, [&] { run.update(); });
        run.update();
        EXPECT_FALSE(JobRun::ended());
        EXPECT_EQ(JobRun::computer().messages.size(), 4U) << "both jobs run to their end";
        EXPECT_EQ(JobRun::computer().shellCalls.size(), 2U);
    }
}
