// How long a download is waited for.

#include "platform/http_pace.h"

#include <gtest/gtest.h>

using namespace platform;
using namespace std::chrono_literals;

namespace {

class Pace : public testing::Test {
protected:
    HttpPace::Time at(std::chrono::seconds time) const { return start + time; }

    const HttpPace::Time start = HttpPace::Time() + 1000h;
    HttpPace pace{HttpTimeouts(), start};
};

} // namespace

TEST_F(Pace, ThirtySecondsOfSilenceAreTheEnd) {
    pace.resume(start);
    EXPECT_EQ(pace.deadline(), at(30s));
    pace.arrived(1, at(20s));
    EXPECT_EQ(pace.deadline(), at(50s));
}

TEST_F(Pace, LessThanAKilobyteInSixtySecondsIsTheEnd) {
    pace.resume(start);
    for (auto second = 1s; second < 60s; ++second)
        pace.arrived(17, at(second)); // 1,003 bytes
    EXPECT_EQ(pace.deadline(), at(60s));
}

TEST_F(Pace, AKilobyteInSixtySecondsIsEnough) {
    pace.resume(start);
    for (auto second = 10s; second <= 600s; second += 10s) {
        EXPECT_GT(pace.deadline(), at(second));
        pace.arrived(205, at(second)); // five times that is 1,025
    }
    EXPECT_EQ(pace.deadline(), at(630s)) << "only silence is the end";
}

TEST_F(Pace, ABurstDoesNotPayForLater) {
    pace.resume(start);
    pace.arrived(1000000, at(5s));
    pace.arrived(1, at(30s));
    pace.arrived(1, at(50s));
    EXPECT_EQ(pace.deadline(), at(65s));
}

TEST_F(Pace, HeadersAreASignOfLifeAndNoMore) {
    pace.resume(start);
    for (auto second = 1s; second < 60s; ++second)
        pace.arrived(0, at(second));
    EXPECT_EQ(pace.deadline(), at(60s));
}

TEST_F(Pace, ANewServerHasItsOwnTime) {
    pace.resume(start);
    pace.arrived(0, at(25s));
    pace.restart(at(50s));
    EXPECT_EQ(pace.deadline(), at(80s));
}

TEST_F(Pace, TimeInWhichNobodyWaitsDoesNotCount) {
    pace.resume(at(100s));
    pace.arrived(1, at(110s));
    EXPECT_EQ(pace.deadline(), at(140s));
    pace.suspend(at(115s));
    pace.resume(at(1115s));
    EXPECT_EQ(pace.deadline(), at(1140s));
    pace.arrived(1, at(1135s));
    EXPECT_EQ(pace.deadline(), at(1160s)) << "of its sixty seconds 15 had gone by";
}

TEST_F(Pace, WhatComesWhileNobodyWaitsCounts) {
    pace.resume(start);
    pace.suspend(at(10s));
    pace.arrived(1024, at(500s));
    pace.resume(at(1000s));
    EXPECT_EQ(pace.deadline(), at(1030s));
}
