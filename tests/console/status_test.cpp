#include "console/status.h"

#include <gtest/gtest.h>

namespace zolt {
namespace {

// The operations promise these numbers to their callers.
TEST(Status, hasTheNumbersThatTheOperationsPromise) {
    EXPECT_EQ(statusDone, 0);
    EXPECT_EQ(statusNothingToShow, 2);
    EXPECT_EQ(statusOutOfMemory, 4);
    EXPECT_EQ(statusRawReadFailed, 11);
    EXPECT_EQ(statusIoFailed, -1);
}

} // namespace
} // namespace zolt
