#include "TolvaneCore/ServiceCallers.h"

#include "support/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tolvane {
using testing::TableRow, testing::readTable;
namespace {

std::string devicesText(const InputEffect& effect) {
    std::string text = effect.tap ? "tap " : "";
    text += effect.inverting ? "invert " : "";
    text += effect.hold ? "hold " : "";
    return text.empty() ? "-" : text.substr(0, text.size() - 1);
}

TEST(ServiceCallers, HoldsAndInversionBelongToTheirCallersSessionsAndKeepAlives) {
    ServiceCallers callers;
    for (const TableRow& row : readTable("service-callers.txt", 5)) {
        const MonotonicMs now = std::stoll(row[0]);
        const std::string& name = row[1];
        std::istringstream words(row[2]);
        std::string call, session, state;
        words >> call >> session >> state;
        bool answer = true;
        if (call == "new") {
            callers = {};
        } else if (call == "in") {
            answer = callers.admit(name);
            callers.setSession(name, session == "-" ? "" : session, state == "on");
        } else if (call == "activity") {
            callers.sessionActivity(session, session == "-" || state == "on");
        } else if (call == "invert" || call == "plain") {
            callers.setInversion(name, call == "invert");
        } else if (call == "hold") {
            callers.hold(name, now);
        } else if (call == "alive") {
            answer = callers.keepAlive(name, now);
        } else if (call == "release") {
            callers.release(name);
        } else if (call == "gone") {
            callers.forget(name);
        } else {
            ASSERT_EQ(call, "tick") << row.where;
        }
        callers.expireHolds(now);
        EXPECT_EQ(devicesText(callers.effect()), row[3]) << row.where;
        EXPECT_EQ(answer ? "ok" : "no", row[4]) << row.where;
    }
}

// Catches unbounded per-caller state and a wake-up left armed without a hold.
TEST(ServiceCallers, KeepsAtMostSixteenCallersAndArmsExpiryOnlyForHolds) {
    ServiceCallers callers;
    for (std::size_t i = 0; i < maxServiceCallers; ++i) {
        ASSERT_TRUE(callers.admit(":1." + std::to_string(i)));
    }
    EXPECT_FALSE(callers.admit(":1.99"));
    EXPECT_TRUE(callers.admit(":1.3")) << "a known caller always has its place";
    callers.setSession(":1.3", "s", true);
    EXPECT_EQ(callers.nextExpiry(), std::nullopt);
    callers.hold(":1.3", 100);
    EXPECT_EQ(callers.nextExpiry(), 100 + keepAliveLimitMs);
    callers.forget(":1.3");
    EXPECT_EQ(callers.nextExpiry(), std::nullopt);
    EXPECT_TRUE(callers.admit(":1.99"));
}

} // namespace
} // namespace tolvane
